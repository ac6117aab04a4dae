#pragma once

#include <functional>
#include <map>
#include <string>

#include "tests/support/killing_connection.h"
#include "tests/support/scenario_runner.h"

namespace vantlo::test {

/// A scenario posted on connections of its own, if need be in a process that is killed before or after a statement.
class KilledPosting {
public:
    using Connect = std::function<Owned<NativeConnection>()>;

    KilledPosting(const Scenario& scenario, Connect connect) : scenario_(scenario), connect_(std::move(connect)) {}

    /// Posts in a process of its own that is killed at the n-th statement, counted from 0. Returns whether it was killed.
    [[nodiscard]] bool post_and_kill(int kill_at, bool before, bool in_transaction) const;

    /// Posts in this process. Returns the number of statements that went through the connection.
    int post(int kill_at = never, bool before = false, bool in_transaction = false) const;

    [[nodiscard]] std::vector<std::string> ledger() const { return read_ledger(*connect_()); }

private:
    const Scenario& scenario_;
    Connect connect_;
};

/// Kills a scenario's posting before and after each of its statements, in the host's transaction and without it, and
/// checks what is left: all or nothing, and exactly the statements before the kill. `fresh` makes a ledger with what the
/// scenario gives, untouched. Returns the number of kills.
int check_every_kill(const Scenario& scenario, const std::function<KilledPosting()>& fresh);

/// The scenario of each member that succeeds with the most statements.
std::map<std::string, Scenario> busiest_scenarios();

}  // namespace vantlo::test
