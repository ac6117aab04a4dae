#include <doctest/doctest.h>

#include "automation/calendar.h"
#include "reports/lists.h"
#include "reports/stock_card.h"
#include "tests/reports/known_journal.h"

// Cards and reports of one journal whose movements, and their times, are known. The same on every engine.

namespace vantlo::test {
namespace {

TEST_CASE_FIXTURE(KnownJournal, "The known journal explains the ledger") {
    CHECK(journal_status(connection()).unexplained.empty());
    CHECK(journal_status(connection()).movements == 6);
}

TEST_CASE_FIXTURE(KnownJournal,
                  "A period's report adds up by month, warehouse, goods and class, each unit for itself") {
    CHECK(report(ReportBy::month, "2024-01", "2024-02") ==
          "2024-01,pc,0,10,3,0,7\n2024-02,m,0,2.5,0,0,2.5\n2024-02,pc,7,0,0,1,8\n");
    CHECK(report(ReportBy::day, "2024-02", "2024-02") == "2024-02-01,m,0,2.5,0,0,2.5\n2024-02-10,pc,7,0,0,1,8\n");
    CHECK(report(ReportBy::warehouse, "2024-01", "2024-02") == "W1,Main,m,0,2.5,0,0,2.5\nW1,Main,pc,0,10,3,1,8\n");
    CHECK(report(ReportBy::warehouse, "2024-02", "2024-02") == "W1,Main,m,0,2.5,0,0,2.5\nW1,Main,pc,7,0,0,1,8\n");
    CHECK(report(ReportBy::goods, "2024", "") ==
          "G1,Screen,pc,0,14,3,1,12\nG2,Cable,m,0,2.5,0,0,2.5\nG9,,? G9,0,0.0001,0,0,0.0001\n");
    CHECK(report(ReportBy::goods_class, "2024-03", "") ==
          ",? G9,0,0.0001,0,0,0.0001\nA,pc,8,4,0,0,12\nB,m,2.5,0,0,0,2.5\n");
    CHECK(report(ReportBy::kind, "2024", "2024") ==
          ",pc,0,0,1\nstock-in,? G9,0.0001,0,0\nstock-in,m,2.5,0,0\nstock-in,pc,14,0,0\nstock-out,pc,0,3,0\n");
}

TEST_CASE_FIXTURE(KnownJournal, "A report of days before the journal is empty, and one of days to come is the ledger") {
    CHECK(report(ReportBy::warehouse, "2020", "2023").empty());
    CHECK(report(ReportBy::goods, "2100", "") ==
          "G1,Screen,pc,12,0,0,0,12\nG2,Cable,m,2.5,0,0,0,2.5\nG9,,? G9,0.0001,0,0,0,0.0001\n");
}

TEST_CASE_FIXTURE(KnownJournal,
                  "A stock card begins with what was there, and each balance follows from the one before") {
    CardsWanted wanted;
    wanted.goods = {u"G1"};
    wanted.warehouses = {u"W1"};
    wanted.period = period("2024-01-31", "");
    const std::vector<StockCard> cards = read_cards(connection(), wanted);
    REQUIRE(cards.size() == 1);
    CHECK(cards[0].row.goods_name == u"Screen");
    CHECK(cards[0].row.warehouse_name == u"Main");
    CHECK(cards[0].row.unit == u"pc");
    CHECK(cards[0].opening == Currency::from_whole(10));
    REQUIRE(cards[0].entries.size() == 2);
    CHECK(format_date_time(cards[0].entries[0].moved_at) == u"2024-01-31 23:59:59");
    CHECK(cards[0].entries[0].bill_id == u"B2");
    CHECK(cards[0].entries[0].balance == Currency::from_whole(7));
    CHECK(cards[0].entries[1].bill_kind.empty());
    CHECK(cards[0].entries[1].balance == Currency::from_whole(8));
    CHECK(cards[0].closing == Currency::from_whole(8));

    wanted.without_bill = true;
    CHECK(read_cards(connection(), wanted)[0].entries.size() == 1);
    wanted = {};
    wanted.goods = {u"G*"};
    CHECK(read_cards(connection(), wanted).size() == 4);
    wanted.without_bill = true;
    CHECK(read_cards(connection(), wanted).size() == 1);
}

TEST_CASE_FIXTURE(KnownJournal,
                  "The newest movements are as many as wanted, and what was before them is opening stock") {
    const std::vector<StockCard> whole = read_cards(connection(), {});
    for (std::int64_t most = 0; most <= 7; ++most) {
        CAPTURE(most);
        const NewestMovements newest = newest_movements(connection(), most);
        CHECK(newest.begins.has_value() == (most < 6));
        CardsWanted wanted;
        wanted.from = newest.from;
        const std::vector<StockCard> cards = read_cards(connection(), wanted);
        REQUIRE(cards.size() == whole.size());
        std::size_t movements = 0;
        for (std::size_t i = 0; i < cards.size(); ++i) {
            movements += cards[i].entries.size();
            CHECK(cards[i].closing == whole[i].closing);
        }
        CHECK(movements == static_cast<std::size_t>(std::min<std::int64_t>(most, 6)));
    }
    CHECK(to_utf8(format_date_time(*newest_movements(connection(), 5).begins)) ==
          to_utf8(format_date_time(whole[0].entries[1].moved_at)));
}

TEST_CASE("Entries by which a journal begins are opening stock, not receipts") {
    std::unique_ptr<TestDatabase> database = make_test_database();
    database->clear();
    database->connection().run(
        u"insert into Inventory(WID,GId,Model1,Model2,Status,InQty,OutQty,CurrentQty) "
        u"values('W1','G1','','',0,30,10,20)");
    JournaledDatabase shop(std::move(database));
    shop.connection().run(u"update Inventory set InQty=35,CurrentQty=25");
    CHECK(KnownJournal::rows_of(report_period(shop.connection(), ReportBy::goods, {})) == "G1,,? G1,20,5,0,0,25\n");
    CardsWanted wanted;
    wanted.goods = {u"G1"};
    const std::vector<StockCard> cards = read_cards(shop.connection(), wanted);
    REQUIRE(cards.size() == 1);
    CHECK(cards[0].opening == Currency::from_whole(20));
    CHECK(cards[0].entries.size() == 1);
    shop.database().clear();
}

TEST_CASE("The days of a period are those of the local calendar, whatever the clock of the journal") {
    const TimeZone shanghai("CST-8");
    const Date clock = *date_from_text(u"2024-01-31 16:00:00");
    CHECK(format_date_time(local_time(dialect_named("sqlite"), clock)) == u"2024-02-01 00:00:00");
    CHECK(local_time(dialect_named("postgresql"), clock) == clock);
}

TEST_CASE("Bills are listed by date and id, and found by kind, days, goods, warehouse and text") {
    std::unique_ptr<TestDatabase> database = make_test_database();
    database->clear();
    NativeConnection& connection = database->connection();
    connection.run(
        u"insert into StockBill(Id,Kind,BillDate,Remarks) values('B1','stock-in','2024-03-05','First batch')");
    connection.run(u"insert into StockBill(Id,Kind,BillDate) values('A2','loss','2024-03-05')");
    connection.run(u"insert into StockBillItems(BillId,ItemNo,Gid,Receiver,Supplier) values('B1',1,'G1','W1','')");
    connection.run(u"insert into StockBillItems(BillId,ItemNo,Gid,Receiver,Supplier) values('B1',2,'G2','W1','')");
    connection.run(
        u"insert into StockBillItems(BillId,ItemNo,Gid,Receiver,Supplier,Remarks) values('A2',1,'G1','','W2','50% "
        u"wet')");
    connection.run(
        u"insert into GoodsBill(Id,Kind,BillDate,Gid,WareHouseID) values('Z1','assembly','2024-02-01','G7','W7')");
    const auto found = [&](const BillsWanted& wanted) {
        std::string ids;
        for (const auto& row : list_bills(connection, wanted).rows)
            ids += cell_text(row[2]) + ":" + cell_text(row[3]) + " ";
        return ids;
    };
    CHECK(found({}) == "Z1:0 A2:1 B1:2 ");
    CHECK(found({.kinds = {find_bill_kind("loss"), find_bill_kind("assembly")}}) == "Z1:0 A2:1 ");
    CHECK(found({.period = *days_of("2024-03")}) == "A2:1 B1:2 ");
    CHECK(found({.ids = {u"B*"}}) == "B1:2 ");
    CHECK(found({.goods = {u"G1"}}) == "A2:1 B1:2 ");
    CHECK(found({.goods = {u"G7"}}) == "Z1:0 ");
    CHECK(found({.warehouses = {u"W2", u"W7"}}) == "Z1:0 A2:1 ");
    CHECK(found({.text = u"BATCH"}) == "B1:2 ");
    CHECK(found({.text = u"50%"}) == "A2:1 ");
    CHECK(found({.text = u"5_%"}).empty());
    database->clear();
}

}  // namespace
}  // namespace vantlo::test
