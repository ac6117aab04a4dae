#include "output/replace_file.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>

namespace vantlo {

namespace {

namespace fs = std::filesystem;

bool may_replace(const std::string& path, std::string_view beginning) {
    std::error_code failure;
    const fs::file_status status = fs::status(path, failure);
    if (!fs::exists(status)) return true;
    if (!fs::is_regular_file(status)) return false;
    std::ifstream file(path, std::ios::binary);
    std::string found(beginning.size(), '\0');
    file.read(found.data(), static_cast<std::streamsize>(found.size()));
    return file.gcount() == 0 ? fs::file_size(path, failure) == 0 : found == beginning;
}

/// Writes all of it into a new file, and waits until it is on the disk.
bool write_new(const std::string& path, const std::string& content) {
    const int file = ::open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
    if (file < 0) return false;
    std::size_t written = 0;
    while (written < content.size()) {
        const ssize_t count = ::write(file, content.data() + written, content.size() - written);
        if (count <= 0) break;
        written += static_cast<std::size_t>(count);
    }
    const bool is_whole = written == content.size() && ::fsync(file) == 0;
    return ::close(file) == 0 && is_whole;
}

}  // namespace

std::string name_beside(const std::string& path) { return path + "." + std::to_string(::getpid()) + ".new"; }

Replaced replace_file(const std::string& path, std::string_view beginning, const std::string& content) {
    if (!may_replace(path, beginning)) return Replaced::is_something_else;
    const std::string beside = name_beside(path);
    if (write_new(beside, content) && std::rename(beside.c_str(), path.c_str()) == 0) return Replaced::done;
    std::remove(beside.c_str());
    return Replaced::not_written;
}

Replaced move_into_place(const std::string& finished, const std::string& path, std::string_view beginning,
                         bool replaces) {
    if (replaces) {
        if (!may_replace(path, beginning)) return Replaced::is_something_else;
        return std::rename(finished.c_str(), path.c_str()) == 0 ? Replaced::done : Replaced::not_written;
    }
    if (::renameat2(AT_FDCWD, finished.c_str(), AT_FDCWD, path.c_str(), RENAME_NOREPLACE) == 0) return Replaced::done;
    if (errno == EEXIST) return Replaced::is_something_else;
    // A file system that cannot rename so: a second name for the file is refused as well where one is there.
    if (::link(finished.c_str(), path.c_str()) != 0)
        return errno == EEXIST ? Replaced::is_something_else : Replaced::not_written;
    std::remove(finished.c_str());
    return Replaced::done;
}

}  // namespace vantlo
