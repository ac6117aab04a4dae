#include <doctest/doctest.h>

#include <algorithm>
#include <optional>

#include "automation/error.h"
#include "component/inventory_class.h"
#include "tests/support/scenario_check.h"

// A host calls back while a member runs: from a property of its line, from its connection, from a timer while a message
// is open. It sets ADOConn, or releases the object. Connections are freed with their last reference.

namespace vantlo::test {
namespace {

enum class HostAct { set_nothing, set_another, release_object, release_object_and_set_nothing, set_another_for_one };

constexpr HostAct host_acts[] = {HostAct::set_nothing, HostAct::set_another, HostAct::release_object,
                                 HostAct::release_object_and_set_nothing, HostAct::set_another_for_one};

/// What the host does, and during which event of the call.
struct Reentry {
    std::size_t event = 0;
    HostAct act = HostAct::set_nothing;
};

struct Run {
    std::int32_t result = 0;
    Recorder recorder;
    bool frees_connections = false;
};

/// A host with two connections to one database.
class Host {
public:
    Run run(const Scenario& scenario, std::optional<Reentry> reentry = {}) {
        database_->fill(scenario.given);
        Run run;
        {
            const RecordingHooks hooks(run.recorder);
            connect(first_, run.recorder, "");
            connect(other_, run.recorder, "other");
            ConnectionReference other(other_.get());
            object_ = std::make_unique<Inventory_Class>();
            object_->let_DATAType(from_utf8(scenario.data_type));
            object_->set_ADOConn(first_.get());
            RecordedLine line(run.recorder, scenario.line);
            run.recorder.on_event = [&](std::size_t index) {
                if (reentry && index == reentry->event) do_act(reentry->act);
                // For one statement, whose recordset is the only one to know that connection then.
                if (reentry && reentry->act == HostAct::set_another_for_one && index > 0 &&
                    object_->ADOConn() != nullptr && run.recorder.events[index - 1].what == "execute" &&
                    run.recorder.events[index - 1].connection == "other") {
                    object_->set_ADOConn(nullptr);
                    other = nullptr;
                }
            };
            run.result = call(scenario, line);
            run.recorder.on_event = nullptr;
            object_.reset();
        }  // which takes the connection out of the project-wide copy
        run.frees_connections = first_ == nullptr && other_ == nullptr;
        return run;
    }

private:
    void connect(std::unique_ptr<RecordingConnection>& connection, Recorder& recorder, const char* name) const {
        connection = std::make_unique<RecordingConnection>(recorder, database_->connection(), name);
        connection->on_last_release = [&connection] { connection.reset(); };
    }

    std::int32_t call(const Scenario& scenario, Line& line) {
        const Member& member = *find_method(from_utf8(scenario.member));
        std::vector<Argument> arguments;
        for (std::size_t i = 0; i < scenario.arguments.size(); ++i) {
            arguments.push_back(argument_of(member.parameters()[i], scenario.arguments[i], line));
        }
        return object_->call(member, arguments);
    }

    void do_act(HostAct act) {
        switch (act) {
            case HostAct::set_nothing: object_->set_ADOConn(nullptr); break;
            case HostAct::set_another:
            case HostAct::set_another_for_one: object_->set_ADOConn(other_.get()); break;
            case HostAct::release_object: object_.reset(); break;
            case HostAct::release_object_and_set_nothing:
                object_.reset();
                Inventory_Class().set_ADOConn(nullptr);
                break;
        }
    }

    std::unique_ptr<TestDatabase> database_ = make_sqlite_database();
    std::unique_ptr<RecordingConnection> first_;
    std::unique_ptr<RecordingConnection> other_;
    std::unique_ptr<Inventory_Class> object_;
};

struct Sent {
    std::size_t event;
    std::string statement;
    std::string connection;
};

/// What ran through ADOConn. Without a project-wide connection a unit's factor is the number of an error, so that only
/// the quantities may differ.
std::vector<Sent> executed(const Recorder& recorder) {
    std::vector<Sent> statements;
    for (std::size_t i = 0; i < recorder.events.size(); ++i) {
        const Event& event = recorder.events[i];
        if (event.what == "execute") statements.push_back({i, event.text, event.connection});
    }
    return statements;
}

std::string told(const std::vector<Sent>& statements) {
    std::string text;
    for (const Sent& sent : statements) text += "\n  " + sent.connection + ": " + without_numbers(sent.statement);
    return text;
}

/// Whether a recordset that the member opens itself is without a connection, since there is no project-wide one any more
/// by the time that it is prepared.
bool opens_without_connection(const Run& whole, const Reentry& reentry) {
    const auto opens_its_own = [](const Event& event) { return event.what == "open" && event.recordset != "unit"; };
    const bool sets_nothing =
        reentry.act == HostAct::set_nothing || reentry.act == HostAct::release_object_and_set_nothing;
    return sets_nothing && reentry.event == 0 && std::ranges::any_of(whole.recorder.events, opens_its_own);
}

/// What has to run through ADOConn when the host acts during an event.
std::vector<Sent> expected_statements(const Run& whole, const Reentry& reentry) {
    if (opens_without_connection(whole, reentry)) return {};
    std::vector<Sent> statements = executed(whole.recorder);
    const auto later = std::ranges::find_if(statements, [&](const Sent& sent) { return sent.event > reentry.event; });
    if (reentry.act == HostAct::set_nothing) statements.erase(later, statements.end());
    if (reentry.act == HostAct::set_another)
        std::for_each(later, statements.end(), [](Sent& sent) { sent.connection = "other"; });
    return statements;
}

std::int32_t expected_result(const Run& whole, const Reentry& reentry) {
    if (opens_without_connection(whole, reentry)) return error::no_connection;
    const std::vector<Sent> statements = executed(whole.recorder);
    const bool statements_follow = !statements.empty() && statements.back().event > reentry.event;
    return reentry.act == HostAct::set_nothing && statements_follow ? error::object_not_set : whole.result;
}

void check(const Run& whole, const Run& run, const Reentry& reentry) {
    CHECK(std::ranges::count(run.recorder.events, "dangling", &Event::what) == 0);
    CHECK(run.frees_connections);
    if (reentry.act == HostAct::set_another_for_one) return;
    CHECK(run.result == expected_result(whole, reentry));
    CHECK(told(executed(run.recorder)) == told(expected_statements(whole, reentry)));
    if (reentry.act == HostAct::release_object) {
        CHECK(joined(run.recorder.trace(Detail::everything)) == joined(whole.recorder.trace(Detail::everything)));
    }
}

bool writes(const Recorder& recorder, std::string_view beginning) {
    return std::ranges::any_of(recorder.events, [&](const Event& event) { return event.text.starts_with(beginning); });
}

/// For each member a scenario that updates, one that inserts, and one that fails with a message.
std::vector<Scenario> scenarios_of_each_member(Host& host) {
    std::vector<Scenario> chosen;
    for (const Member& member : member_table()) {
        bool updates = false, inserts = false, fails = false;
        for (const Scenario& scenario : all_scenarios()) {
            if (from_utf8(scenario.member) != member.name) continue;
            const Run run = host.run(scenario);
            const bool has_message = std::ranges::count(run.recorder.events, "message", &Event::what) > 0;
            const bool is_update = !updates && run.result == 0 && writes(run.recorder, "update");
            const bool is_insert = !inserts && run.result == 0 && writes(run.recorder, "insert");
            const bool is_failure = !fails && has_message;
            updates = updates || is_update;
            inserts = inserts || is_insert;
            fails = fails || is_failure;
            if (is_update || is_insert || is_failure) chosen.push_back(scenario);
        }
    }
    return chosen;
}

TEST_CASE("A host that sets ADOConn or releases the object during any step of any member does no harm") {
    Host host;
    const std::vector<Scenario> scenarios = scenarios_of_each_member(host);
    REQUIRE(scenarios.size() > 100);
    int points = 0;
    for (const Scenario& scenario : scenarios) {
        INFO(scenario.where());
        const Run whole = host.run(scenario);
        for (std::size_t event = 0; event < whole.recorder.events.size(); ++event) {
            for (const HostAct act : host_acts) {
                INFO("event " << event << ", " << whole.recorder.events[event].line() << ", act "
                              << static_cast<int>(act));
                const Reentry reentry{event, act};
                check(whole, host.run(scenario, reentry), reentry);
                ++points;
            }
        }
    }
    MESSAGE(points << " calls back, in " << scenarios.size() << " scenarios");
}

}  // namespace
}  // namespace vantlo::test
