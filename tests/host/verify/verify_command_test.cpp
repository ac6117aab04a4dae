#include <doctest/doctest.h>

#include "tests/host/verify/spoilings.h"
#include "tests/support/shell.h"

// vantlo verify and vantlo repair, as a user runs them.

namespace vantlo::test {
namespace {

/// A shop whose ledger was spoilt behind the tool's back.
void spoil(const Shell& shell, TextView statement) {
    open_connection("sqlite:" + shell.path("vantlo.db"))->run(statement);
}

void make_shop(const Shell& shell) {
    CHECK(shell.vantlo("init").exit_code == 0);
    shell.file("bills.json", R"({"units": [{"goods": "G1", "unit": "箱", "factor": 12}], "bills": [)"
                             R"({"kind": "stock-in", "id": "R1", "date": "2024-03-05", "lines": [)"
                             R"({"goods": "G1", "unit": "箱", "quantity": 2, "receiver": "W1"}]},)"
                             R"({"kind": "stock-out", "id": "C1", "date": "2024-03-06", "lines": [)"
                             R"({"goods": "G1", "quantity": 5, "supplier": "W1"}]}]})");
    CHECK(shell.vantlo("save bills.json").exit_code == 0);
}

TEST_CASE("vantlo verify ends with 0 if ledger and bills agree, and with 3 if they differ") {
    const Shell shell;
    make_shop(shell);
    const Finished clean = shell.vantlo("verify");
    CHECK(clean.exit_code == 0);
    CHECK(clean.output == "The ledger agrees with the bills: 2 bills, 1 ledger rows.\n");
    CHECK(shell.vantlo("--lang zh verify").output == "台账与单据相符：单据 2 张，台账 1 行。\n");

    spoil(shell, u"update Inventory set InQty=25,CurrentQty=20");
    const Finished differs = shell.vantlo("verify 2>/dev/null");
    CHECK(differs.exit_code == 3);
    CHECK(differs.output ==
          "The ledger differs from the bills: causes 1, cases 1, ledger rows 1.\n"
          "\n"
          "1. A quantity is not what the bills say (1)\n"
          "   WID='W1' and GId='G1' and Model1='' and Model2='' and Status=0\n"
          "     ledger  received 25  issued 5  on hand 20\n"
          "     bills   received 24  issued 5  on hand 19\n"
          "     touched by stock-in R1, stock-out C1\n");
    CHECK(shell.vantlo("--lang zh verify").has("1. 数量与单据不符 (1)\n"));
}

}  // namespace
}  // namespace vantlo::test
