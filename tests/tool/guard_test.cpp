#include <doctest/doctest.h>

#include "ado/native/open_connection.h"
#include "bookkeeping/posting_guard.h"
#include "tests/support/shell.h"

// What the component does not check by design, and the guard of the host does.

namespace vantlo::test {
namespace {

TEST_CASE("has_comment finds two minus signs outside literals only, where the engine reads a comment") {
    struct Row {
        const char16_t* statement;
        bool anywhere;
        bool before_blank;
    };
    const Row rows[] = {
        {u"update Inventory set CurrentQty = CurrentQty--3 where WID='W1'", true, false},
        {u"update Inventory set CurrentQty = CurrentQty - -3 where WID='W1'", false, false},
        {u"select * from Inventory where WID='a--b' and GId='x'", false, false},
        {u"select * from Inventory where WID='a -- b' and GId='x'", false, false},
        {u"select * from Inventory where WID='a''--b' and GId='x'", false, false},
        {u"select * from Inventory where WID='a''' -- and GId='x'", true, true},
        {u"select * from Inventory where Status=1--1 --\tand GId='x'", true, true},
        {u"--", true, true},
        {u"-", false, false},
        {u"", false, false},
    };
    for (const Row& row : rows) {
        INFO(to_utf8(row.statement));
        CHECK(has_comment(row.statement, CommentRule::anywhere) == row.anywhere);
        CHECK(has_comment(row.statement, CommentRule::before_blank) == row.before_blank);
        CHECK_FALSE(has_comment(row.statement, CommentRule::nowhere));
    }
}

std::string bill(const std::string& kind, const std::string& id, const std::string& fields, const std::string& line) {
    return R"({"bills": [{"kind": ")" + kind + R"(", "id": ")" + id + R"(", "date": "2024-03-05", )" + fields +
           R"("lines": [{)" + line + "}]}]}";
}

/// A shop with 10 of G1 in W1, and its shell.
struct Shop {
    Shop() {
        shell.vantlo("init");
        shell.file("start.json", bill("stock-in", "B1", "", R"("goods": "G1", "quantity": 10, "receiver": "W1")"));
        REQUIRE(shell.vantlo("save start.json").exit_code == 0);
        shell.file("other.json", bill("stock-in", "B2", "", R"("goods": "G2", "quantity": 7, "receiver": "W1")"));
        REQUIRE(shell.vantlo("save other.json").exit_code == 0);
    }

    Shell shell;
};

TEST_CASE_FIXTURE(Shop, "A negative quantity whose statement would lose its WHERE clause is refused unless forced") {
    const char* const kinds[] = {"assembly", "disassembly"};
    for (const std::string kind : kinds) {
        CAPTURE(kind);
        const bool takes_components = kind == "assembly";
        const std::string part = R"("goods": "G1", "warehouse": "W1", "quantity": )";
        const std::string header =
            R"("goods": ")" + std::string(takes_components ? "G9" : "G1") + R"(", "warehouse": "W1", "quantity": )";
        const std::string negative =
            takes_components ? bill(kind, "A1", header + "1, ", part + "-3")
                             : bill(kind, "A1", header + "-3, ", R"("goods": "P1", "warehouse": "W1", "quantity": 1)");
        shell.file("negative.json", negative);
        const std::string before = shell.vantlo("ledger").output;
        const Finished refused = shell.vantlo("save negative.json");
        CHECK(refused.exit_code == 7);
        CHECK_MESSAGE(refused.has("CurrentQty = CurrentQty--3 where"), refused.output);
        CHECK(shell.vantlo("ledger").output == before);
        CHECK(shell.vantlo("delete " + kind + " A1").exit_code == 8);

        const Finished forced = shell.vantlo("save --force --dry-run negative.json");
        CHECK(forced.exit_code == 0);
        CHECK(forced.has("warning: " + kind + " A1: the quantity is negative"));
    }
}

TEST_CASE_FIXTURE(Shop, "A bill that could only be taken back with two minus signs is refused when it is saved") {
    struct Row {
        std::string kind;
        std::string header;
        std::string line;
        std::string told;
    };
    const auto of = [](const std::string& goods, int quantity) {
        return "\"goods\": \"" + goods + "\", \"warehouse\": \"W1\", \"quantity\": " + std::to_string(quantity);
    };
    const Row rows[] = {{"assembly", of("G9", -3), of("G1", 1), "the header has a negative quantity"},
                        {"disassembly", of("G9", 1), of("G1", -3), "line 1 has a negative quantity"}};
    for (const Row& row : rows) {
        CAPTURE(row.kind);
        shell.file("negative.json", bill(row.kind, "A1", row.header + ", ", row.line));
        const std::string before = shell.vantlo("ledger").output;
        for (const std::string command : {"save", "import"}) {
            const Finished refused = shell.vantlo(command + " negative.json");
            CHECK(refused.exit_code == 7);
            CHECK_MESSAGE(refused.has(row.kind + " A1: " + row.told + ": this bill could be saved"), refused.output);
        }
        CHECK(shell.vantlo("ledger").output == before);
        const Finished forced = shell.vantlo("save --force negative.json");
        CHECK(forced.exit_code == 0);
        CHECK(forced.has("warning: " + row.kind + " A1: " + row.told));
        CHECK(shell.vantlo("delete " + row.kind + " A1").exit_code == 7);
        shell.run("sqlite3 vantlo.db \"delete from GoodsBill; delete from GoodsBillItems; delete from BillHistory\"");
    }
    // A member that writes a blank before its minus sign takes a negative quantity back as well.
    shell.file("negative.json", bill("stock-in", "B9", "", R"("goods": "G1", "quantity": -1, "receiver": "W1")"));
    CHECK(shell.vantlo("save negative.json").exit_code == 0);
    CHECK(shell.vantlo("delete stock-in B9").exit_code == 0);
}

TEST_CASE_FIXTURE(Shop, "Taking back another quantity than was posted is refused unless forced") {
    const auto save_box = [&](const std::string& factor, const std::string& id) {
        shell.file("box.json", R"({"units": [{"goods": "G5", "unit": "box", "factor": )" + factor +
                                   R"(}], "bills": [{"kind": "stock-in", "id": ")" + id + R"(", "lines": [
            {"goods": "G5", "unit": "box", "quantity": 2, "receiver": "W1"},
            {"goods": "G1", "quantity": 1, "receiver": "W1"}]}]})");
        return shell.vantlo("save --yes box.json").exit_code;
    };
    REQUIRE(save_box("10", "C1") == 0);
    CHECK(shell.vantlo("delete --dry-run stock-in C1").exit_code == 0);
    REQUIRE(save_box("99", "C2") == 0);
    const std::string before = shell.vantlo("ledger").output;
    const Finished refused = shell.vantlo("delete stock-in C1");
    CHECK(refused.exit_code == 7);
    CHECK_MESSAGE(
        refused.has("stock-in C1: taking it back moves other quantities than were posted: a unit's factor or the "
                    "bill was changed since (--force takes it back all the same): W1 G5, status 0: 20 was posted, "
                    "-198 is taken back\n"),
        refused.output);
    CHECK(shell.vantlo("ledger").output == before);
    CHECK(shell.vantlo("bill stock-in C1").exit_code == 0);
    CHECK(shell.vantlo("delete stock-in C2").exit_code == 0);

    // Without a journal nothing is known of what was posted.
    shell.vantlo("journal off");
    const Finished forced = shell.vantlo("delete --force stock-in C1");
    CHECK(forced.exit_code == 0);
    CHECK(forced.has("warning: stock-in C1: taking it back moves other quantities"));
    shell.vantlo("leave --yes");
    shell.vantlo("init --no-journal");
    REQUIRE(save_box("10", "C3") == 0);
    REQUIRE(save_box("99", "C4") == 0);
    CHECK(shell.vantlo("delete stock-in C3").exit_code == 0);
}

TEST_CASE_FIXTURE(Shop, "A stored bill without its warehouse, or with one that its kind does not read, is warned of") {
    shell.run("sqlite3 vantlo.db \"update StockBillItems set Receiver='', Supplier='W7' where BillId='B1'\"");
    const Finished taken_back = shell.vantlo("delete --force --dry-run stock-in B1");
    CHECK(taken_back.exit_code == 0);
    CHECK_MESSAGE(taken_back.has("warning: stock-in B1: line 1 has no \"receiver\": that stock is posted to the "
                                 "warehouse without a name\n"),
                  taken_back.output);
    CHECK(taken_back.has("warning: stock-in B1: line 1 has \"supplier\", which this kind of bill does not read\n"));
}

TEST_CASE_FIXTURE(Shop, "A forced negative quantity changes every row, as it was foretold") {
    shell.file("negative.json", bill("assembly", "A1", R"("goods": "G9", "warehouse": "W1", "quantity": 1, )",
                                     R"("goods": "G1", "warehouse": "W1", "quantity": -3)"));
    CHECK(shell.vantlo("save --force negative.json").exit_code == 0);
    const Finished ledger = shell.vantlo("ledger --goods G2");
    CHECK_MESSAGE(ledger.has(" 7      -3        7\n"), ledger.output);  // OutQty of goods that no bill named
}

TEST_CASE_FIXTURE(Shop, "Stock that goes negative is warned of, and refused on request") {
    shell.file("out.json", bill("stock-out", "B3", "", R"("goods": "G1", "quantity": 12, "supplier": "W1")"));
    const std::string before = shell.vantlo("ledger").output;
    const Finished refused = shell.vantlo("save --fail-on-negative out.json");
    CHECK(refused.exit_code == 7);
    CHECK(refused.has("stock-out B3: W1 G1, status 0 goes to -2 on hand"));
    CHECK(shell.vantlo("ledger").output == before);

    const Finished warned = shell.vantlo("save out.json");
    CHECK(warned.exit_code == 0);
    CHECK(warned.has("warning: stock-out B3: W1 G1, status 0 goes to -2 on hand"));

    // A receipt that leaves the row below zero makes it better: no warning.
    shell.file("in.json", bill("stock-in", "B4", "", R"("goods": "G1", "quantity": 1, "receiver": "W1")"));
    const Finished mended = shell.vantlo("save --fail-on-negative in.json");
    CHECK(mended.exit_code == 0);
    CHECK(!mended.has("warning"));
    // Once in a run for each ledger row, however often it goes further down.
    const std::string out = R"({"goods": "G1", "quantity": 1, "supplier": "W1"})";
    shell.file("more.json", R"({"bills": [{"kind": "stock-out", "id": "B5", "lines": [)" + out + "," + out +
                                R"(]}, {"kind": "stock-out", "id": "B6", "lines": [)" + out +
                                R"(, {"goods": "G3", "quantity": 99, "supplier": "W1"}]}]})");
    const Finished once = shell.vantlo("save more.json");
    CHECK(once.has("warning: stock-out B5: W1 G1, status 0 goes to -3 on hand"));
    CHECK(!once.has("B6: W1 G1"));
    CHECK(once.has("warning: stock-out B6: W1 G3, status 0 goes to "));
    // Taking back what was received takes stock below zero too.
    CHECK(shell.vantlo("delete --fail-on-negative stock-in B1").exit_code == 7);
}

TEST_CASE_FIXTURE(Shop, "An unknown unit is warned of once, a base unit and a unit with a factor never") {
    shell.file("master.json",
               R"({"goods": [{"id": "G1", "unit": "个"}], "units": [{"goods": "G1", "unit": "箱", "factor": 12}]})");
    CHECK(shell.vantlo("save master.json").exit_code == 0);
    const auto saved = [&](const std::string& id, const std::string& unit) {
        const std::string line = R"({"goods": "G1", "quantity": 1, "receiver": "W1", "unit": ")" + unit + R"("})";
        shell.file("unit.json", R"({"bills": [{"kind": "stock-in", "id": ")" + id +
                                    R"(", "date": "2024-03-05", "lines": [)" + line + "," + line + "]}]}");
        return shell.vantlo("save unit.json");
    };
    for (const std::string known : {"个", "箱", ""}) CHECK(!saved("K" + known, known).has("warning"));
    const Finished unknown = saved("U1", "O'盒");
    CHECK(unknown.exit_code == 0);
    const std::string warning = "warning: stock-in U1: goods G1 have no unit \"O'盒\": it counts as one base unit\n";
    CHECK_MESSAGE(unknown.has(warning), unknown.output);
    CHECK(unknown.output.find(warning) == unknown.output.rfind(warning));
}

TEST_CASE_FIXTURE(Shop, "Unknown goods and warehouses are warned of once, together, and --strict refuses them") {
    const std::string line = R"({"goods": "GX", "quantity": 1, "receiver": "WX"})";
    shell.file("in.json", R"({"bills": [{"kind": "stock-in", "id": "B3", "lines": [)" + line + "," + line +
                              R"(, {"goods": "GY", "unit": "箱", "quantity": 1, "receiver": "W1"}]}]})");
    const std::string before = shell.vantlo("ledger").output;
    // A shop without any master data has no use for a warning.
    CHECK(!shell.vantlo("save --dry-run in.json").has("not in the table"));
    for (const std::string command : {"save", "import"}) {
        const Finished refused = shell.vantlo(command + " --strict in.json");
        CHECK(refused.exit_code == 7);
        CHECK_MESSAGE(refused.has("goods that are not in the table of goods (2): GX, GY\n"), refused.output);
        CHECK(refused.has("warehouses that are not in the table of warehouses (2): W1, WX\n"));
        CHECK(refused.has("unknown units, which would count as one base unit (1): GY 箱\n"));
    }
    shell.file("master.json", R"({"goods": [{"id": "GX"}], "warehouses": [{"id": "W1"}]})");
    CHECK(!shell.vantlo("save master.json").has("warning"));
    CHECK(shell.vantlo("ledger").output == before);
    const Finished warned = shell.vantlo("save in.json");
    CHECK(warned.exit_code == 0);
    CHECK_MESSAGE(warned.has("vantlo: warning: goods that are not in the table of goods (1): GY\n"), warned.output);
    CHECK(warned.has("vantlo: warning: warehouses that are not in the table of warehouses (1): WX\n"));
    CHECK(shell.vantlo("--lang zh save --dry-run --strict in.json").exit_code == 0);  // passed over
}

TEST_CASE_FIXTURE(Shop, "Factors of 0 or below and quantities that come to nothing are warned of") {
    const auto line = [](const std::string& unit, const std::string& quantity) {
        return R"({"goods": "G1", "receiver": "W1", "unit": ")" + unit + R"(", "quantity": )" + quantity + "}";
    };
    shell.file("in.json", R"({"units": [{"goods": "G1", "unit": "box", "factor": -2}, {"goods": "G1", "unit": "nil"},
        {"goods": "G1", "unit": "crate", "factor": 1000}], "bills": [{"kind": "stock-in", "id": "B3", "lines": [)" +
                              line("box", "1") + "," + line("nil", "1") + "," + line("crate", "0.00001") + "," +
                              line("", "0.00001") + "]}]}");
    const Finished warned = shell.vantlo("save --dry-run in.json");
    CHECK(warned.exit_code == 0);
    CHECK_MESSAGE(
        warned.has("units with a factor of 0 or below (2; 0 counts as 1, a negative factor turns receipts into "
                   "issues): G1 box -2, G1 nil 0\n"),
        warned.output);
    CHECK(warned.has("lines whose quantity comes to 0 in base units (2): stock-in B3 3, stock-in B3 4\n"));
    CHECK(shell.vantlo("import --strict in.json").exit_code == 7);
}

TEST_CASE_FIXTURE(Shop, "A line without a quantity is warned of") {
    shell.file("null.json", bill("assembly", "A1", R"("goods": "G9", "warehouse": "W1", "quantity": null, )",
                                 R"("goods": "G1", "warehouse": "W1", "quantity": null)"));
    const Finished saved = shell.vantlo("save null.json");
    CHECK_MESSAGE(saved.has("warning: assembly A1: the header has no quantity\n"), saved.output);
    CHECK(saved.has("warning: assembly A1: line 1 has no quantity\n"));
}

TEST_CASE_FIXTURE(Shop, "What is saved before a refused bill is told") {
    shell.file("out.json", bill("stock-out", "B3", "", R"("goods": "G1", "quantity": 12, "supplier": "W1")"));
    shell.file("in.json", bill("stock-in", "B4", "", R"("goods": "G3", "quantity": 1, "receiver": "W1")"));
    const Finished refused = shell.vantlo("save --fail-on-negative in.json out.json");
    CHECK(refused.exit_code == 7);
    CHECK(refused.has("Saved 1 bill with 1 line."));
}

/// Runs statements on a shop's database behind the tool's back.
void run_behind(const Shell& shell, const std::string& script) {
    open_connection("sqlite:" + shell.path("vantlo.db"))->run_script(script);
}

TEST_CASE_FIXTURE(Shop, "A bill whose write the database swallows is refused, and nothing of it stays") {
    struct Row {
        const char* trigger;
        const char* first;
        const char* second;
    };
    const Row rows[] = {
        {"create trigger Own before insert on Inventory begin select raise(ignore); end", "G1", "G7"},
        {"create trigger Own before update on Inventory begin select raise(ignore); end", "G7", "G1"},
    };
    for (const Row& row : rows) {
        INFO(row.trigger);
        run_behind(shell, row.trigger);
        const auto line = [](const std::string& goods) {
            return R"("goods": ")" + goods + R"(", "quantity": 5, "receiver": "W1")";
        };
        shell.file("in.json", bill("stock-in", "B3", "", line(row.first) + "}, {" + line(row.second)));
        const std::string before = shell.vantlo("ledger").output;
        for (const std::string command : {"save", "save --dry-run", "import"}) {
            const Finished refused = shell.vantlo(command + " in.json");
            CHECK(refused.exit_code == 7);
            CHECK_MESSAGE(refused.has("stock-in B3: the database took the statement and left the ledger as it was"),
                          refused.output);
        }
        CHECK(shell.vantlo("ledger").output == before);
        CHECK(shell.vantlo("delete stock-in B3").exit_code == 8);
        run_behind(shell, "drop trigger Own");
    }
}

TEST_CASE_FIXTURE(Shop, "A bill that would move several rows of one key is refused, and forced moves each of them") {
    run_behind(shell, "insert into Inventory select * from Inventory where GId='G1'");
    shell.file("in.json", bill("stock-in", "B3", "", R"("goods": "G1", "quantity": 5, "receiver": "W1")"));
    const std::string before = shell.vantlo("ledger").output;
    const Finished refused = shell.vantlo("save in.json");
    CHECK(refused.exit_code == 7);
    CHECK_MESSAGE(refused.has("several rows that the database takes for W1 G1, status 0, 2 in all"), refused.output);
    CHECK(shell.vantlo("ledger").output == before);
    const Finished forced = shell.vantlo("save --force in.json");
    CHECK(forced.exit_code == 0);
    CHECK(forced.has("warning: stock-in B3: the ledger has several rows"));
}

TEST_CASE_FIXTURE(Shop, "A ledger that is a view whose triggers do the work is posted to") {
    run_behind(
        shell,
        "alter table Inventory rename to Stock; create view Inventory as select * from Stock;"
        "create trigger I instead of insert on Inventory begin insert into Stock(WID,GId,Model1,Model2,Status,InQty,"
        "OutQty,CurrentQty) values(new.WID,new.GId,new.Model1,new.Model2,new.Status,new.InQty,new.OutQty,"
        "new.CurrentQty); end;"
        "create trigger U instead of update on Inventory begin update Stock set InQty=new.InQty,OutQty=new.OutQty,"
        "CurrentQty=new.CurrentQty where WID=new.WID and GId=new.GId; end");
    shell.file("in.json", bill("stock-in", "B3", "",
                               R"("goods": "G1", "quantity": 5, "receiver": "W1"}, {)"
                               R"("goods": "G8", "quantity": 5, "receiver": "W1")"));
    const Finished saved = shell.vantlo("save in.json");
    CHECK_MESSAGE(saved.exit_code == 0, saved.output);
    CHECK(shell.vantlo("ledger --goods G1").has("15"));
}

}  // namespace
}  // namespace vantlo::test
