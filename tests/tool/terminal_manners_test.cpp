#include <doctest/doctest.h>

#include <algorithm>
#include <sstream>

#include "ado/native/open_connection.h"
#include "output/table_output.h"
#include "output/wrapped_text.h"
#include "tests/support/shell.h"
#include "tests/support/terminal.h"

// What a user's terminal shows: widths, colours, what waits, and streams that are closed.

namespace vantlo::test {
namespace {

constexpr unsigned short narrow = 60;

/// A shop with one bill, whose names are long and Chinese.
void make_shop(const Shell& shell) {
    shell.file("bill.json", R"({"bills": [{"kind": "stock-in", "id": "R1", "date": "2024-03-05",
        "remarks": "第一次进货，从华南总仓库经由铁路运到本店，验收时外包装完好，数量与送货单一致 delivered by rail, checked",
        "lines": [{"goods": "G-1", "quantity": 3, "receiver": "WEST-01", "model1": "曜石黑", "model2": "256 GB"}]}]})");
    REQUIRE(shell.vantlo("init").exit_code == 0);
    REQUIRE(shell.vantlo("save bill.json").exit_code == 0);
}

/// What a command shows on a terminal of so many columns.
std::string shown_on_terminal(const Shell& shell, const std::string& command, unsigned short columns) {
    Terminal terminal(shell.in_folder("exec " + command), columns);
    CHECK(terminal.finish() == 0);
    return terminal.shown();
}

std::size_t widest_line(const std::string& shown) {
    std::size_t widest = 0;
    std::istringstream lines(shown);
    for (std::string line; std::getline(lines, line);) {
        if (line.ends_with('\r')) line.pop_back();
        widest = std::max(widest, cell_width(line));
    }
    return widest;
}

TEST_CASE("A table is no wider than the terminal, in both languages, and loses no text") {
    const Shell shell;
    make_shop(shell);
    for (const std::string language : {"en", "zh"}) {
        for (const std::string command : {"ledger", "bills", "bill stock-in R1", "card G-1", "report --by goods"}) {
            const std::string line = "env NO_COLOR=1 " + shell.program() + " --lang " + language + " " + command;
            CAPTURE(line);
            const std::string shown = shown_on_terminal(shell, line, narrow);
            CHECK_MESSAGE(widest_line(shown) <= narrow, shown);
            CHECK(shown.size() > 40);
        }
    }
    const std::string bills = shown_on_terminal(shell, "env NO_COLOR=1 " + shell.program() + " bills", narrow);
    for (const std::string part : {"第一次", "华南", "checked", "R1", "2024-03-05"})
        CHECK_MESSAGE(bills.find(part) != std::string::npos, bills);
}

TEST_CASE("A table that no wrapping makes narrow enough becomes a block of lines for each row") {
    const Shell shell;
    make_shop(shell);
    const std::string shown = shown_on_terminal(shell, "env NO_COLOR=1 " + shell.program() + " ledger", 30);
    CHECK_MESSAGE(shown.find("Warehouse  WEST-01\r\n") != std::string::npos, shown);
    CHECK(shown.find("On hand    3\r\n") != std::string::npos);
    CHECK(widest_line(shown) <= 30);
}

TEST_CASE("A pipe gets tables as wide as they are, and neither colours nor a help cut to a terminal") {
    const Shell shell;
    make_shop(shell);
    const Finished bills = shell.vantlo("bills");
    CHECK(bills.has("delivered by rail, checked\n"));
    CHECK(!bills.has("\x1B"));
}

TEST_CASE("Colours are on titles and negative numbers, never on rules, and off where nobody wants them") {
    const Shell shell;
    shell.file("bill.json", R"({"bills": [{"kind": "stock-out", "id": "A1", "date": "2024-03-05",
        "lines": [{"goods": "G1", "quantity": 3, "supplier": "W1"}]}]})");
    shell.vantlo("init");
    REQUIRE(shell.vantlo("save bill.json").exit_code == 0);
    const std::string ledger = shell.program() + " ledger";
    const std::string coloured = shown_on_terminal(shell, "env TERM=xterm " + ledger, 100);
    CHECK(coloured.find("\x1B[1mWarehouse\x1B[0m") != std::string::npos);
    CHECK(coloured.find("\x1B[31m-3\x1B[0m") != std::string::npos);
    CHECK_MESSAGE(coloured.find("\r\n--------------  -----  -------  -------  ------  --------  ------  -------\r\n") !=
                      std::string::npos,
                  coloured);
    for (const std::string plain : {"env TERM=dumb ", "env TERM=xterm NO_COLOR=1 "})
        CHECK(shown_on_terminal(shell, plain + ledger, 100).find('\x1B') == std::string::npos);
}

TEST_CASE("Help is no wider than the terminal and has no words of the parser's own") {
    const Shell shell;
    for (const std::string command : {"", "import", "ledger", "repair", "report", "adopt"}) {
        for (const std::string language : {"en", "zh"}) {
            const std::string line = shell.program() + " --lang " + language + " help " + command;
            const std::string shown = shown_on_terminal(shell, line, narrow);
            CAPTURE(shown);
            std::istringstream lines(shown);
            for (std::string text; std::getline(lines, text);) {
                const bool is_command_line = text.find("  vantlo ") == 0;  // to be copied whole
                if (!is_command_line) CHECK_MESSAGE(cell_width(text.substr(0, text.find('\r'))) <= narrow, text);
            }
            for (const std::string insides : {"ENUM", "TEXT", "UINT", ":{", "->", "Excludes", "[Option"})
                CHECK_MESSAGE(shown.find(insides) == std::string::npos, insides);
        }
    }
}

TEST_CASE("A reader that goes away ends vantlo quietly, and a stream that cannot be written is told") {
    const Shell shell;
    make_shop(shell);
    const Finished head = shell.run("set -o pipefail; { i=0; while [ $i -lt 200 ]; do " + shell.program() +
                                    " fields; i=$((i + 1)); done; } 2>errors.txt | head -1; cat errors.txt");
    CHECK_MESSAGE(std::ranges::count(head.output, '\n') == 1, head.output);
    for (const std::string command : {"ledger", "--help", "--version", "help ledger"}) {
        const Finished full = shell.vantlo(command + " >/dev/full");
        CHECK_MESSAGE(full.exit_code == 9, command);
        CHECK(full.has("vantlo: stdout cannot be written\n"));
    }
    CHECK(shell.vantlo("ledger >&-").exit_code == 9);
}

TEST_CASE("Streams that are closed never make vantlo write messages into a database") {
    const Shell shell;
    make_shop(shell);
    shell.file("second.json", R"({"bills": [{"kind": "stock-in", "id": "R2", "date": "2024-03-05",
        "lines": [{"goods": "G-1", "quantity": 1, "receiver": "W2"}]}]})");
    CHECK(shell.run(shell.program() + " --show-sql save second.json <&- >&- 2>&-").exit_code == 0);
    CHECK(shell.vantlo("verify").exit_code == 0);
    CHECK(shell.run("sqlite3 vantlo.db 'pragma integrity_check'").output == "ok\n");
}

TEST_CASE("vantlo says after a second that it waits for a locked database, but not when it is to be quiet") {
    const Shell shell;
    make_shop(shell);
    const auto other_writer = open_connection("sqlite:" + shell.path("vantlo.db"));
    other_writer->begin();
    Terminal terminal(shell.in_folder("exec " + shell.program() + " delete stock-in R1"));
    CHECK(terminal.wait_for("no answer from the database for a second"));
    CHECK(terminal.interrupt());
    other_writer->roll_back();
    CHECK(terminal.finish() == 6);

    other_writer->begin();
    Terminal quiet(shell.in_folder("exec " + shell.program() + " --quiet delete stock-in R1"));
    ::usleep(1'600'000);  // the notice comes within 1.2 s
    other_writer->roll_back();
    CHECK(quiet.finish() == 0);
    CHECK_MESSAGE(quiet.shown().empty(), quiet.shown());
}

TEST_CASE("A text is wrapped at blanks and between Chinese characters, by the cells that it takes") {
    using Lines = std::vector<std::string>;
    CHECK(wrapped("one two three", 8) == Lines{"one two", "three"});
    CHECK(wrapped("--fail-on-negative is long", 20) == Lines{"--fail-on-negative", "is long"});
    CHECK(wrapped("库存台账与单据", 6) == Lines{"库存台", "账与单", "据"});
    CHECK(wrapped("显示台账，按仓库", 8) == Lines{"显示台", "账，按仓", "库"});  // no comma begins a line
    CHECK(wrapped("abcdefghij", 4) == Lines{"abcd", "efgh", "ij"});
    CHECK(wrapped("", 4) == Lines{""});
    CHECK(wrapped_text("one two three", 10, 2) == "one two\n  three");
}

}  // namespace
}  // namespace vantlo::test
