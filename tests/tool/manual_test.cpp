#include <doctest/doctest.h>

#include "bills/bill_kinds.h"
#include "tests/support/shell.h"

// The manual page and the completion, which the program writes itself.

namespace vantlo::test {
namespace {

TEST_CASE("The manual page is right for groff and holds every command, in both languages") {
    const Shell shell;
    for (const std::string language : {"en", "zh"}) {
        CAPTURE(language);
        const std::string print = shell.program() + " --lang " + language + " --print man";
        const Finished warnings = shell.run(print + " | groff -K utf8 -man -Tutf8 -ww 2>&1 >/dev/null");
        CHECK_MESSAGE(warnings.output.empty(), warnings.output);
        const Finished page = shell.run(print + " | groff -K utf8 -man -Tutf8 -P -cbou");
        for (const std::string shown : {"vantlo save FILE", "vantlo bill KIND ID", "vantlo explain MEMBER", "--dry-run",
                                        "--format FORMAT", "vantlo page FILE", "VANTLO_PASSWORD"}) {
            CHECK_MESSAGE(page.has(shown), shown);
        }
        CHECK(page.has(language == "en" ? "EXIT STATUS" : "退出码"));
    }
}

TEST_CASE("bash completes commands, options, their values, kinds of bills, members and files") {
    const Shell shell;
    shell.file("bills.json", "{}");
    std::string kinds;
    for (const BillKind& kind : bill_kinds()) kinds += (kinds.empty() ? "" : " ") + std::string(kind.name);
    struct Row {
        std::string line;  ///< the last word is the one at the cursor
        std::string replies;
    };
    const Row rows[] = {
        {"vantlo led", "ledger"},
        {"vantlo --lang ''", "zh en"},
        {"vantlo --db bi", "bills.json"},
        {"vantlo --lang zh led", "ledger"},
        {"vantlo ledger --form", "--format"},
        {"vantlo ledger --format ''", "table json jsonl csv"},
        {"vantlo ledger --format j", "json jsonl"},
        {"vantlo new loss --format ''", "json csv"},
        {"vantlo save --dry", "--dry-run"},
        {"vantlo save bi", "bills.json"},
        {"vantlo delete ''", kinds},
        {"vantlo bill stock-o", "stock-out stock-out-magnitude"},
        {"vantlo explain Hj_", "Hj_AddInventory_Db Hj_ReduceInventory_Db"},
        {"vantlo frobnicate-", ""},
    };
    for (const Row& row : rows) {
        shell.file("complete.bash",
                   "source <('" + shell.program() + "' --print bash-completion)\nCOMP_WORDS=(" + row.line +
                       ")\nCOMP_CWORD=$((${#COMP_WORDS[@]} - 1))\n_vantlo\necho \"${COMPREPLY[*]}\"\n");
        const Finished completed = shell.run("bash complete.bash");
        CHECK_MESSAGE(completed.output == row.replies + "\n", row.line);
    }
}

/// What bash completes, a line each, at the end of a command line; the program is called by its name.
std::string completed(const Shell& shell, const std::string& line, const std::string& more = "") {
    shell.file("complete.bash", "vantlo() { '" + shell.program() +
                                    "' \"$@\"; }\nsource <(vantlo --print bash-completion)\n" + more + "COMP_WORDS=(" +
                                    line +
                                    ")\nCOMP_CWORD=$((${#COMP_WORDS[@]} - 1))\n_vantlo\n"
                                    "printf '%s\\n' \"${COMPREPLY[@]}\"\n");
    return shell.run("bash complete.bash").output;
}

TEST_CASE("bash completes warehouses, goods, classes and ids of bills that the database has") {
    const Shell shell;
    shell.run("cp '" VANTLO_SOURCE_DIR "/examples/box.json' box.json");
    for (const char* const command : {"init", "save box.json", "--db other.db init"})
        REQUIRE(shell.vantlo(command).exit_code == 0);
    CHECK(completed(shell, "vantlo ledger --warehouse ''") == "W01\nW03\n");
    CHECK(completed(shell, "vantlo ledger --warehouse W03") == "W03\n");
    CHECK(completed(shell, "vantlo ledger --warehouse = W03") == "W03\n");
    CHECK(completed(shell, "vantlo card G") == "G009\n");
    CHECK(completed(shell, "vantlo bill stock JC") == "JC240305-01\n");
    CHECK(completed(shell, "vantlo delete --force stock ''") == "JC240305-01\n");
    CHECK(completed(shell, "vantlo bill loss ''") == "\n");
    CHECK(completed(shell, "vantlo --db other.db card G") == "\n");
    CHECK(completed(shell, "vantlo help led") == "ledger\n");
}

TEST_CASE("bash's completion is silent without a database and makes none") {
    const Shell shell;
    for (const std::string line :
         {"vantlo card G", "vantlo --db none.db ledger --warehouse ''", "vantlo bill stock ''"})
        CHECK(completed(shell, line) == "\n");
    CHECK(shell.run("ls").output == "complete.bash\n");
}

TEST_CASE("bash's completion quotes names and carries nothing out that stands in them") {
    const Shell shell;
    REQUIRE(shell.vantlo("init").exit_code == 0);
    shell.run(
        R"sql(sqlite3 vantlo.db "insert into Goods(ID) values('a b'),('a\$(touch pwned)'),('a''s'),('a\`touch pwned\`'),
        ('a;touch pwned'),('甲 1'),('b' || char(10) || 'x'),('b*')")sql");
    const std::string names = completed(shell, "vantlo card a");
    CHECK_MESSAGE(names == "a\\ b\na\\$\\(touch\\ pwned\\)\na\\'s\na\\;touch\\ pwned\na\\`touch\\ pwned\\`\n", names);
    CHECK(completed(shell, "vantlo card \"'a \"") == "a b\n");
    CHECK(completed(shell, "vantlo card 甲", "LC_ALL=C.UTF-8\n") == "甲\\ 1\n");
    CHECK(completed(shell, "vantlo card b") == "b\\*\n");  // none with a line feed
    CHECK(shell.run("ls pwned 2>/dev/null").output.empty());
}

}  // namespace
}  // namespace vantlo::test
