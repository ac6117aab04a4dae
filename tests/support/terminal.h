#pragma once

#include <doctest/doctest.h>
#include <poll.h>
#include <pty.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <functional>
#include <string>

namespace vantlo::test {

/// A command that runs on a terminal of its own, as in a user's window.
class Terminal {
public:
    /// Starts a command as a shell reads it.
    explicit Terminal(const std::string& command) {
        winsize size{};
        size.ws_row = 24;
        size.ws_col = 100;
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

    /// Reads to the end. Returns the command's exit code.
    int finish() {
        while (read_more()) {
        }
        int status = 0;
        ::waitpid(process_, &status, 0);
        process_ = -1;
        return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    }

    /// All that the terminal has shown so far, with its line ends.
    [[nodiscard]] const std::string& shown() const { return shown_; }

private:
    bool read_more() {
        constexpr int longest_wait_ms = 20'000;
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
