#include <doctest/doctest.h>

#include <algorithm>
#include <set>

#include "component/member_table.h"
#include "tests/support/scenario_runner.h"

namespace vantlo::test {
namespace {

const std::vector<Scenario>& scenarios() {
    static const std::vector<Scenario> all = read_scenario_folder(VANTLO_SOURCE_DIR "/tests/scenarios");
    return all;
}

bool changes_rows(const Event& event) {
    return event.what == "execute" && (event.text.starts_with("update") || event.text.starts_with("insert"));
}

std::vector<std::string> writes_of(const Recorder& recorder, int before_event = -1) {
    std::vector<std::string> writes;
    for (int i = 0; i < static_cast<int>(recorder.events.size()); ++i) {
        const Event& event = recorder.events[static_cast<std::size_t>(i)];
        if (i != before_event && changes_rows(event)) writes.push_back(event.text);
    }
    return writes;
}

std::vector<std::string> messages_of(const Recorder& recorder) {
    std::vector<std::string> messages;
    for (const Event& event : recorder.events) {
        if (event.what == "message") messages.push_back(event.text);
    }
    return messages;
}

/// Whether a message begins so.
bool shows(const Recorder& recorder, std::string_view beginning) {
    const std::vector<std::string> messages = messages_of(recorder);
    return std::ranges::any_of(messages, [&](const auto& message) { return message.starts_with(beginning); });
}

void check_ledger(const std::vector<std::string>& expected, const std::vector<std::string>& actual) {
    std::vector<std::string> unmatched = actual;
    for (const std::string& row : expected) {
        const auto found = std::ranges::find_if(unmatched, [&](const auto& other) { return matches(row, other); });
        CHECK_MESSAGE(found != unmatched.end(), "missing from the ledger: " << row);
        if (found != unmatched.end()) unmatched.erase(found);
    }
    for (const std::string& row : unmatched) FAIL_CHECK("not expected in the ledger: " << row);
}

TEST_CASE("Every scenario returns its result, sends its statements and leaves its ledger") {
    const auto database = make_test_database();
    for (const Scenario& scenario : scenarios()) {
        INFO(scenario.where());
        const Outcome outcome = run_scenario(scenario, *database);
        CHECK(outcome.result == scenario.result);
        CHECK(joined(outcome.recorder.trace(scenario.detail)) == joined(scenario.trace));
        check_ledger(database->expected_ledger(scenario), outcome.ledger);
    }
}

TEST_CASE("Every posting member has scenarios") {
    std::set<std::string> told;
    for (const Scenario& scenario : scenarios()) told.insert(scenario.member);
    for (const Member& member : member_table()) {
        if (member.kind == MemberKind::method) CHECK_MESSAGE(told.contains(to_utf8(member.name)), to_utf8(member.name));
    }
}

/// Whose step a failure hits decides what the member makes of it.
enum class Owner { member, preparation, unit_look_up, release };

Owner owner_of(const Recorder& baseline, std::size_t index) {
    const Event& event = baseline.events[index];
    if (event.recordset == "unit") return Owner::unit_look_up;
    if (event.what == "release") return Owner::release;
    const bool closes_for_release = event.what == "close" && index > 0 && baseline.events[index - 1].what == "release";
    if (closes_for_release) return Owner::release;
    const bool prepares =
        event.what == "prepare" || event.what == "connect" || event.what == "location" || event.what == "type";
    return prepares ? Owner::preparation : Owner::member;
}

bool is_prefix(const std::vector<std::string>& prefix, const std::vector<std::string>& whole) {
    return prefix.size() <= whole.size() && std::equal(prefix.begin(), prefix.end(), whole.begin());
}

TEST_CASE("A failure of any call, read or close gives its number, at most one message, and nothing after it") {
    const auto database = make_test_database();
    int points = 0;
    for (const Scenario& scenario : scenarios()) {
        INFO(scenario.where());
        const Outcome whole = run_scenario(scenario, *database);
        const Member& member = *find_method(from_utf8(scenario.member));
        for (int n = 1; n <= whole.recorder.steps; ++n) {
            INFO("step " << n);
            const Outcome failed = run_scenario(scenario, *database, n);
            ++points;
            const auto hit = static_cast<std::size_t>(failed.recorder.failed_event);
            REQUIRE(hit < failed.recorder.events.size());
            const std::vector<std::string> writes = writes_of(failed.recorder, failed.recorder.failed_event);
            switch (owner_of(whole.recorder, hit)) {
                case Owner::member: {
                    CHECK(failed.result == 1004);
                    const bool silent = member.on_error == OnError::stay_silent;
                    CHECK(failed.recorder.events.size() <= hit + 2);  // the message, and nothing else
                    CHECK((failed.recorder.events.back().what == "message") == !silent);
                    CHECK(is_prefix(writes, writes_of(whole.recorder)));
                    break;
                }
                case Owner::release:
                    CHECK(failed.result == whole.result);
                    CHECK(messages_of(failed.recorder) == messages_of(whole.recorder));
                    CHECK(failed.ledger == whole.ledger);
                    break;
                case Owner::unit_look_up:
                    // The error number serves as the factor, and the posting goes on.
                    CHECK(shows(failed.recorder, "GoodsUnitConverter():"));
                    CHECK(writes.size() <= writes_of(whole.recorder).size());
                    break;
                case Owner::preparation: CHECK(shows(failed.recorder, "Open_Recordset():")); break;
            }
        }
    }
    MESSAGE(points << " fault points of " << scenarios().size() << " scenarios, all of them tried");
}

}  // namespace
}  // namespace vantlo::test
