#include "reports/stock.h"

#include <doctest/doctest.h>

#include <map>
#include <random>

#include "automation/calendar.h"
#include "reports/idle_stock.h"
#include "reports/minimums.h"
#include "tests/reports/known_journal.h"

// The ledger as lists show it, now and at earlier moments. The same on every engine.

namespace vantlo::test {
namespace {

/// Keys and quantities, summed by key, without those that are all 0.
std::map<std::string, std::string> quantities(const std::vector<StockRow>& rows) {
    struct Sums {
        std::int64_t received = 0, issued = 0, on_hand = 0;
    };
    const auto number = [](const Variant& quantity) {
        return quantity.is<Currency>() ? quantity.get_if<Currency>()->ten_thousandths() : 0;
    };
    std::map<std::string, Sums> sums;
    for (const StockRow& row : rows) {
        Sums& key = sums[to_utf8(row.warehouse + u" " + row.goods + u" " + row.model1 + u" " + row.status)];
        key.received += number(row.received);
        key.issued += number(row.issued);
        key.on_hand += number(row.on_hand);
    }
    std::map<std::string, std::string> texts;
    for (const auto& [key, sum] : sums) {
        if (sum.received == 0 && sum.issued == 0 && sum.on_hand == 0) continue;
        texts[key] =
            std::to_string(sum.received) + " " + std::to_string(sum.issued) + " " + std::to_string(sum.on_hand);
    }
    return texts;
}

/// Changes the ledger as hosts do, and as nobody should: rows of one key, rows without quantities, deleted rows, other keys.
class RandomLedger {
public:
    explicit RandomLedger(NativeConnection& database) : database_(database) {}

    void change() {
        const Text where = u" where WID='" + one_of({u"W1", u"W2"}) + u"' and GId='" + one_of({u"G1", u"G2", u"G3"}) +
                           u"' and Model1='" + one_of({u"", u"red"}) + u"' and Status=" + one_of({u"0", u"2"});
        const Text quantity = one_of({u"1", u"0.1", u"0.0001", u"12.5", u"-3", u"1000000"});
        switch (random_() % 8) {
            case 0:
            case 1: return insert(quantity);
            case 2:
                return run(u"update Inventory set OutQty=OutQty+" + quantity + u",CurrentQty=CurrentQty-(" + quantity +
                           u")" + where);
            case 3: return run(u"delete from Inventory" + where);
            case 4: return run(u"update Inventory set WID='" + one_of({u"W1", u"W3"}) + u"'" + where);
            case 5: return run(u"update Inventory set CurrentQty=null" + where);
            default:
                return run(u"update Inventory set InQty=coalesce(InQty,0)+" + quantity +
                           u",CurrentQty=coalesce(CurrentQty,0)+" + quantity + where);
        }
    }

private:
    Text one_of(const std::vector<Text>& texts) { return texts[random_() % texts.size()]; }

    void insert(const Text& quantity) {
        run(u"insert into Inventory(WID,GId,Model1,Model2,Status,InQty,OutQty,CurrentQty) values('" +
            one_of({u"W1", u"W2"}) + u"','" + one_of({u"G1", u"G2", u"G3"}) + u"','" + one_of({u"", u"red"}) +
            u"',''," + one_of({u"0", u"2"}) + u"," + quantity + u",0," + quantity + u")");
    }

    void run(const Text& statement) { database_.run(statement); }

    NativeConnection& database_;
    std::mt19937 random_{20240305};
};

TEST_CASE("The ledger before any movement is what it was then, whichever end it is summed from") {
    JournaledDatabase shop;
    NativeConnection& database = shop.connection();
    RandomLedger ledger(database);
    struct Moment {
        std::int64_t next_movement;
        std::map<std::string, std::string> stock;
    };
    std::vector<Moment> moments;
    database.begin();
    for (int phase = 0; phase < 24; ++phase) {
        for (int i = 0; i < 10; ++i) ledger.change();
        moments.push_back({movement_numbers(database).last + 1, quantities(read_stock(database, {}))});
    }
    database.commit();
    REQUIRE(moments.back().next_movement > 100);
    for (const Moment& moment : moments) {
        CAPTURE(moment.next_movement);
        CHECK(quantities(read_stock_before(database, {}, moment.next_movement)) == moment.stock);
    }
    switch_journal_off(database);
    database.run(u"delete from Inventory");
    CHECK(quantities(read_stock_before(database, {}, moments.back().next_movement)) == moments.back().stock);
    CHECK(quantities(read_stock_before(database, {}, moments.front().next_movement)) == moments.front().stock);
    shop.database().clear();
}

/// `warehouse goods on_hand` of each row.
std::string stock_of(const std::vector<StockRow>& rows) {
    std::string text;
    for (const StockRow& row : rows)
        text += to_utf8(row.warehouse + u" " + row.goods + u" ") + cell_text(row.on_hand) + "\n";
    return text;
}

TEST_CASE_FIXTURE(KnownJournal, "The ledger at the end of a day has that day's movements and no later ones") {
    const auto at = [&](TextView moment) {
        return stock_of(read_stock_at(connection(), {}, *date_from_text(moment)).rows);
    };
    CHECK(at(u"2024-01-06") == "W1 G1 10\n");
    CHECK(at(u"2024-02-01") == "W1 G1 7\n");
    CHECK(at(u"2024-02-02") == "W1 G1 7\nW1 G2 2.5\n");
    CHECK(at(u"2024-03-04") == "W1 G1 8\nW1 G2 2.5\nW2 G1 4\n");
    CHECK(at(u"2100-01-01") == stock_of(read_stock(connection(), {})));
    StockWanted wanted;
    wanted.goods = {u"G?"};
    wanted.warehouses = {u"W2", u"W3"};
    CHECK(stock_of(read_stock_at(connection(), wanted, *date_from_text(u"2024-03-04")).rows) == "W2 G1 4\n");
    CHECK(read_stock_at(connection(), wanted, *date_from_text(u"2024-03-04")).rows[0].goods_name == u"Screen");
}

TEST_CASE_FIXTURE(KnownJournal, "Of days before the journal nothing is told, and of days when it was off that it was") {
    const PastStock before = read_stock_at(connection(), {}, *date_from_text(u"2024-01-05"));
    CHECK(before.rows.empty());
    CHECK(*before.known_from == *date_from_text(u"2024-01-05 10:00:00"));
    CHECK_FALSE(read_stock_at(connection(), {}, *date_from_text(u"2024-03-05")).journal_was_off);
    switch_journal_off(connection());
    CHECK(read_stock_at(connection(), {}, *date_from_text(u"2024-03-05")).journal_was_off);
    CHECK_FALSE(read_stock_at(connection(), {}, *date_from_text(u"2024-03-04")).journal_was_off);
    connection().run(u"update Inventory set CurrentQty=CurrentQty+1 where GId='G2'");
    switch_journal_on(connection());
    const PastStock meanwhile = read_stock_at(connection(), {}, *date_from_text(u"2024-03-05"));
    CHECK(meanwhile.journal_was_off);
    CHECK(stock_of(meanwhile.rows) == "W1 G1 8\nW1 G2 2.5\nW2 G1 4\nW2 G9 0.0001\n");
}

TEST_CASE_FIXTURE(KnownJournal, "Rows are chosen by patterns, statuses and what is on hand") {
    connection().run(
        u"insert into Inventory(WID,GId,Model1,Model2,Status,Class,InQty,OutQty,CurrentQty) "
        u"values('W1','G1','red','',2,'A7',0,5,-5)");
    connection().run(
        u"insert into Inventory(WID,GId,Model1,Model2,Status,Class,InQty,OutQty,CurrentQty) "
        u"values('W1','G1','blue','',1,'A7',5,5,0)");
    const auto found = [&](const StockWanted& wanted) { return stock_of(read_stock(connection(), wanted)); };
    CHECK(found({.goods = {u"G2", u"G9"}}) == "W1 G2 2.5\nW2 G9 0.0001\n");
    CHECK(found({.classes = {u"A*"}}) == "W1 G1 0\nW1 G1 -5\n");
    CHECK(found({.models1 = {u"r?d"}}) == "W1 G1 -5\n");
    CHECK(found({.statuses = {1, 2}}) == "W1 G1 0\nW1 G1 -5\n");
    CHECK(found({.negative = true}) == "W1 G1 -5\n");
    CHECK(found({.warehouses = {u"W1"}, .nonzero = true}) == "W1 G1 8\nW1 G1 -5\nW1 G2 2.5\n");
}

TEST_CASE_FIXTURE(KnownJournal, "Grouped rows are added within a unit alone") {
    const auto grouped = [&](const std::vector<StockGroup>& groups) {
        return KnownJournal::rows_of(group_stock(read_stock(connection(), {}), groups));
    };
    CHECK(grouped({StockGroup::goods}) ==
          "G1,Screen,pc,2,14,3,12\nG2,Cable,m,1,2.5,0,2.5\nG9,,? G9,1,0.0001,0,0.0001\n");
    CHECK(grouped({StockGroup::warehouse, StockGroup::status}) ==
          "W1,Main,0,m,1,2.5,0,2.5\nW1,Main,0,pc,1,10,3,8\nW2,,0,? G9,1,0.0001,0,0.0001\nW2,,0,pc,1,4,0,4\n");
}

TEST_CASE_FIXTURE(KnownJournal,
                  "Stock that has not moved since a moment is listed with its last movement, longest first") {
    connection().run(
        u"insert into Inventory(WID,GId,Model1,Model2,Status,InQty,OutQty,CurrentQty) "
        u"values('W1','G1','red','',0,1,1,0)");
    const auto idle = [&](TextView since) { return rows_of(list_idle_stock(connection(), {*date_from_text(since)})); };
    CHECK(idle(u"2024-03-01") == "G2,Cable,W1,,,0,m,2.5,2024-02-01\nG1,Screen,W1,,,0,pc,8,2024-02-10 08:30:00\n");
    CHECK(idle(u"2024-01-01").empty());
    CHECK(rows_of(list_idle_stock(connection(), {*date_from_text(u"2024-04-01"), {u"G1"}, {u"W2"}})) ==
          "G1,Screen,W2,,,0,pc,4,2024-03-03 12:00:00\n");
}

TEST_CASE_FIXTURE(KnownJournal, "A minimum is held against the stock of its goods, warehouse, models and status") {
    connection().run(u"delete from StockMinimum");
    const auto set = [&](TextView key, TextView minimum) {
        connection().run(u"insert into StockMinimum(GId,WID,Model1,Model2,Status,Minimum) values(" + Text(key) + u"," +
                         Text(minimum) + u")");
    };
    connection().run(
        u"insert into Inventory(WID,GId,Model1,Model2,Status,InQty,OutQty,CurrentQty) "
        u"values('W1','G1','red','',0,3,0,3)");
    connection().run(
        u"insert into Inventory(WID,GId,Model1,Model2,Status,InQty,OutQty,CurrentQty) "
        u"values('W1','G1','red','',2,9,0,9)");
    set(u"'G1','','','',0", u"15");     // 8 + 4 + 3 in all
    set(u"'G1','W2','','',0", u"4.5");  // 4 there
    set(u"'G1','','red','',0", u"5");   // 3 of them
    set(u"'G2','','','',0", u"0");      // none
    set(u"'G7','','','',0", u"2");      // never there
    CHECK(rows_of(list_minimums(connection(), {})) ==
          "G1,Screen,,red,,0,pc,5,3,2\nG1,Screen,W2,,,0,pc,4.5,4,0.5\nG7,,,,,0,,2,0,2\n");
    CHECK(rows_of(list_minimums(connection(), {{u"G1"}, {}, true})) ==
          "G1,Screen,,,,0,pc,15,15,0\nG1,Screen,,red,,0,pc,5,3,2\nG1,Screen,W2,,,0,pc,4.5,4,0.5\n");
    CHECK(rows_of(list_minimums(connection(), {{}, {u"W2"}})) == "G1,Screen,W2,,,0,pc,4.5,4,0.5\n");
    connection().run(u"delete from StockMinimum");
}

TEST_CASE("What a quantity's column should not hold is shown as it is, and counts as nothing") {
    if (make_test_database()->connection().dialect().name != "sqlite") return;  // others refuse such values
    const auto database = make_sqlite_database();
    database->connection().run(
        u"insert into Inventory(WID,GId,Status,InQty,OutQty,CurrentQty) values('W1','G1','new','two',null,3)");
    database->connection().run(
        u"insert into Inventory(WID,GId,Status,InQty,OutQty,CurrentQty) values('W1',x'00ff',0,x'00',1,1e300)");
    const std::vector<StockRow> rows = read_stock(database->connection(), {});
    const Listing list = list_stock(rows);
    const std::string csv = list_text(list, {}, {"csv", CsvCells::exact}, Language::english, false);
    CHECK(csv.find("W1,,?,,,,0,,,?,1,") != std::string::npos);
    CHECK(csv.find("W1,,G1,,,,new,,,two,,3,\r\n") != std::string::npos);
    CHECK(to_utf8(to_text(group_stock(rows, {StockGroup::warehouse}).rows[0].back())) == "3");
}

TEST_CASE("status_cell makes a number of a status, and keeps as text what is none") {
    CHECK(status_cell(u"").is<Null>());
    CHECK(status_cell(u"2") == Variant(std::int32_t{2}));
    CHECK(status_cell(u"0") == Variant(std::int32_t{0}));
    for (const Text status : {u"new", u"99999999999", u"007", u"-1", u"1.5"})
        CHECK_MESSAGE(status_cell(status) == Variant(status), to_utf8(status));
}

}  // namespace
}  // namespace vantlo::test
