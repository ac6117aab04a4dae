#include "tests/support/com/script_host.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <stdexcept>

#include "tests/support/temporary_folder.h"

namespace vantlo::test {

namespace {

constexpr DWORD time_limit_ms = 60'000;

std::wstring wide(const Text& text) { return {text.begin(), text.end()}; }

/// A handle that is closed at the end.
class OwnedHandle {
public:
    explicit OwnedHandle(HANDLE handle) : handle_(handle) {
        if (handle == INVALID_HANDLE_VALUE) throw std::runtime_error("a handle cannot be opened");
    }
    OwnedHandle(const OwnedHandle&) = delete;
    OwnedHandle& operator=(const OwnedHandle&) = delete;
    ~OwnedHandle() { CloseHandle(handle_); }

    [[nodiscard]] HANDLE get() const { return handle_; }

private:
    HANDLE handle_;
};

}  // namespace

Text windows_path(const std::string& path) {
    Text named = from_utf8(path);
    std::ranges::replace(named, u'/', u'\\');
    return named.starts_with(u'\\') ? u"Z:" + named : named;
}

DWORD run_to_end(std::wstring command, HANDLE output) {
    STARTUPINFOW start = {};
    start.cb = sizeof start;
    if (output != nullptr) {
        start.dwFlags = STARTF_USESTDHANDLES;
        start.hStdOutput = start.hStdError = output;
    }
    PROCESS_INFORMATION process;
    if (!CreateProcessW(nullptr, command.data(), nullptr, nullptr, TRUE, 0, nullptr, nullptr, &start, &process)) {
        throw std::runtime_error("the program does not start");
    }
    const OwnedHandle thread(process.hThread);
    const OwnedHandle program(process.hProcess);
    if (WaitForSingleObject(program.get(), time_limit_ms) != WAIT_OBJECT_0) {
        TerminateProcess(program.get(), 1);
        throw std::runtime_error("the program does not come to its end");
    }
    DWORD code = 0;
    GetExitCodeProcess(program.get(), &code);
    return code;
}

std::vector<std::string> run_script(const std::string& path, const std::vector<std::string>& arguments) {
    const TemporaryFolder folder;
    Text command = u"cscript.exe //nologo \"" + windows_path(path) + u"\"";
    for (const std::string& argument : arguments) command += u" \"" + from_utf8(argument) + u"\"";
    {
        SECURITY_ATTRIBUTES inherited = {sizeof inherited, nullptr, TRUE};
        const OwnedHandle output(CreateFileW(wide(windows_path(folder.file("output"))).c_str(), GENERIC_WRITE,
                                             FILE_SHARE_READ, &inherited, CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL,
                                             nullptr));
        run_to_end(wide(command), output.get());
    }
    std::vector<std::string> lines;
    std::ifstream output(folder.file("output"), std::ios::binary);
    for (std::string line; std::getline(output, line);) {
        if (line.ends_with('\r')) line.pop_back();
        lines.push_back(line);
    }
    return lines;
}

}  // namespace vantlo::test
