#include "audit/repair_undo.h"

#include <doctest/doctest.h>

#include "audit/repair.h"
#include "bookkeeping/journal.h"
#include "tests/audit/repairs.h"
#include "tests/audit/spoilings.h"

namespace vantlo::test {
namespace {

TEST_CASE("Undoing a repair brings the ledger back as it was, whatever was wrong, and undoing that repairs it again") {
    const auto shop = sample_shop_in_memory();
    for (const Spoiling& spoiling : spoilings()) {
        if (spoiling.cause == Cause::refused_bill) continue;
        INFO(std::string(spoiling.name));
        const auto database = spoiling.bill == nullptr ? shop : empty_shop_in_memory();
        if (spoiling.bill == nullptr) database->begin();
        spoil(database, spoiling);
        check_undoing(*database, repairs_of(verify(*database, Language::english).findings));
        if (spoiling.bill == nullptr) database->roll_back();
    }
}

const LedgerKey g1{{u"W1", u"G1", u"", u"", u"0"}};

TEST_CASE("Undoing a repair brings back values of any kind to the last bit, and a host's own columns") {
    const char* const values[] = {
        "1.5",       "0.1 + 0.2", "9007199254740993",        "1e300", "9e999", "-9e999", "'abc'", "' 12 '",
        "x'00ff27'", "null",      "cast(x'410042' as text)",
    };
    for (const char* const value : values) {
        for (const int rows : {1, 2}) {
            INFO(value);
            CAPTURE(rows);
            const auto database = empty_shop_in_memory();
            database->run_script(
                "drop table Inventory; create table Inventory(Own integer primary key, WID text, GId text, Model1 "
                "text, "
                "Model2 text, Status integer, Class, Unit, InQty, OutQty, CurrentQty, Remarks text, \"Shelf no\" blob, "
                "Doubled as (Own * 2))");
            for (int row = 0; row < rows; ++row) {
                database->run(
                    u"insert into Inventory(WID,GId,Model1,Model2,Status,Class,InQty,OutQty,CurrentQty,Remarks,"
                    u"\"Shelf no\") values('W1','G1','','',0,'it''s'," +
                    from_utf8(value) + u",0,0,'备注 𠮷 \\', x'0001')");
            }
            check_undoing(*database, seven_on_hand(*database, g1));
        }
    }
}

TEST_CASE("A row that somebody has moved since a repair is told with both values, and by whom the journal knows") {
    const LedgerKey red{{u"W1", u"G1", u"red", u"", u"0"}};
    const auto database = empty_shop_in_memory();
    switch_journal_on(*database);
    const TextView insert =
        u"insert into Inventory(WID,GId,Model1,Model2,Status,InQty,OutQty,CurrentQty) "
        u"values('W1','G1','red','',0,9,0,9)";
    database->run(insert);
    run_repairs(seven_on_hand(*database, red), *database, cause_in_journal);
    CHECK(plan_undo(*database, 1).moved.empty());
    {
        Bookkeeping bookkeeping([&] { return database; });
        bookkeeping.save(stock_bill(u"B1", u"G1", 4, u"W1", u"W2"));
    }
    const UndoPlan plan = plan_undo(*database, 1);
    REQUIRE(plan.moved.size() == 1);
    REQUIRE(plan.moved[0].now.size() == 1);
    CHECK(*plan.moved[0].left.at(0).literal(u"InQty") == u"7");
    CHECK(*plan.moved[0].now.at(0).literal(u"InQty") == u"11");
    REQUIRE(plan.moved[0].latest);
    CHECK(plan.moved[0].latest->program == u"vantlo");
    CHECK(plan.moved[0].latest->bill == u"stock B1");
    database->run(u"delete from Inventory");
    CHECK(plan_undo(*database, 1).moved.at(0).now.empty());
}

TEST_CASE("The movements of a repair and of its undoing name it, and those after it do not") {
    const auto database = empty_shop_in_memory();
    switch_journal_on(*database);
    database->run(
        u"insert into Inventory(WID,GId,Model1,Model2,Status,InQty,OutQty,CurrentQty) "
        u"values('W1','G1','','',0,9,0,9)");
    check_undoing(*database, seven_on_hand(*database, g1));
    database->run(u"update Inventory set InQty=1");
    const ResultTable movements =
        database->run(u"select Program,BillKind,BillId,Member from StockMovement order by MovementNo");
    const std::vector<Variant> programs[] = {{Null{}, Null{}, Null{}, Null{}},
                                             {u"vantlo repair 1", Null{}, Null{}, Null{}},
                                             {u"vantlo repair 2", Null{}, Null{}, Null{}},
                                             {u"vantlo repair 3", Null{}, Null{}, Null{}},
                                             {Null{}, Null{}, Null{}, Null{}}};
    REQUIRE(movements.rows.size() == std::size(programs));
    for (std::size_t i = 0; i < std::size(programs); ++i) CHECK(movements.rows[i] == programs[i]);
}

TEST_CASE("Duplicates that are merged keep class and unit, and the remarks of each") {
    const auto database = empty_shop_in_memory();
    database->run_script(
        "insert into Inventory(WID,GId,Model1,Model2,Status,Class,Unit,InQty,OutQty,CurrentQty,Remarks) values"
        "('W1','G1','','',0,null,'box',1,0,1,'by hand'),('W1','G1','','',0,'phones','',2,0,2,'counted in May'),"
        "('W1','G1','','',0,'other','',2,0,2,'by hand'),('W1','G1','','',0,'other','',2,0,2,null)");
    run_repairs(seven_on_hand(*database, g1), *database, cause_in_journal);
    const ResultTable rows = database->run(u"select Class,Unit,Remarks from Inventory");
    REQUIRE(rows.rows.size() == 1);
    CHECK(rows.rows[0] == std::vector<Variant>{u"phones", u"box", u"by hand; counted in May"});
}

TEST_CASE("A repair whose key the database takes for another's is told as spoilt") {
    const auto database = empty_shop_in_memory();
    database->run_script(
        "drop table Inventory; create table Inventory(WID text, GId text collate nocase, Model1 text, Model2 text, "
        "Status, "
        "Class, Unit, InQty, OutQty, CurrentQty, Remarks);"
        "insert into Inventory(WID,GId,Model1,Model2,Status,InQty,OutQty,CurrentQty) values('W1','g1','','',0,9,0,9)");
    CHECK(run_repairs(seven_on_hand(*database, g1), *database, cause_in_journal).spoilt == std::vector{g1});
}

TEST_CASE("An image that is none is not read") {
    for (const TextView text : {u"", u"{", u"[1]", u"{\"WID\": 1}", u"7"}) CHECK(!image_from(text));
    const RowImage image{{{"WID", u"'W''1'"}, {"仓位 \"A\"", u"null"}}};
    CHECK(image_from(text_of(image)) == image);
}

}  // namespace
}  // namespace vantlo::test
