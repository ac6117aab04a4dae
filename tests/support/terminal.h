#pragma once

#include <doctest/doctest.h>
#include <poll.h>
#include <pty.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <functional>
#include <string>

namespace vantlo::test {

/// A command that runs on a terminal of its own, as in a user's window.
class Terminal {
public:
    /// Starts a command as a shell reads it.
    explicit Terminal(const std::string& command, unsigned short columns = 100) {
        winsize size{};
        size.ws_row = 24;
        size.ws_col = columns;
        process_ = ::forkpty(&master_, nullptr, nullptr, &size);
        REQUIRE(process_ >= 0);
        if (process_ == 0) {
            ::execl("/bin/sh", "sh", "-c", command.c_str(), nullptr);
            ::_exit(127);
        }
    }
    Terminal(const Terminal&) = delete;
    Terminal& operator=(const Terminal&) = delete;
    ~Terminal() {
        ::close(master_);  // which hangs up
        if (process_ > 0) ::waitpid(process_, nullptr, 0);
    }

    /// Reads until the text has appeared. Returns whether it has.
    bool wait_for(const std::string& text) {
        return wait_until([&] { return shown_.find(text) != std::string::npos; });
    }

    /// Reads until what is shown is enough. Returns whether it ever was.
    bool wait_until(const std::function<bool()>& is_enough) {
        while (!is_enough()) {
            if (!read_more()) return false;
        }
        return true;
    }

    /// Ends the command at once, as a machine without power would.
    void kill() {
        REQUIRE(::kill(process_, SIGKILL) == 0);
        finish();
    }

    /// Types the text; "\x03" is Ctrl-C.
    void type(const std::string& text) {
        REQUIRE(::write(master_, text.data(), text.size()) == static_cast<ssize_t>(text.size()));
    }

    /// Whether the command has a handler of its own for a signal.
    [[nodiscard]] bool catches(int signal) const {
        const std::string process = "/proc/" + std::to_string(process_);
        std::error_code none;  // of a command that has ended
        // Until the command itself runs there, the process is a copy of this one, then the shell, which both have handlers.
        for (const char* const before : {"/proc/self/exe", "/bin/sh"}) {
            if (std::filesystem::equivalent(process + "/exe", before, none) || none) return false;
        }
        std::ifstream status(process + "/status");
        for (std::string line; std::getline(status, line);) {
            if (!line.starts_with("SigCgt:")) continue;
            return (std::stoull(line.substr(7), nullptr, 16) >> (signal - 1) & 1) != 0;
        }
        return false;
    }

    /// Types Ctrl-C once the command catches it, and waits until it has. Returns false if the command never comes so far.
    bool interrupt() {
        const auto comes_to = [this](bool catching) {
            constexpr int most_tries = longest_wait_ms;
            for (int tries = 0; tries < most_tries && catches(SIGINT) != catching; ++tries) ::usleep(1000);
            return catches(SIGINT) == catching;
        };
        if (!comes_to(true)) return false;
        type("\x03");
        return comes_to(false);  // its handler is taken away by the first signal
    }

    /// Reads to the end. Returns the command's exit code; if a signal ended it, minus the signal's number.
    int finish() {
        while (read_more()) {
        }
        int status = 0;
        ::waitpid(process_, &status, 0);
        process_ = -1;
        return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
    }

    /// All that the terminal has shown so far, with its line ends.
    [[nodiscard]] const std::string& shown() const { return shown_; }

private:
    static constexpr int longest_wait_ms = 120'000;

    bool read_more() {
        pollfd ready{master_, POLLIN, 0};
        if (::poll(&ready, 1, longest_wait_ms) != 1) return false;
        std::array<char, 4096> buffer{};
        const ssize_t count = ::read(master_, buffer.data(), buffer.size());  // fails once nobody has it open
        if (count <= 0) return false;
        shown_.append(buffer.data(), static_cast<std::size_t>(count));
        return true;
    }

    int master_ = -1;
    pid_t process_ = -1;
    std::string shown_;
};

}  // namespace vantlo::test
