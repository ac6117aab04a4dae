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

}  // namespace
}  // namespace vantlo::test
