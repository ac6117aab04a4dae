#include "audit/repair.h"

#include <doctest/doctest.h>

#include "output/repair_script.h"
#include "output/verify_report.h"
#include "tests/audit/spoilings.h"

namespace vantlo::test {
namespace {

using namespace vantlo;

std::size_t count_of(NativeConnection& database, TextView table) {
    return database.run(u"select * from " + Text(table)).rows.size();
}

TEST_CASE("Repairs set right what went wrong in each way, and the journal has each row before and after") {
    const auto shop = sample_shop_in_memory();
    for (const Spoiling& spoiling : spoilings()) {
        if (spoiling.cause == Cause::refused_bill) continue;
        INFO(std::string(spoiling.name));
        const auto database = spoiling.bill == nullptr ? shop : empty_shop_in_memory();
        if (spoiling.bill == nullptr) database->begin();
        spoil(database, spoiling);
        run_repairs(repairs_of(verify(*database, Language::english).findings), *database, cause_in_journal);
        CHECK(verify(*database, Language::english).findings.empty());
        const ResultTable journal = database->run(u"select Cause from RepairJournal");
        CHECK(!journal.rows.empty());
        CHECK(to_text(journal.rows[0][0]) == from_utf8(cause_text(spoiling.cause, Language::english)));
        if (spoiling.bill == nullptr) database->roll_back();
    }
    CHECK(count_of(*shop, u"RepairJournal") == 0);
}

TEST_CASE("The script of the repairs does the same as applying them") {
    const auto database = sample_shop_in_memory();
    for (const Spoiling& spoiling : spoilings()) {
        if (spoiling.bill == nullptr) spoil(database, spoiling);
    }
    const std::vector<Finding> findings = verify(*database, Language::english).findings;
    database->run_script(script_of(repairs_of(findings), dialect_named("sqlite"), Language::chinese));
    const std::vector<Finding> left = verify(*database, Language::english).findings;
    REQUIRE(left.size() == 1);
    CHECK(left.front().cause == Cause::refused_bill);  // which no ledger row can set right
}

TEST_CASE("The script of the repairs begins and ends a transaction as each engine has it") {
    struct Row {
        const char* dialect;
        const char* beginning;
        const char* ending;
    };
    const Row rows[] = {
        {"sqlite", "begin;\n-- A row is missing\ninsert", ";\ncommit;\n"},
        {"postgresql", "begin;\n", ";\ncommit;\n"},
        {"mariadb", "set sql_mode=concat(@@sql_mode,',NO_BACKSLASH_ESCAPES');\nbegin;\n", ";\ncommit;\n"},
        {"sqlserver", "begin transaction;\n", ";\ncommit;\n"},
        {"access", "-- A row is missing\ninsert", ";\n"},
    };
    LedgerEntry entry;
    entry.key.parts = {u"W1", u"G'1 ", u"a\\", std::nullopt, u"0"};
    entry.quantities = {15000, 0, 15000};
    entry.details = {Null{}, u"pcs", u""};
    const std::vector<Repair> repairs =
        repairs_of({{Cause::missing_row, {{entry.key, {}, {entry}, {}}}, std::nullopt, 0, 0, {}}});
    for (const Row& row : rows) {
        const std::string script = script_of(repairs, dialect_named(row.dialect), Language::english);
        INFO(script);
        CHECK(script.starts_with(row.beginning));
        CHECK(script.ends_with(row.ending));
        CHECK(script.find("values('W1','G''1 ','a\\',null,0,null,'pcs','',1.5,0,1.5)") != std::string::npos);
        CHECK(script_of({}, dialect_named(row.dialect), Language::english).empty());
    }
}

}  // namespace
}  // namespace vantlo::test
