#include <doctest/doctest.h>

#include <algorithm>
#include <random>
#include <sstream>

#include "ado/native/statement_text.h"
#include "automation/error.h"
#include "support/failures.h"
#include "tests/support/journaled_database.h"
#include "tests/support/scenario_check.h"

// The journal of movements that the database writes by itself, on SQLite and on each server.

namespace vantlo::test {
namespace {

std::string text_of(const Variant& value) { return value.is<Null>() ? "null" : to_utf8(to_text(value)); }

std::string row_text(const std::vector<Variant>& row) {
    std::string text;
    for (const Variant& value : row) text += (text.empty() ? "" : " ") + text_of(value);
    return text;
}

std::vector<std::string> rows_of(NativeConnection& connection, TextView select) {
    std::vector<std::string> rows;
    for (const std::vector<Variant>& row : connection.run(select).rows) rows.push_back(row_text(row));
    return rows;
}

/// The movements after a number, as `update W1 G1 0 | 2 0 2 | 12 0 12`.
std::vector<std::string> movements_after(NativeConnection& connection, const std::string& number) {
    std::vector<std::string> movements;
    for (const std::string& row : rows_of(
             connection, from_utf8("select Action, WID, GId, Status, '|' as a, InChange, OutChange, CurrentChange, "
                                   "'|' as b, InAfter, OutAfter, CurrentAfter from StockMovement where MovementNo > " +
                                   number + " order by MovementNo"))) {
        movements.push_back(row);
    }
    return movements;
}

std::string last_number(NativeConnection& connection) {
    return rows_of(connection, u"select coalesce(max(MovementNo), 0) as n from StockMovement").at(0);
}

/// The movements that a statement makes.
std::vector<std::string> movements_of(NativeConnection& connection, const std::string& statement) {
    const std::string before = last_number(connection);
    connection.run(from_utf8(statement));
    return movements_after(connection, before);
}

void check_sums(NativeConnection& connection) {
    CHECK(joined(rows_of(connection, u"select * from LedgerWithoutMovement")) == "");
}

void insert_row(NativeConnection& connection, const std::string& warehouse, const std::string& quantities,
                const std::string& goods = "'G1'") {
    connection.run(from_utf8(
        "insert into Inventory(WID,GId,Model1,Model2,Status,Class,Unit,InQty,OutQty,CurrentQty,Remarks) values(" +
        warehouse + "," + goods + ",'','',0,'','pc'," + quantities + ",'')"));
}

TEST_CASE(
    "Every scenario sends the same statements with the journal on, and its movements are what the ledger changed by") {
    JournaledDatabase shop;
    for (const Scenario& scenario : all_scenarios()) {
        INFO(scenario.where());
        check_scenarios({scenario}, shop.database());
        check_sums(shop.connection());
    }
    CHECK(last_number(shop.connection()) > "100");
}

TEST_CASE("Every change of the ledger is a movement, whoever makes it") {
    struct Row {
        std::string statement;
        std::vector<std::string> movements;
    };
    const Row rows[] = {
        {"update Inventory set InQty = InQty + 2.5, CurrentQty = CurrentQty + 2.5 where WID='W1'",
         {"update W1 G1 0 | 2.5 0 2.5 | 12.5 4 8.5"}},
        {"update Inventory set OutQty = OutQty + 1, CurrentQty = CurrentQty - 1",
         {"update W1 G1 0 | 0 1 -1 | 12.5 5 7.5", "update W2 G1 0 | 0 1 -1 | 0.3 1 -0.7"}},
        {"update Inventory set Remarks = 'x', InQty = InQty", {}},
        {"update Inventory set InQty = 0, OutQty = null where WID is null", {"update null G1 0 | 0 0 0 | 0 null null"}},
        {"update Inventory set WID = 'W3', InQty = 13 where WID = 'W1'",
         {"update W1 G1 0 | -12.5 -5 -7.5 | null null null", "update W3 G1 0 | 13 5 7.5 | 13 5 7.5"}},
        {"update Inventory set Status = 1 where WID = 'W3'",
         {"update W3 G1 0 | -13 -5 -7.5 | null null null", "update W3 G1 1 | 13 5 7.5 | 13 5 7.5"}},
        {"update Inventory set WID = 'w3' where WID = 'W3'",
         {"update W3 G1 1 | -13 -5 -7.5 | null null null", "update w3 G1 1 | 13 5 7.5 | 13 5 7.5"}},
        {"delete from Inventory where WID = 'w3'", {"delete w3 G1 1 | -13 -5 -7.5 | null null null"}},
        {"insert into Inventory select 'W4', GId, Model1, Model2, Status, Class, Unit, 1, 2, -1, Remarks from "
         "Inventory "
         "where WID = 'W2'",
         {"insert W4 G1 0 | 1 2 -1 | 1 2 -1"}},
        {"delete from Inventory",
         {"delete W2 G1 0 | -0.3 -1 0.7 | null null null", "delete null G1 0 | 0 0 0 | null null null",
          "delete W4 G1 0 | -1 -2 1 | null null null"}},
    };
    JournaledDatabase shop;
    NativeConnection& connection = shop.connection();
    insert_row(connection, "'W1'", "10,4,6");
    insert_row(connection, "'W2'", "0.3,0,0.3");
    insert_row(connection, "null", "null,null,null");
    for (const Row& row : rows) {
        INFO(row.statement);
        std::vector<std::string> movements = movements_of(connection, row.statement);
        std::vector<std::string> expected = row.movements;
        // Rows come in the engine's order, but the two movements of a changed key in their own.
        if (row.statement.find("set WID") == std::string::npos) {
            std::ranges::sort(movements);
            std::ranges::sort(expected);
        }
        CHECK(joined(movements) == joined(expected));
        check_sums(connection);
    }
}

TEST_CASE("Rows that others put out of the way are movements too") {
    struct Row {
        const char* dialect;
        const char* statement;
        std::vector<std::string> movements;
    };
    const char* const insert =
        "into Inventory(WID,GId,Model1,Model2,Status,Class,Unit,InQty,OutQty,CurrentQty,Remarks) "
        "values('W1','G1','','',0,'','pc',8,0,8,'')";
    const std::string replace = std::string("replace ") + insert;
    const std::string ignore = std::string("insert or ignore ") + insert;
    const std::string upsert = std::string("insert ") + insert + " on conflict do update set InQty = 9";
    const std::string pg_upsert =
        std::string("insert ") + insert + " on conflict (WID,GId,Model1,Model2,Status) do update set InQty = 9";
    const std::string duplicate = std::string("insert ") + insert + " on duplicate key update InQty = 9";
    const Row rows[] = {
        {"sqlite", replace.c_str(), {"replace W1 G1 0 | -10 -4 -6 | null null null", "insert W1 G1 0 | 8 0 8 | 8 0 8"}},
        {"sqlite", ignore.c_str(), {}},
        {"sqlite", upsert.c_str(), {"update W1 G1 0 | 1 0 0 | 9 0 8"}},
        {"sqlite",
         "update or replace Inventory set WID = 'W1' where WID = 'W2'",
         {"update W2 G1 0 | -3 -1 -2 | null null null", "replace W1 G1 0 | -9 0 -8 | null null null",
          "update W1 G1 0 | 3 1 2 | 3 1 2"}},
        {"mariadb", replace.c_str(), {"delete W1 G1 0 | -10 -4 -6 | null null null", "insert W1 G1 0 | 8 0 8 | 8 0 8"}},
        {"mariadb", duplicate.c_str(), {"update W1 G1 0 | 1 0 0 | 9 0 8"}},
        {"postgresql", pg_upsert.c_str(), {"update W1 G1 0 | -1 0 0 | 9 4 6"}},
        {"postgresql",
         "truncate Inventory",
         {"truncate W2 G1 0 | -3 -1 -2 | null null null", "truncate W1 G1 0 | -9 -4 -6 | null null null"}},
    };
    JournaledDatabase shop;
    NativeConnection& connection = shop.connection();
    connection.run_script(schema_of(std::string(connection.dialect().name) + "-unique"));
    insert_row(connection, "'W1'", "10,4,6");
    insert_row(connection, "'W2'", "3,1,2");
    int tried = 0;
    for (const Row& row : rows) {
        if (row.dialect != connection.dialect().name) continue;
        INFO(row.statement);
        CHECK(joined(movements_of(connection, row.statement)) == joined(row.movements));
        check_sums(connection);
        ++tried;
    }
    CHECK(tried > 0);
    connection.run_script("drop index InventoryUniqueKey" +
                          std::string(connection.dialect().name == "mariadb" ? " on Inventory" : ""));
}

TEST_CASE("What is rolled back, and a statement that fails, leave no movement") {
    JournaledDatabase shop;
    NativeConnection& connection = shop.connection();
    insert_row(connection, "'W1'", "10,4,6");
    const std::string before = last_number(connection);
    connection.begin();
    connection.run(u"update Inventory set InQty = 11");
    CHECK(movements_after(connection, before).size() == 1);
    connection.roll_back();
    CHECK_THROWS_AS(connection.run(u"update Inventory set InQty = 12, NoSuchColumn = 1"), Failure);
    CHECK(movements_after(connection, before).empty());
    check_sums(connection);
}

TEST_CASE("Many small changes add up exactly to four decimals") {
    JournaledDatabase shop;
    NativeConnection& connection = shop.connection();
    insert_row(connection, "'W1'", "200000,0.1,199999.9");
    std::mt19937 random(20240305);
    connection.begin();
    for (int i = 0; i < 3000; ++i) {
        const std::string quantity = std::to_string(random() % 9) + "." + std::to_string(1000 + random() % 9000);
        connection.run(
            from_utf8("update Inventory set InQty = InQty + " + quantity + ", CurrentQty = CurrentQty - " + quantity));
    }
    connection.commit();
    check_sums(connection);
    const std::vector<std::string> ledger = rows_of(connection, u"select InQty, CurrentQty from Inventory");
    CHECK(joined(rows_of(connection,
                         u"select InAfter, CurrentAfter from StockMovement where MovementNo = "
                         u"(select max(MovementNo) from StockMovement)")) == joined(ledger));
}

TEST_CASE("A host's counts of rows and last identity values are those without the journal") {
    JournaledDatabase shop;
    NativeConnection& connection = shop.connection();
    const bool is_postgresql = connection.dialect().name == "postgresql";
    connection.run(is_postgresql ? u"create table Numbered (n serial primary key, t integer)"
                   : connection.dialect().name == "mariadb"
                       ? u"create table Numbered (n integer auto_increment primary key, t integer)"
                       : u"create table Numbered (n integer primary key, t integer)");
    connection.run(u"insert into Numbered(t) values(1),(2),(3),(4),(5),(6),(7)");
    const TextView last_identity = is_postgresql                            ? u"select lastval() as n"
                                   : connection.dialect().name == "mariadb" ? u"select last_insert_id() as n"
                                                                            : u"select last_insert_rowid() as n";
    const std::vector<std::string> identity = rows_of(connection, last_identity);
    insert_row(connection, "'W1'", "1,0,1");
    if (connection.dialect().name == "sqlite") {  // the ledger's rows have numbers of their own there
        CHECK(rows_of(connection, last_identity) == rows_of(connection, u"select rowid from Inventory"));
    } else {
        CHECK(rows_of(connection, last_identity) == identity);
    }
    insert_row(connection, "'W2'", "1,0,1");
    insert_row(connection, "'W3'", "1,0,1");
    const std::vector<std::string> before_update = rows_of(connection, last_identity);
    if (is_postgresql) {
        CHECK(rows_of(connection,
                      u"with changed as (update Inventory set InQty = 5, WID = 'W9' returning GId) "
                      u"select count(*) as n from changed") == std::vector<std::string>{"3"});
    } else {
        connection.run(u"update Inventory set InQty = 5, WID = 'W9'");
        CHECK(rows_of(connection,
                      connection.dialect().name == "mariadb" ? u"select row_count() as n" : u"select changes() as n") ==
              std::vector<std::string>{"3"});
    }
    CHECK(rows_of(connection, last_identity) == before_update);
    connection.run(u"drop table Numbered");
}

TEST_CASE("A movement is never changed or deleted") {
    JournaledDatabase shop;
    NativeConnection& connection = shop.connection();
    insert_row(connection, "'W1'", "1,0,1");
    const std::vector<std::string> movements = rows_of(connection, u"select * from StockMovement");
    for (const Text statement : {u"update StockMovement set InChange = 2", u"delete from StockMovement"}) {
        INFO(to_utf8(statement));
        CHECK(caught([&] { connection.run(statement); }).account.find("correct the ledger instead") !=
              std::string::npos);
    }
    CHECK(rows_of(connection, u"select * from StockMovement") == movements);
}

TEST_CASE("A movement knows its user, and the bill of a program that tells it") {
    JournaledDatabase shop;
    NativeConnection& connection = shop.connection();
    struct Row {
        const char* dialect;
        const char* tells;
        const char* user;
    };
    const Row rows[] = {
        {"sqlite", "insert into CurrentPosting values('shop', 'stock', 'B1', 3, 'AddInventory_Db')", "null"},
        {"postgresql",
         "select set_config('vantlo.program', 'shop', true), set_config('vantlo.bill_kind', 'stock', true), "
         "set_config('vantlo.bill_id', 'B1', true), set_config('vantlo.item_no', '3', true), "
         "set_config('vantlo.member', 'AddInventory_Db', true)",
         "vantlo"},
        {"mariadb",
         "set @vantlo_program = 'shop', @vantlo_bill_kind = 'stock', @vantlo_bill_id = 'B1', @vantlo_item_no = 3, "
         "@vantlo_member = 'AddInventory_Db'",
         "vantlo@localhost"},
    };
    const auto* const row =
        std::ranges::find_if(rows, [&](const Row& known) { return known.dialect == connection.dialect().name; });
    REQUIRE(row != std::end(rows));
    const TextView told = u"select DbUser, Program, BillKind, BillId, ItemNo, Member from StockMovement";
    connection.begin();
    connection.run(from_utf8(row->tells));
    insert_row(connection, "'W1'", "1,0,1");
    connection.run(u"update Inventory set InQty = 2");
    connection.run(u"delete from Inventory");
    connection.commit();
    const std::string one = std::string(row->user) + " shop stock B1 3 AddInventory_Db";
    CHECK(rows_of(connection, told) == std::vector<std::string>{one, one, one});
}

TEST_CASE("The journal begins with what is there, and what changes while it is off is a gap") {
    JournaledDatabase shop;
    NativeConnection& connection = shop.connection();
    remove_journal(connection);
    insert_row(connection, "'W1'", "10,4,6");
    insert_row(connection, "'W1'", "1,0,1");
    insert_row(connection, "null", "null,2,0");
    switch_journal_on(connection);
    std::vector<std::string> openings = movements_after(connection, "0");
    std::ranges::sort(openings);
    CHECK(joined(openings) == joined({"opening W1 G1 0 | 1 0 1 | 1 0 1", "opening W1 G1 0 | 10 4 6 | 10 4 6",
                                      "opening null G1 0 | 0 2 0 | null 2 0"}));
    check_sums(connection);
    const std::string before = last_number(connection);
    connection.begin();
    connection.run_script(schema_of(std::string(connection.dialect().name) + "-journal"));
    connection.commit();
    CHECK(movements_after(connection, before).empty());
    switch_journal_off(connection);
    connection.run(u"update Inventory set InQty = 3 where InQty = 1");
    connection.run(u"delete from Inventory where WID is null");
    CHECK(movements_after(connection, before).empty());
    switch_journal_on(connection);
    std::vector<std::string> gaps = movements_after(connection, before);
    std::ranges::sort(gaps);
    CHECK(joined(gaps) == joined({"gap W1 G1 0 | 2 0 0 | 13 4 7", "gap null G1 0 | 0 -2 0 | 0 0 0"}));
    check_sums(connection);
    insert_row(connection, "null", "1,0,1");
    check_sums(connection);
}

/// What the database's catalog has of tables, views, triggers, functions and sequences.
std::vector<std::string> catalog_of(NativeConnection& connection) {
    std::vector<std::string> names;
    const auto add = [&](TextView select) {
        const std::vector<std::string> found = rows_of(connection, select);
        names.insert(names.end(), found.begin(), found.end());
    };
    if (connection.dialect().name == "sqlite") add(u"select name from sqlite_schema");
    if (connection.dialect().name == "postgresql") {
        add(u"select relname from pg_class where relnamespace = 'public'::regnamespace");
        add(u"select proname from pg_proc where pronamespace = 'public'::regnamespace");
        add(u"select tgname from pg_trigger where not tgisinternal");
    }
    if (connection.dialect().name == "mariadb") {
        add(u"select table_name from information_schema.tables where table_schema = database()");
        add(u"select trigger_name from information_schema.triggers where trigger_schema = database()");
    }
    std::ranges::sort(names);
    return names;
}

TEST_CASE("Nothing of the journal is left once it is removed") {
    const auto database = make_test_database();
    const std::vector<std::string> before = catalog_of(database->connection());
    CHECK(before.size() > 10);
    switch_journal_on(database->connection());
    CHECK(catalog_of(database->connection()).size() > before.size());
    remove_journal(database->connection());
    CHECK(catalog_of(database->connection()) == before);
}

TEST_CASE("A stock card is found by its index") {
    JournaledDatabase shop;
    if (shop.connection().dialect().name != "sqlite") return;  // servers choose their plans by how much there is
    const std::string plan =
        joined(rows_of(shop.connection(),
                       u"explain query plan select * from StockMovement where GId = 'G1' and "
                       u"WID = 'W1' and Model1 = '' and Model2 = '' and Status = 0 order by MovementNo"));
    CHECK_MESSAGE(
        plan.find("StockMovementKey (GId=? AND WID=? AND Model1=? AND Model2=? AND Status=?)") != std::string::npos,
        plan);
    CHECK_MESSAGE(plan.find("TEMP B-TREE") == std::string::npos, plan);
}

/// SQLite: a host with statements of its own making, in which a quantity is no number.
TEST_CASE("A quantity that is no number counts as nothing and stays to be seen") {
    JournaledDatabase shop;
    NativeConnection& connection = shop.connection();
    const bool is_sqlite = connection.dialect().name == "sqlite";
    if (connection.dialect().name == "mariadb") return;  // it has no such quantity
    const std::string odd = is_sqlite ? "'many'" : "'NaN'";
    insert_row(connection, "'W1'", odd + ",0,1");
    connection.run(u"update Inventory set OutQty = 3");
    const TextView after =
        is_sqlite ? u"select InAfter from StockMovement" : u"select InAfter::text from StockMovement";
    CHECK(rows_of(connection, after) == std::vector<std::string>(2, is_sqlite ? "many" : "NaN"));
    connection.run(u"update Inventory set InQty = 7");
    check_sums(connection);
    CHECK(rows_of(connection, u"select sum(InChange) as s from StockMovement") == std::vector<std::string>{"7"});
}

/// The names at the beginning of the lines of a script's `create table StockMovement (`.
std::vector<std::string> columns_of_journal(const std::string& dialect) {
    std::istringstream lines(schema_of(dialect + "-journal"));
    std::vector<std::string> columns;
    bool is_inside = false;
    for (std::string line; std::getline(lines, line);) {
        if (line.starts_with(")")) is_inside = false;
        if (is_inside) columns.push_back(line.substr(4, line.find(' ', 4) - 4));
        if (line.ends_with("create table if not exists StockMovement (") ||
            line.ends_with("create table StockMovement (")) {
            is_inside = true;
        }
    }
    return columns;
}

TEST_CASE("The journal has the same columns on every engine") {
    const std::vector<std::string> of_sqlite = columns_of_journal("sqlite");
    CHECK(of_sqlite.size() == 20);
    for (const char* const dialect : {"postgresql", "mariadb", "sqlserver"}) {
        INFO(dialect);
        CHECK(joined(columns_of_journal(dialect)) == joined(of_sqlite));
    }
}

// No SQL Server runs here: its scripts are held against the rules of its dialect as texts.
TEST_CASE("SQL Server's journal leaves the host's identity and counts alone, and goes as it came") {
    const std::vector<Text> statements = statements_of(schema_of("sqlserver-journal"));
    CHECK(statements.size() == 9);
    std::string removal;
    for (const char* const script : {"sqlserver-journal-off", "sqlserver-journal-remove"}) removal += schema_of(script);
    int triggers = 0;
    for (const Text& utf16 : statements) {
        const std::string statement = to_utf8(utf16);
        INFO(statement);
        CHECK(statement.find(" identity") == std::string::npos);
        CHECK(std::ranges::count(statement, '\'') % 2 == 0);
        CHECK(std::ranges::count(statement, '(') == std::ranges::count(statement, ')'));
        // These have to be a batch of their own.
        for (const char* const alone : {"create or alter trigger ", "create or alter view "}) {
            if (statement.find(alone) != std::string::npos)
                CHECK(statement.starts_with("exec(N'" + std::string(alone)));
        }
        if (statement.find(" on Inventory after ") != std::string::npos) {
            CHECK(statement.find(" as\nbegin\n    set nocount on;\n") != std::string::npos);
            ++triggers;
        }
    }
    CHECK(triggers == 1);
    for (const char* const made : {"view if exists LedgerWithoutMovement", "trigger if exists StockMovementOfChange",
                                   "table if exists StockMovement", "sequence if exists StockMovementNumber"}) {
        CHECK_MESSAGE(removal.find(std::string("drop ") + made) != std::string::npos, made);
    }
}

}  // namespace
}  // namespace vantlo::test
