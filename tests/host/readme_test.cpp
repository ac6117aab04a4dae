#include <doctest/doctest.h>

#include <fstream>
#include <iterator>
#include <sstream>

#include "tests/support/shell.h"

// The README's transcript is what a reader sees who follows it.

namespace vantlo::test {
namespace {

std::string text_of(const std::string& path) {
    std::ifstream file(path);
    REQUIRE(file);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

/// The contents of the fenced blocks, in order.
std::vector<std::string> fenced_blocks(const std::string& markdown) {
    std::vector<std::string> blocks;
    std::istringstream lines(markdown);
    bool inside = false;
    for (std::string line; std::getline(lines, line);) {
        if (line.starts_with("```")) {
            inside = !inside;
            if (inside) blocks.emplace_back();
        } else if (inside) {
            blocks.back() += line + "\n";
        }
    }
    return blocks;
}

TEST_CASE("The README's commands print what the README shows") {
    const std::vector<std::string> blocks = fenced_blocks(text_of(VANTLO_SOURCE_DIR "/README.md"));
    REQUIRE(blocks.size() == 2);
    const Shell shell;
    shell.file("examples/box.json", text_of(VANTLO_SOURCE_DIR "/examples/box.json"));
    std::string printed;
    std::istringstream lines(blocks[0]);
    for (std::string line; std::getline(lines, line);) {
        if (!line.starts_with("$ vantlo ")) continue;
        const Finished finished = shell.vantlo(line.substr(9) + " 2>/dev/null");
        CHECK(finished.exit_code == 0);
        printed += line + "\n" + finished.output;
    }
    CHECK(printed == blocks[0]);

    const Finished sent = shell.vantlo("--show-sql --db shown.db init && " + shell.program() +
                                       " --show-sql --db shown.db save examples/box.json");
    CHECK_MESSAGE(sent.output.find(blocks[1]) != std::string::npos, sent.output);
}

}  // namespace
}  // namespace vantlo::test
