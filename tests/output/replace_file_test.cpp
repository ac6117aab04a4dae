#include "output/replace_file.h"

#include <doctest/doctest.h>
#include <sys/resource.h>

#include <csignal>
#include <fstream>
#include <iterator>

#include "tests/support/temporary_folder.h"

namespace vantlo::test {
namespace {

/// While it lives no file can grow beyond so many bytes, as on a full disk.
class FullDisk {
public:
    explicit FullDisk(rlim_t bytes) {
        ::getrlimit(RLIMIT_FSIZE, &before_);
        rlimit now = before_;
        now.rlim_cur = bytes;
        REQUIRE(::setrlimit(RLIMIT_FSIZE, &now) == 0);
    }
    FullDisk(const FullDisk&) = delete;
    FullDisk& operator=(const FullDisk&) = delete;
    ~FullDisk() {
        ::setrlimit(RLIMIT_FSIZE, &before_);
        std::signal(SIGXFSZ, handler_before_);
    }

private:
    rlimit before_{};
    void (*handler_before_)(int) = std::signal(SIGXFSZ, SIG_IGN);
};

std::string content(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

TEST_CASE("replace_file makes a file, and replaces what begins as it should") {
    const TemporaryFolder folder;
    const std::string path = folder.file("a.svg");
    CHECK(replace_file(path, "<svg", "<svg>one") == Replaced::done);
    CHECK(replace_file(path, "<svg", "<svg>two") == Replaced::done);
    CHECK(content(path) == "<svg>two");
    std::ofstream(folder.file("empty"));
    CHECK(replace_file(folder.file("empty"), "<svg", "<svg>") == Replaced::done);
}

TEST_CASE("replace_file leaves what is something else as it is") {
    const TemporaryFolder folder;
    for (const char* const other : {"SQLite format 3", "<sv", "x"}) {
        std::ofstream(folder.file("other")) << other;
        CHECK(replace_file(folder.file("other"), "<svg", "<svg>") == Replaced::is_something_else);
        CHECK(content(folder.file("other")) == other);
    }
    CHECK(replace_file(folder.file(""), "<svg", "<svg>") == Replaced::is_something_else);
    CHECK(replace_file(folder.file("no/such/folder"), "<svg", "<svg>") == Replaced::not_written);
}

TEST_CASE("replace_file on a full disk leaves the old file and nothing else") {
    const TemporaryFolder folder;
    const std::string path = folder.file("a.svg");
    REQUIRE(replace_file(path, "<svg", "<svg>old") == Replaced::done);
    {
        const FullDisk disk(1000);
        CHECK(replace_file(path, "<svg", "<svg>" + std::string(2000, 'x')) == Replaced::not_written);
    }
    CHECK(content(path) == "<svg>old");
    CHECK(std::distance(std::filesystem::directory_iterator(folder.file("")), {}) == 1);
}

}  // namespace
}  // namespace vantlo::test
