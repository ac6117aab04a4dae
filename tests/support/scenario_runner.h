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

/// How a scenario's member is called: on an object with that connection, with that line.
using Call = std::function<std::int32_t(const Scenario& scenario, Connection& connection, Line& line)>;

/// Calls it on the portable class; `before_call` runs right before.
std::int32_t call_member(const Scenario& scenario, Connection& connection, Line& line,
                         const std::function<void()>& before_call = {});

/// The n-th step of a call that fails, and under which number; 0: none.
struct Fault {
    int at = 0;
    ErrorNumber number = 1004;  ///< one that nothing else gives
};

/// Fills the database, calls the member on a recording connection and platform, and reads the ledger.
Outcome run_scenario(const Scenario& scenario, TestDatabase& database, Fault fault = {}, const Call& call = {});

}  // namespace vantlo::test
