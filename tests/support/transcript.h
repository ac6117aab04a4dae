#pragma once

#include <doctest/doctest.h>

#include <fstream>
#include <iterator>
#include <sstream>
#include <string>
#include <vector>

#include "tests/support/shell.h"

// Runs the commands that documents show, so that their output can be compared.

namespace vantlo::test {

inline std::string text_of(const std::string& path) {
    std::ifstream file(path);
    REQUIRE(file);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

/// The contents of the fenced blocks, in order.
inline std::vector<std::string> fenced_blocks(const std::string& markdown) {
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

/// A page of the tree as its readers see it: those of the Chinese one have a Chinese locale.
struct DocumentPage {
    std::string name;
    std::string locale;
};

/// A page and its Chinese translation.
/// Example  `docs/verify` -> docs/verify.md, docs/verify.zh.md
inline std::vector<DocumentPage> both_languages(const std::string& name) {
    return {{std::string(VANTLO_SOURCE_DIR "/") + name + ".md", "C.UTF-8"},
            {std::string(VANTLO_SOURCE_DIR "/") + name + ".zh.md", "zh_CN.UTF-8"}};
}

/// Runs the commands of a block, its lines that begin with `$ `, each of which must end with 0. Returns the block as it would
/// be now: each command, and below it what it writes to stdout.
inline std::string run_transcript(const Shell& shell, const std::string& block, const std::string& locale = "C.UTF-8") {
    std::string printed;
    std::istringstream lines(block);
    for (std::string line; std::getline(lines, line);) {
        if (!line.starts_with("$ ")) continue;
        const Finished finished = shell.run("export LC_ALL=" + locale + "; vantlo() { '" + shell.program() +
                                            "' \"$@\" 2>/dev/null; }; " + line.substr(2));
        CHECK_MESSAGE(finished.exit_code == 0, line);
        printed += line + "\n" + finished.output;
    }
    return printed;
}

}  // namespace vantlo::test
