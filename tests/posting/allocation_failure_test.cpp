#include <doctest/doctest.h>

#include <algorithm>

#include "automation/error.h"
#include "component/member_table.h"
#include "tests/support/allocation_failures.h"
#include "tests/support/scenario_runner.h"

namespace vantlo::test {
namespace {

std::vector<std::string> of_kind(const Recorder& recorder, std::string_view what) {
    std::vector<std::string> texts;
    for (const Event& event : recorder.events) {
        if (event.what == what) texts.push_back(event.text);
    }
    return texts;
}

std::vector<std::string> writes_of(const Recorder& recorder) {
    std::vector<std::string> statements = of_kind(recorder, "execute");
    std::erase_if(statements,
                  [](const std::string& text) { return !text.starts_with("update") && !text.starts_with("insert"); });
    return statements;
}

struct Run {
    Outcome outcome;
    bool has_failed = false;
};

/// Runs a scenario with its n-th allocation failing, counted from 0, once or from then on.
Run run_short_of_memory(const Scenario& scenario, TestDatabase& database, long n, bool and_all_after) {
    allocation_plan() = {n, and_all_after, false, false};
    Run run;
    run.outcome = run_scenario(scenario, database, {}, [](const Scenario& told, const CallSite& site) {
        return call_member(told, site, [] { allocation_plan().armed = true; });
    });
    run.has_failed = allocation_plan().has_failed;
    return run;
}

/// What a posting that ran short of memory may have done. A helper that runs short shows so and goes on with what it
/// has, an empty literal or its error number as the factor: the member then ends at the engine's refusal, or not at all.
void check(const Scenario& scenario, const Outcome& whole, const Outcome& run) {
    const bool silent = find_method(from_utf8(scenario.member))->on_error == OnError::stay_silent;
    const std::vector<std::string> messages = of_kind(run.recorder, "message");
    const std::vector<std::string> shown_anyway = of_kind(whole.recorder, "message");
    const bool helper_ran_short = std::ranges::any_of(messages, [&](const std::string& message) {
        return !message.starts_with(scenario.member + "():") &&
               std::ranges::find(shown_anyway, message) == shown_anyway.end();
    });
    const std::vector<std::string> writes = writes_of(run.recorder);
    const std::vector<std::string> all_writes = writes_of(whole.recorder);
    if (helper_ran_short) return;
    const bool is_prefix =
        writes.size() <= all_writes.size() && std::equal(writes.begin(), writes.end(), all_writes.begin());
    CHECK(is_prefix);
    if (run.result == whole.result) {
        CHECK(run.ledger == whole.ledger);
    } else {
        CHECK(run.result == error::out_of_memory);
        const bool shows_own = !messages.empty() && messages.back().starts_with(scenario.member + "():");
        CHECK(shows_own == !silent);
    }
}

TEST_CASE("A posting that runs out of memory at any allocation ends at its trap, with the earlier statements applied") {
    const auto database = make_sqlite_database();
    long points = 0;
    for (const Scenario& scenario : read_scenario_folder(VANTLO_SOURCE_DIR "/tests/scenarios")) {
        INFO(scenario.where());
        const Outcome whole = run_scenario(scenario, *database);
        for (const bool and_all_after : {false, true}) {
            for (long n = 0;; ++n) {
                INFO("allocation " << n << std::string(and_all_after ? " and all after it" : " alone"));
                const Run run = run_short_of_memory(scenario, *database, n, and_all_after);
                if (!run.has_failed) {
                    CHECK(run.outcome.result == whole.result);
                    break;
                }
                ++points;
                check(scenario, whole, run.outcome);
            }
        }
    }
    MESSAGE(points << " failing allocations, all that there are");
}

}  // namespace
}  // namespace vantlo::test
