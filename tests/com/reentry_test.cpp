#include <doctest/doctest.h>

#include <array>
#include <optional>

#include "tests/com/line_object.h"
#include "tests/com/member_call.h"
#include "tests/com/process_use.h"
#include "tests/support/ado_stand_in/ado_recordset.h"
#include "tests/support/com/class_factory.h"
#include "tests/support/scenario_check.h"

// A host calls back through COM while a member runs: from a property of its line, from ADO, or while a message is shown.

namespace vantlo::test {
namespace {

enum class HostAct { set_nothing, set_another, release_object };

constexpr HostAct host_acts[] = {HostAct::set_nothing, HostAct::set_another, HostAct::release_object};

struct LibraryFixture {
    LibraryFixture() { library.show_messages_on_platform(); }

    /// Calls a scenario's member; during one event of the call the host acts and lets go of the references of its own.
    Outcome run(const Scenario& scenario, Road road, std::optional<std::size_t> event, HostAct act) {
        Recorder* recorder = nullptr;
        const Call call = [&](const Scenario& told, const CallSite& site) {
            ComPointer<AdoConnection> connection(new AdoConnection(site.connection));
            ComPointer<AdoConnection> another(new AdoConnection(site.connection));
            const ComPointer<LineObject> line(new LineObject(site.line));
            ComPointer<_Inventory_Class> object = library.make_object();
            object->put_DATAType(OwnedBstr(from_utf8(told.data_type)).get());
            object->putref_ADOConn(connection.get());
            connection = nullptr;
            recorder = &dynamic_cast<RecordingConnection&>(site.connection).recorder();
            recorder->on_event = [&](std::size_t index) {
                if (index != event) return;
                if (act == HostAct::release_object) {
                    object = nullptr;
                    CHECK_FALSE(library.can_unload());  // the call holds the object
                } else {
                    object->putref_ADOConn(act == HostAct::set_another ? another.get() : nullptr);
                }
            };
            const Member& member = *find_method(from_utf8(told.member));
            std::vector<ComArgument> arguments;
            for (std::size_t i = 0; i < told.arguments.size(); ++i) {
                const bool is_line = member.parameters()[i].type == ParameterType::line;
                arguments.push_back(is_line ? ComArgument{line.get(), {}}
                                            : ComArgument{nullptr, from_utf8(told.arguments[i])});
            }
            const LONG result = call_method(road, *object.get(), member, arguments);
            recorder->on_event = nullptr;
            object = nullptr;
            library.make_object()->putref_ADOConn(nullptr);
            CHECK(line->references() == 1);
            CHECK(another->references() == 1);
            return result;
        };
        return run_scenario(scenario, *database, {}, call);
    }

    Apartment apartment;
    ComponentLibrary library;
    ClassRegistration recordsets{
        ado::recordset_class, [] { return ComPointer<IUnknown>(new AdoRecordset(shell_hooks().create_recordset())); }};
    std::unique_ptr<TestDatabase> database = make_sqlite_database();
};

std::ptrdiff_t statements_after(const Outcome& whole, std::size_t event) {
    const std::span<const Event> events(whole.recorder.events);
    return std::ranges::count(events.subspan(std::min(event + 1, events.size())), "execute", &Event::what);
}

TEST_CASE_FIXTURE(LibraryFixture,
                  "A host that sets ADOConn or releases the object during any step of any member does no harm") {
    const long alive = objects_alive;
    int points = 0;
    for (const Member& member : member_table()) {
        const auto scenario = std::ranges::find_if(all_scenarios(), [&](const Scenario& told) {
            return from_utf8(told.member) == member.name && told.result == 0 && !told.has_project;
        });
        if (scenario == all_scenarios().end()) continue;  // the properties
        INFO(scenario->where());
        const Outcome whole = run(*scenario, Road::by_name, {}, HostAct::set_nothing);
        for (std::size_t event = 0; event < whole.recorder.events.size(); ++event) {
            for (const HostAct act : host_acts) {
                const Road road = points++ % 2 == 0 ? Road::early_bound : Road::by_name;
                INFO("event " << event << ", " << whole.recorder.events[event].line() << ", act "
                              << static_cast<int>(act));
                const Outcome outcome = run(*scenario, road, event, act);
                if (act == HostAct::set_nothing) {
                    const bool goes_on = statements_after(whole, event) == 0;
                    const bool opens_unconnected = outcome.result == error::no_connection && event == 0;
                    CHECK((opens_unconnected || outcome.result == (goes_on ? 0 : error::object_not_set)));
                } else {
                    CHECK(outcome.result == 0);
                    CHECK(joined(outcome.ledger) == joined(whole.ledger));
                }
            }
        }
    }
    CHECK(points > 0);
    CHECK(objects_alive == alive);
    CHECK(library.can_unload());
    MESSAGE(points << " calls back through the library");
}

TEST_CASE_FIXTURE(LibraryFixture,
                  "A host that calls back runs a thousand times without a lost byte, slot or reference") {
    struct Point {
        const Scenario& scenario;
        std::size_t event;
        HostAct act;
    };
    std::vector<Point> points;
    for (const char* member : {"AddInventory_Db", "ReduceInventory_Db"}) {
        for (const bool fails : {false, true}) {
            const auto scenario = std::ranges::find_if(all_scenarios(), [&](const Scenario& told) {
                return told.member == member && (told.result != 0) == fails;
            });
            REQUIRE(scenario != all_scenarios().end());
            const std::size_t events = run(*scenario, Road::by_name, {}, {}).recorder.events.size();
            for (std::size_t event = 0; event < events; ++event) {
                for (const HostAct act : host_acts) points.push_back({*scenario, event, act});
            }
        }
    }
    REQUIRE(points.size() > 200);
    std::size_t next = 0;
    const auto call_back = [&] {
        const auto& [scenario, event, act] = points[next++ % points.size()];
        for (const Road road : {Road::early_bound, Road::by_name}) run(scenario, road, event, act);
    };
    while (next < points.size()) call_back();
    check_thousand_runs_keep_nothing(call_back);
    CHECK(library.can_unload());
}

}  // namespace
}  // namespace vantlo::test
