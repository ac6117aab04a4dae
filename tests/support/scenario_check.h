#pragma once

#include <doctest/doctest.h>

#include <algorithm>
#include <regex>

#include "tests/support/scenario_runner.h"

namespace vantlo::test {

inline const std::string scenario_folder = VANTLO_SOURCE_DIR "/tests/scenarios";

/// The scenarios that hold on every database, read once.
inline const std::vector<Scenario>& all_scenarios() {
    static const std::vector<Scenario> all = read_scenario_folder(scenario_folder);
    return all;
}

/// The scenarios whose columns have types of their own, on SQLite; read once.
inline const std::vector<Scenario>& scenarios_of_column_types() {
    static const std::vector<Scenario> all = read_scenario_folder(scenario_folder + "/column_types");
    return all;
}

/// A statement with a mark in place of each number and behind each text: what another factor of a unit leaves the same.
inline std::string without_numbers(const std::string& statement) {
    static const std::regex number("('[^']*')|-?\\b[0-9]+(\\.[0-9]+)?(E[+-][0-9]+)?");
    return std::regex_replace(statement, number, "$1#");
}

inline void check_ledger(const std::vector<std::string>& expected, const std::vector<std::string>& actual) {
    std::vector<std::string> unmatched = actual;
    for (const std::string& row : expected) {
        const auto found = std::ranges::find_if(unmatched, [&](const auto& other) { return matches(row, other); });
        CHECK_MESSAGE(found != unmatched.end(), "missing from the ledger: " << row);
        if (found != unmatched.end()) unmatched.erase(found);
    }
    for (const std::string& row : unmatched) FAIL_CHECK("not expected in the ledger: " << row);
}

/// Checks result, trace and ledger of each scenario, called the given way.
inline void check_scenarios(const std::vector<Scenario>& told, TestDatabase& database, const Call& call = {}) {
    for (const Scenario& scenario : told) {
        INFO(scenario.where());
        const Outcome outcome = run_scenario(scenario, database, {}, call);
        CHECK(outcome.result == scenario.result);
        CHECK(joined(outcome.recorder.trace(scenario.detail)) == joined(scenario.trace));
        check_ledger(database.expected_ledger(scenario), outcome.ledger);
        check_ledger(scenario.project_ledger, outcome.project_ledger);
    }
}

}  // namespace vantlo::test
