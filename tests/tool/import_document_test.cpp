#include <doctest/doctest.h>

#include <fstream>
#include <sstream>
#include <string>
#include <utility>

#include "tests/support/transcript.h"

// The files that docs/import.md shows are imported as it says.

namespace vantlo::test {
namespace {

/// Writes each fenced block that follows a line like "`NAME`:" to a file of that name. Returns the transcript.
std::string write_files(const Shell& shell, const std::string& page) {
    std::ifstream document(page);
    REQUIRE(document);
    std::string name, block;
    bool is_inside = false;
    for (std::string line; std::getline(document, line);) {
        if (line.starts_with("```")) {
            if (is_inside && !name.empty()) shell.file(std::exchange(name, {}), block);
            is_inside = !is_inside;
            if (is_inside) block.clear();
        } else if (is_inside) {
            block += line + "\n";
        } else if (line.starts_with('`') && line.ends_with("`:")) {
            name = line.substr(1, line.size() - 3);
        }
    }
    return block;
}

TEST_CASE("The import document's commands print what it shows, with its files") {
    for (const DocumentPage& page : both_languages("docs/import")) {
        CAPTURE(page.name);
        const Shell shell;
        const std::string transcript = write_files(shell, page.name);
        std::string printed;
        std::istringstream lines(transcript);
        for (std::string line; std::getline(lines, line);) {
            if (!line.starts_with("$ vantlo ")) continue;
            std::string output = shell.run("LC_ALL=" + page.locale + " " + shell.program() + line.substr(8)).output;
            const std::size_t engine = output.find("SQLite ");
            if (engine != std::string::npos)
                output.replace(engine, output.find_first_not_of(".0123456789", engine + 7) - engine, "ENGINE");
            printed += line + "\n" + output;
        }
        CHECK(printed == transcript);
        const Finished ledger = shell.run("sqlite3 vantlo.db 'select GId, CurrentQty from Inventory order by GId'");
        CHECK(ledger.output == "G1|12\nG2|4.5\n");
    }
}

}  // namespace
}  // namespace vantlo::test
