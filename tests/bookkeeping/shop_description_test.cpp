#include "bookkeeping/shop_description.h"

#include <doctest/doctest.h>

#include <algorithm>
#include <nlohmann/json.hpp>

#include "audit/shop_proposal.h"
#include "audit/verification.h"
#include "bills/task_error.h"
#include "bookkeeping/bill_history.h"
#include "tests/support/journaled_database.h"

// Shops whose bill tables are not those of this system, on SQLite and on each server.

namespace vantlo::test {
namespace {

using nlohmann::json;

struct Shop {
    const char* name;
    const char* tables;
    const char* drops;
    const char* description;
    std::vector<std::string> bills;  ///< `KIND ID LINES`, by kind and id
    const char* ledger;              ///< what they make
};

// A `~` is the engine's quote around an identifier.
const Shop shops[] = {
    {"English names, one warehouse column, numbers as ids",
     "create table DocHead (DocNo integer, DocType varchar(10), DocDate date, Memo varchar(100));"
     "create table DocLine (DocNo integer, LineNo integer, ItemCode integer, Qty decimal(12,3), Uom varchar(10),"
     " Whs varchar(10), Colour varchar(10));"
     "insert into DocHead values (7, 'IN', '2024-03-05', 'a'), (8, 'OUT', '2024-03-06', null),"
     " (9, 'COUNT', '2024-03-07', null);"
     "insert into DocLine values (7, 2, 1002, 1.5, 'pc', 'W1', 'red'), (7, 1, 1001, 10, 'pc', 'W1', 'red'),"
     " (8, 1, 1001, 4, 'pc', 'W1', 'red'), (9, 1, 1001, 500, 'pc', 'W1', 'red');",
     "drop table DocLine; drop table DocHead",
     R"json({"bills": [{
       "kinds": [{"kind": "stock-in", "where": "DocType = 'IN'"},
                 {"kind": "stock-out", "where": "DocType = 'OUT' and DocNo > 0"}],
       "header": {"table": "DocHead", "columns":
         {"Id": "DocNo", "BillDate": "DocDate", "ReferFlag": null, "Remarks": "Memo"}},
       "lines": {"table": "DocLine", "columns":
         {"BillId": "DocNo", "ItemNo": "LineNo", "Receiver": "Whs", "Supplier": "Whs", "Gid": "ItemCode",
          "Model1": "Colour", "Model2": null, "Class": null, "Unit": "Uom", "Actualqty": "Qty", "Qty": "Qty",
          "Goodstutas": {"value": 0}, "Remarks": null}}}]})json",
     {"stock-in 7 2", "stock-out 8 1"},
     "('W1','1001','red','',0,10,4,6),('W1','1002','red','',0,1.5,0,1.5)"},
    {"Chinese names, dates as texts, a warehouse that no column holds",
     "create table ~单据~ (~单号~ varchar(20), ~类型~ varchar(20), ~日期~ varchar(20));"
     "create table ~单据明细~ (~单号~ varchar(20), ~行号~ integer, ~商品~ varchar(20), ~数量~ integer, ~单位~ "
     "varchar(10),"
     " ~备注~ varchar(50));"
     "insert into ~单据~ values ('甲1', '入库', '2024-03-05'), ('甲2', '报损', '2024-03-06'), ('甲3', '盘点', "
     "'2024-03-06');"
     "insert into ~单据明细~ values ('甲1', 1, '手机', 12, '台', null), ('甲2', 1, '手机', 2, '台', '坏'),"
     " ('甲3', 1, '手机', 99, '台', null);",
     "drop table ~单据明细~; drop table ~单据~",
     R"json({"note": "总店", "bills": [{
       "kinds": [{"kind": "stock-in", "where": "类型 = '入库'"}, {"kind": "loss", "where": "(类型 = '报损')"}],
       "header": {"table": "单据", "columns": {"Id": "单号", "BillDate": "日期", "ReferFlag": null, "Remarks": null}},
       "lines": {"table": "单据明细", "columns":
         {"BillId": "单号", "ItemNo": "行号", "Receiver": {"value": "总店"}, "Supplier": {"value": "总店"}, "Gid": "商品",
          "Model1": null, "Model2": null, "Class": null, "Unit": "单位", "Actualqty": "数量", "Qty": "数量",
          "Goodstutas": null, "Remarks": "备注"}}}]})json",
     {"loss 甲2 1", "stock-in 甲1 1"},
     "('总店','手机','','',0,12,2,10)"},
    {"repairs and loans, names with blanks and quotes, kinds by numbers, lines without numbers",
     "create table ~Repair Order~ (~No.~ varchar(20), Flow integer, Done integer, Opened date, ~From~ varchar(9),"
     " ~To~ varchar(9));"
     "create table ~Repair & Parts~ (~Order No.~ varchar(20), Part varchar(20), Pieces integer, Unit varchar(9));"
     "create table Loan (LoanId integer, Loaned date);"
     "create table LoanItem (LoanId integer, Pos integer, Part varchar(20), Pieces integer, Whs varchar(9));"
     "insert into ~Repair Order~ values ('R 1', 3, 1, '2024-03-05', 'W1', 'W2'), ('R 2', 3, 0, '2024-03-06', 'W1', "
     "'W2');"
     "insert into ~Repair & Parts~ values ('R 1', 'P1', 3, 'pc'), ('R 2', 'P1', 50, 'pc');"
     "insert into Loan values (1, '2024-03-07'); insert into LoanItem values (1, 1, 'P1', 2, 'W2');",
     "drop table ~Repair & Parts~; drop table ~Repair Order~; drop table LoanItem; drop table Loan",
     R"json({"bills": [{
       "kinds": [{"kind": "return-repair", "where": "Flow in (3, 4) and Done = 1"}],
       "header": {"table": "Repair Order", "columns":
         {"id": "No.", "BillDate": "Opened", "Receiver": "To", "Supplier": "From", "Remarks": null}},
       "lines": {"table": "Repair & Parts", "columns":
         {"BillId": "Order No.", "ItemNo": null, "WID": null, "StatusWID": null, "Gid": "Part", "Model1": null,
          "Model2": null, "Class": null, "Unit": "Unit", "Qty": "Pieces", "GoodsStatus": null, "SpRemarks": null}}},
      {"kinds": [{"kind": "borrow-out", "where": "1 = 1"}],
       "header": {"table": "Loan", "columns": {"Id": "LoanId", "BillDate": "Loaned", "Remarks": null}},
       "lines": {"table": "LoanItem", "columns":
         {"BillId": "LoanId", "ItemNo": "Pos", "Receiver": null, "Supplier": "Whs", "Gid": "Part", "Model1": null,
          "Model2": null, "Class": null, "Unit": null, "UQty": "Pieces", "Goodstutas": null, "Remarks": null}}}]})json",
     {"borrow-out 1 1", "return-repair R 1 1"},
     "('W2','P1','','',2,3,0,3),('W1','P1','','',2,0,3,-3),('W2','P1','','',0,0,2,-2)"},
};

/// The text in the database's own quotes; PostgreSQL folds names that are in none.
std::string in_quotes_of(const NativeConnection& database, std::string text) {
    const char quote = static_cast<char>(database.dialect().identifier_quote);
    std::ranges::replace(text, '~', quote);
    return text;
}

std::string small(std::string text) {
    std::ranges::transform(text, text.begin(), [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return text;
}

/// A description's names as PostgreSQL keeps those that the shop wrote without quotes.
std::string folded(const NativeConnection& database, std::string description) {
    if (database.dialect().name != "postgresql") return description;
    for (const char* const name :
         {"\"DocHead\"", "\"DocLine\"", "\"DocNo\"",    "\"DocDate\"", "\"Memo\"",   "\"LineNo\"", "\"ItemCode\"",
          "\"Colour\"",  "\"Uom\"",     "\"Whs\"",      ": \"Qty\"",   "\"Opened\"", "\"Part\"",   "\"Pieces\"",
          ": \"Unit\"",  "\"Loan\"",    "\"LoanItem\"", "\"LoanId\"",  "\"Loaned\"", "\"Pos\""}) {
        for (std::size_t at = 0; (at = description.find(name, at)) != std::string::npos; ++at) {
            description.replace(at, small(name).size(), small(name));
        }
    }
    return description;
}

/// A shop's tables beside a journal, for the length of a test. The bill tables of this system are empty.
class ShopTables {
public:
    explicit ShopTables(const Shop& shop) : shop_(shop) {
        database().run_script(in_quotes_of(database(), shop.tables));
    }
    ShopTables(const ShopTables&) = delete;
    ShopTables& operator=(const ShopTables&) = delete;
    ~ShopTables() {
        database().run_script(in_quotes_of(database(), shop_.drops));
        database().run_script("delete from ShopDescription; delete from Inventory");
    }

    NativeConnection& database() { return journaled_.connection(); }
    [[nodiscard]] std::string description() { return folded(database(), shop_.description); }

private:
    const Shop& shop_;
    JournaledDatabase journaled_;
};

std::vector<std::string> bills_of(const BillTimeline& timeline) {
    std::vector<std::string> bills;
    for (const BillEvent& event : timeline.events) {
        bills.push_back(std::string(event.bill.kind->name) + " " + to_utf8(event.bill.id) + " " +
                        std::to_string(event.bill.lines.size()));
    }
    std::ranges::sort(bills);
    return bills;
}

TEST_CASE("A shop's own bill tables are read as they are described, and the ledger is compared with their bills") {
    for (const Shop& shop : shops) {
        INFO(std::string(shop.name));
        ShopTables tables(shop);
        NativeConnection& database = tables.database();
        keep_description(database, tables.description());
        CHECK(kept_description(database) == tables.description());
        const BillTimeline timeline = read_timeline(database);
        CHECK(bills_of(timeline) == shop.bills);
        CHECK(timeline.has_bills);
        CHECK(timeline.headless.empty());

        database.run_script("insert into Inventory(WID,GId,Model1,Model2,Status,InQty,OutQty,CurrentQty) values" +
                            std::string(shop.ledger));
        CHECK(verify(database, Language::english).findings.empty());
        database.run(u"update Inventory set InQty = InQty + 1, CurrentQty = CurrentQty + 1");
        CHECK(!verify(database, Language::english).findings.empty());
    }
}

TEST_CASE("A described line has its columns under this system's names and in its types") {
    ShopTables tables(shops[0]);
    keep_description(tables.database(), tables.description());
    const BillTimeline timeline = read_timeline(tables.database());
    REQUIRE(timeline.events.size() == 2);
    const Bill& bill = timeline.events[0].bill;
    CHECK(bill.id == u"7");
    CHECK(bill.header.value(u"BillDate").is<Date>());
    CHECK(bill.header.value(u"Remarks") == Variant(Text(u"a")));
    const Record& first = bill.lines.at(0);  // by its number, not as it was inserted
    CHECK(first.value(u"Gid") == Variant(Text(u"1001")));
    CHECK(first.value(u"Actualqty") == Variant(10.0F));
    CHECK(first.value(u"Receiver") == Variant(Text(u"W1")));
    CHECK(first.value(u"Model2") == Variant(Text()));
    CHECK(first.value(u"Goodstutas") == Variant(std::int32_t{0}));
}

TEST_CASE("Where nobody described the bills, the ledger is compared with its movements alone") {
    JournaledDatabase shop;
    NativeConnection& database = shop.connection();
    database.run(u"alter table GBorrow rename to LentOut");  // the tables are not this system's any more
    database.run_script(
        "insert into Inventory(WID,GId,Model1,Model2,Status,InQty,OutQty,CurrentQty) values('W1','G1','','',0,5,0,5)");
    const Verification agrees = verify(database, Language::english);
    switch_journal_off(database);
    database.run(u"update Inventory set InQty = 6");
    const Verification off = verify(database, Language::english);
    database.run(u"alter table LentOut rename to GBorrow");
    CHECK(!agrees.timeline.has_bills);
    CHECK(agrees.findings.empty());
    CHECK(off.findings.empty());  // nothing is left to compare with
    database.run(u"delete from Inventory");
}

TEST_CASE("The draft for a shop recognizes names in English and Chinese, and cannot be kept until it is filled in") {
    struct Row {
        const Shop& shop;
        const char* pointer;
        const char* value;
    };
    const Row rows[] = {
        {shops[0], "/bills/0/header/columns/Id", "DocNo"},    {shops[0], "/bills/0/header/columns/BillDate", "DocDate"},
        {shops[0], "/bills/0/lines/table", "DocLine"},        {shops[0], "/bills/0/lines/columns/ItemNo", "LineNo"},
        {shops[0], "/bills/0/lines/columns/Gid", "ItemCode"}, {shops[0], "/bills/0/lines/columns/Actualqty", "Qty"},
        {shops[0], "/bills/0/lines/columns/Receiver", "?"},   {shops[0], "/bills/0/kinds/0/kind", "?"},
        {shops[1], "/bills/0/header/table", "单据"},          {shops[1], "/bills/0/header/columns/Id", "单号"},
        {shops[1], "/bills/0/lines/columns/Gid", "商品"},     {shops[1], "/bills/0/lines/columns/Qty", "数量"},
        {shops[1], "/bills/0/lines/columns/Supplier", "?"},   {shops[1], "/bills/0/kinds/0/kind", "?"},
    };
    for (const Row& row : rows) {
        INFO(std::string(row.shop.name) << std::string(row.pointer));
        ShopTables tables(row.shop);
        NativeConnection& database = tables.database();
        const std::string draft = propose_description(database, Language::english);
        REQUIRE_MESSAGE(!draft.empty(), row.shop.name);
        const std::string value = json::parse(draft).at(json::json_pointer(row.pointer)).get<std::string>();
        const bool folds = database.dialect().name == "postgresql";
        CHECK_MESSAGE(value == (folds ? small(row.value) : row.value), draft);
        CHECK_THROWS_AS(described_bill_sources(draft, database.dialect(), Language::english), TaskError);
    }
}

TEST_CASE("A draft shows by which values headers differ, how many bills have each, and never which kind that is") {
    ShopTables tables(shops[1]);
    const json kinds =
        json::parse(propose_description(tables.database(), Language::english)).at(json::json_pointer("/bills/0/kinds"));
    REQUIRE(kinds.size() == 3);
    bool is_hinted = false;
    for (const json& kind : kinds) {
        CHECK(kind.at("kind") == "?");
        CHECK(kind.at("where").get<std::string>().find("类型") == 1);
        const std::string note = kind.at("note");
        CHECK(note.starts_with("1 bill"));
        is_hinted = is_hinted || note.find("perhaps stock-in") != std::string::npos;
    }
    CHECK(is_hinted);
}

/// What is said of a description of the first shop in which one thing is changed.
std::string faults_with(const char* pointer, const json& value) {
    json description = json::parse(shops[0].description);
    description[json::json_pointer(pointer)] = value;
    try {
        described_bill_sources(description.dump(), dialect_named("sqlite"), Language::english);
    } catch (const TaskError& error) {
        CHECK(error.reason() == Reason::bad_input);
        return error.what();
    }
    return {};
}

TEST_CASE("What is wrong with a description is said with its place") {
    struct Row {
        const char* pointer;
        json value;
        const char* said;
    };
    const Row rows[] = {
        {"/bills/0/kinds/0/kind", "stock-inn", "/bills/1/kinds/1: there is no kind of bill called stock-inn"},
        {"/bills/0/kinds/1/kind", "stock-in", "/bills/1/kinds/2: stock-in is described already"},
        {"/bills/0/kinds/1/kind", "borrow-in",
         "/bills/1/kinds/2: borrow-in has other columns than the kinds before it"},
        {"/bills/0/kinds/0/where", "?", "/bills/1/kinds/1/where is still \"?\""},
        {"/bills/0/kinds/0/where", "1=1; delete from Inventory", "/bills/1/kinds/1/where is not one condition"},
        {"/bills/0/lines/columns/Gid", "?", "/bills/1/lines/columns/Gid is still \"?\""},
        {"/bills/0/lines/columns/Gid", 5, "/bills/1/lines/columns/Gid has to be the name of a column, null, or"},
        {"/bills/0/lines/columns/Colour", "x", "/bills/1/lines/columns does not take Colour"},
        {"/bills/0/lines", json::object(), "/bills/1/lines lacks table"},
        {"/bills", json::array(), "/bills has to be a list that is not empty"},
        {"/bill", 1, "/ does not take bill"},
    };
    for (const Row& row : rows) {
        INFO(std::string(row.pointer) << row.value.dump());
        const std::string said = faults_with(row.pointer, row.value);
        CHECK_MESSAGE(said.find(row.said) != std::string::npos, said);
    }
    CHECK(faults_with("/note", "all is well") == "");
}

TEST_CASE("A condition is one expression, whatever it is written with") {
    for (const char* const condition : {"Kind = 'in'", "类型 in ('入库', 'a;b', '--', '(')",
                                        "(a = 1) and not (b = 2 or c is null)", "`a;` = \"b--\"", "a - -1 = 0"}) {
        INFO(condition);
        CHECK(is_one_condition(condition));
    }
    for (const char* const condition : {"1=1; drop table t", "1=1 -- x", "1=1 /* x", "1=1) or (1=1", "(1=1", "'a",
                                        "a = 'b\\' or 1=1", "a = $$x$$", "a = 1 # x", "a = 1\n or b = 2"}) {
        INFO(condition);
        CHECK(!is_one_condition(condition));
    }
}

TEST_CASE("A table's name goes into a select in the engine's quotes, its own quotes doubled") {
    json description = json::parse(shops[0].description);
    description["/bills/0/header/table"_json_pointer] = "a\"b`c; drop table x";
    for (const char* const dialect : {"sqlite", "postgresql", "mariadb", "sqlserver", "access"}) {
        INFO(dialect);
        const std::vector<BillSource> sources =
            described_bill_sources(description.dump(), dialect_named(dialect), Language::english);
        const std::string expected = dialect_named(dialect).identifier_quote == u'"'
                                         ? " from \"a\"\"b`c; drop table x\" where"
                                         : " from `a\"b``c; drop table x` where";
        CHECK(to_utf8(sources.at(0).select_headers).find(expected) != std::string::npos);
    }
}

}  // namespace
}  // namespace vantlo::test
