#pragma once

#include <functional>
#include <memory>

#include "tests/support/scenario.h"
#include "tests/support/test_database.h"

namespace vantlo::test {

/// What a run of a scenario did.
struct Outcome {
    std::int32_t result = 0;
    Recorder recorder;
    std::vector<std::string> ledger;
};

/// Fills the database, calls the member on a recording connection and platform, and reads the ledger.
/// With `fail_at` the n-th step of the call fails under the number `fail_with`; `before_call` runs right before the call.
Outcome run_scenario(const Scenario& scenario, TestDatabase& database, int fail_at = 0, ErrorNumber fail_with = 1004,
                     const std::function<void()>& before_call = {});

/// Calls the scenario's member on an object whose connection is the given one, with the given line.
std::int32_t call_member(const Scenario& scenario, Connection& connection, Line& line,
                         const std::function<void()>& before_call = {});

}  // namespace vantlo::test
