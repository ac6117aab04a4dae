#pragma once

#include <doctest/doctest.h>
#include <sys/wait.h>

#include <array>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <string>

#include "tests/support/temporary_folder.h"

namespace vantlo::test {

struct Finished {
    int exit_code = -1;
    std::string output;  ///< stdout and stderr in one

    [[nodiscard]] bool has(const std::string& text) const { return output.find(text) != std::string::npos; }
};

/// A user's shell in a folder of its own.
class Shell {
public:
    /// Runs the built program with the arguments, as a shell reads them.
    Finished vantlo(const std::string& arguments) const { return run(program() + " " + arguments); }

    /// Runs a command in the folder; the program speaks English, unless the command says otherwise.
    Finished run(const std::string& line) const {
        const std::string command = in_folder("{ " + line + "; } 2>&1");
        FILE* const pipe = ::popen(command.c_str(), "r");
        REQUIRE(pipe != nullptr);
        Finished finished;
        std::array<char, 4096> buffer{};
        while (const std::size_t read = std::fread(buffer.data(), 1, buffer.size(), pipe)) {
            finished.output.append(buffer.data(), read);
        }
        finished.exit_code = WEXITSTATUS(::pclose(pipe));
        return finished;
    }

    /// A command in front of which the shell goes into the folder.
    [[nodiscard]] std::string in_folder(const std::string& command) const {
        return "cd '" + folder_.file("") + "' && export LC_ALL=C.UTF-8 && unset VANTLO_DB VANTLO_PASSWORD; " + command;
    }

    [[nodiscard]] static std::string program() { return VANTLO_PROGRAM; }

    [[nodiscard]] std::string path(const std::string& name) const { return folder_.file(name); }

    /// Writes a file, with the folders on its way. Returns its name.
    std::string file(const std::string& name, const std::string& content) const {
        std::filesystem::create_directories(std::filesystem::path(folder_.file(name)).parent_path());
        std::ofstream(folder_.file(name)) << content;
        return name;
    }

private:
    TemporaryFolder folder_;
};

}  // namespace vantlo::test
