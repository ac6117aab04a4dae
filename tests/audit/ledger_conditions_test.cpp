#include "audit/ledger_conditions.h"

#include <doctest/doctest.h>

#include "ado/native/open_connection.h"
#include "bills/schema.h"
#include "bookkeeping/own_tables.h"
#include "output/conditions_report.h"
#include "tests/support/sample_shop.h"

namespace vantlo::test {
namespace {

using Conditions = std::vector<LedgerCondition>;

/// The tables of the schema, but for the ledger, which a statement makes instead.
Conditions conditions_of(const std::string& ledger) {
    const auto database = empty_shop_in_memory();
    database->run_script("drop table Inventory;" + ledger);
    return ledger_conditions(*database);
}

std::string ledger_with(const std::string& columns) {
    return "create table Inventory(" + columns +
           ", Model2, Status, Class, Unit, InQty, OutQty, CurrentQty, Remarks); create index K on Inventory(WID, GId)";
}

TEST_CASE("The tables of the schema and of the journal meet no condition") {
    const auto database = empty_shop_in_memory();
    CHECK(ledger_conditions(*database).empty());
    CHECK(report_of(ledger_conditions(*database), Language::english).empty());
    database->run_script(std::string(journal_scripts_for("sqlite").on));
    CHECK(ledger_conditions(*database).empty());
}

TEST_CASE("A ledger that is not there, or lacks a column, or is a view, is told") {
    CHECK(conditions_of("") == Conditions{{Condition::no_ledger, ""}});
    CHECK(conditions_of("create table Inventory(WID, GId, Model1, Model2, Status, Unit, InQty, CurrentQty, Remarks);"
                        "create index K on Inventory(WID, GId)") ==
          Conditions{{Condition::column_missing, "Class"}, {Condition::column_missing, "OutQty"}});
    CHECK(conditions_of(
              "create table T(WID, GId, Model1, Model2, Status, Class, Unit, InQty, OutQty, CurrentQty, Remarks);"
              "create view Inventory as select * from T") == Conditions{{Condition::ledger_is_view, ""}});
}

TEST_CASE("Key columns that compare without case or blanks at the end are told, and a missing index") {
    CHECK(conditions_of(ledger_with("WID collate nocase, GId text collate nocase, Model1 collate rtrim")) ==
          Conditions{{Condition::key_ignores_case, "WID, GId"}, {Condition::key_ignores_blanks, "Model1"}});
    CHECK(conditions_of(ledger_with("WID, GId, Model1") + "; drop index K") ==
          Conditions{{Condition::no_key_index, ""}});
}

TEST_CASE("A trigger of somebody else on the ledger is told") {
    CHECK(conditions_of(ledger_with("WID, GId, Model1") +
                        "; create trigger Own before insert on Inventory begin select raise(ignore); end") ==
          Conditions{{Condition::other_trigger, "Own"}});
}

TEST_CASE("A column that a table of vantlo's own lacks is told, and can be added without losing a row") {
    const auto database = empty_shop_in_memory();
    database->run_script(
        "alter table BillHistory drop column Content; insert into BillHistory(Kind, BillId, Action) values('stock', "
        "'B1', 'save')");
    CHECK(ledger_conditions(*database) == Conditions{{Condition::older_table, "BillHistory.Content"}});
    for (const MissingColumn& missing : missing_own_columns(*database)) database->run(from_utf8(missing.statement));
    CHECK(ledger_conditions(*database).empty());
    CHECK(database->run(u"select * from BillHistory").rows.size() == 1);
}

TEST_CASE("Every condition is worded in both languages with its subject") {
    for (const Condition condition :
         {Condition::no_ledger, Condition::column_missing, Condition::older_table, Condition::ledger_is_view,
          Condition::no_rollback, Condition::key_ignores_case, Condition::key_ignores_width,
          Condition::key_ignores_blanks, Condition::no_key_index, Condition::other_trigger}) {
        const std::string english = text_of({condition, "WID"}, Language::english);
        const std::string chinese = text_of({condition, "WID"}, Language::chinese);
        CHECK(english.size() > 20);
        CHECK(chinese != english);
        CHECK((english.find("WID") == std::string::npos) == (chinese.find("WID") == std::string::npos));
    }
}

}  // namespace
}  // namespace vantlo::test
