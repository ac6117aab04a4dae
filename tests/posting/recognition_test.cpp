#include <doctest/doctest.h>

#include <algorithm>
#include <cctype>
#include <map>

#include "dataaccess/sql_literals.h"
#include "dataaccess/unit_conversion.h"
#include "posting/ledger.h"
#include "tests/support/scenario_check.h"

// What a host's guard makes of the statements that postings send.

namespace vantlo::test {
namespace {

std::string lower(std::string text) {
    std::ranges::transform(text, text.begin(), [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return text;
}

/// The statements that all scenarios send.
std::vector<std::string> statements_of_scenarios() {
    std::vector<std::string> statements;
    for (const Scenario& scenario : all_scenarios()) {
        for (const std::string& line : scenario.trace) {
            if (line.starts_with("open ") || line.starts_with("execute ")) {
                statements.push_back(line.substr(line.find(' ') + 1));
            }
        }
    }
    return statements;
}

/// What a statement does to the ledger, by its words.
LedgerAction action_of(const std::string& statement) {
    const std::string words = lower(statement);
    const bool is_ledger =
        words.find(" inventory ") != std::string::npos || words.starts_with("insert into inventory(");
    if (!is_ledger) return LedgerAction::none;
    if (words.starts_with("update ")) return LedgerAction::update;
    if (words.starts_with("insert ")) return LedgerAction::insert;
    return words.find("count(*)") != std::string::npos ? LedgerAction::count : LedgerAction::look_up;
}

TEST_CASE("Every statement of every scenario is recognized for what it does to the ledger") {
    std::map<LedgerAction, int> found;
    for (const std::string& statement : statements_of_scenarios()) {
        INFO(statement);
        const Text text = from_utf8(statement);
        const auto [action, condition] = recognize_ledger_statement(text);
        CHECK(action == action_of(statement));
        ++found[action];
        const bool has_condition = action == LedgerAction::look_up || action == LedgerAction::count;
        CHECK(condition.empty() != has_condition);
        CHECK(text.ends_with(condition));
        if (has_condition) CHECK(to_utf8(condition) == statement.substr(statement.find("where WID=")));
    }
    CHECK(found.size() == 5);  // of each action some
}

TEST_CASE("Every unit look-up of every scenario is recognized, with the texts that it looks for") {
    int lookups = 0;
    for (const std::string& statement : statements_of_scenarios()) {
        INFO(statement);
        const std::optional<UnitLookup> lookup = recognize_unit_lookup(from_utf8(statement));
        CHECK(lookup.has_value() == (statement.find(" from GoodsUnit ") != std::string::npos));
        if (!lookup) continue;
        ++lookups;
        const Text again = u"select id,Unit,UnitConverter from GoodsUnit where id=" + GetSqlVal(lookup->gid) +
                           u" and Unit=" + GetSqlVal(lookup->unit);
        CHECK(to_utf8(again) == statement);
    }
    CHECK(lookups > 100);
}

TEST_CASE("A statement that only resembles those of postings is not recognized") {
    const char16_t* const others[] = {
        u"",
        u"select * from InventoryOfOld where WID='W1'",
        u"select * from Inventory",
        u"select * from Inventory where GId='G1'",
        u"select * from Goods where ID=' from Inventory where WID='",
        u"insert into InventoryKeys values(1)",
        u"delete from Inventory where WID='W1'",
    };
    for (const char16_t* const other : others) {
        INFO(to_utf8(other));
        CHECK(recognize_ledger_statement(other).action == LedgerAction::none);
        CHECK_FALSE(recognize_unit_lookup(other).has_value());
    }
    const char16_t* const cut[] = {
        u"select id,Unit,UnitConverter from GoodsUnit where id=",
        u"select id,Unit,UnitConverter from GoodsUnit where id='G1",
        u"select id,Unit,UnitConverter from GoodsUnit where id='G1' and Unit=",
        u"select id,Unit,UnitConverter from GoodsUnit where id='G1' and Unit='box''",
        u"select id,Unit,UnitConverter from GoodsUnit where id='G1' and Unit='box' and 1=1",
    };
    for (const char16_t* const other : cut) {
        INFO(to_utf8(other));
        CHECK_FALSE(recognize_unit_lookup(other).has_value());
    }
}

}  // namespace
}  // namespace vantlo::test
