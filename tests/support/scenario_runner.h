#pragma once

#include <functional>
#include <memory>

#include "component/member_table.h"
#include "tests/support/scenario.h"
#include "tests/support/test_database.h"

namespace vantlo::test {

/// What a run of a scenario did.
struct Outcome {
    std::int32_t result = 0;
    Recorder recorder;
    std::vector<std::string> ledger;
    std::vector<std::string> project_ledger;  ///< of the database of the scenario's project-wide connection
};

/// What a scenario's member is called with.
struct CallSite {
    Connection& connection;  ///< the instance's
    Line& line;
    Connection* project_connection = nullptr;  ///< what another instance sets last; null: there is no other instance
};

/// How a scenario's member is called.
using Call = std::function<std::int32_t(const Scenario& scenario, const CallSite& site)>;

/// Calls it on the portable class; `before_call` runs right before.
std::int32_t call_member(const Scenario& scenario, const CallSite& site, const std::function<void()>& before_call = {});

/// One argument of a scenario's call, in its parameter's type; the word `line` stands for the line object.
Argument argument_of(const Parameter& parameter, const std::string& word, Line& line);

/// The n-th step of a call that fails, and under which number; 0: none.
struct Fault {
    int at = 0;
    ErrorNumber number = 1004;  ///< one that nothing else gives
};

/// Fills the database, calls the member on a recording connection with recording hooks, and reads the ledger.
Outcome run_scenario(const Scenario& scenario, TestDatabase& database, Fault fault = {}, const Call& call = {});

}  // namespace vantlo::test
