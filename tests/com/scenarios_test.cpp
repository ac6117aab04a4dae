#include <doctest/doctest.h>

#include <algorithm>
#include <iterator>
#include <set>

#include "ado/native/native_connection.h"
#include "tests/com/declared_line.h"
#include "tests/com/line_object.h"
#include "tests/com/member_call.h"
#include "tests/support/ado_stand_in/ado_recordset.h"
#include "tests/support/com/class_factory.h"
#include "tests/support/scenario_check.h"

// What the portable class is tested with, through the library as hosts call it: ADO's interfaces below, COM above.

namespace vantlo::test {
namespace {

/// The library with ADO's recordsets as the test's hook makes them.
struct LibraryFixture {
    LibraryFixture() { library.show_messages_on_platform(); }

    using MakeLine = ComPointer<IDispatch> (*)(LineType type, Line& line);

    static ComPointer<IDispatch> make_named_line(LineType, Line& line) {
        return ComPointer<IDispatch>(new LineObject(line));
    }

    /// Calls a scenario's member on a new object, and lets everything go.
    Call call_through(Road road, MakeLine make_line = make_named_line) {
        return [this, road, make_line](const Scenario& scenario, const CallSite& site) {
            const ComPointer<AdoConnection> host_connection(new AdoConnection(site.connection));
            const Member& member = *find_method(from_utf8(scenario.member));
            const ComPointer<IDispatch> line_object = make_line(member.parameters()[0].line_type, site.line);
            std::vector<ComArgument> arguments;
            for (std::size_t i = 0; i < scenario.arguments.size(); ++i) {
                const bool is_line = member.parameters()[i].type == ParameterType::line;
                arguments.push_back(is_line ? ComArgument{line_object.get(), {}}
                                            : ComArgument{nullptr, from_utf8(scenario.arguments[i])});
            }
            const ComPointer<_Inventory_Class> object = library.make_object();
            CHECK(object->put_DATAType(OwnedBstr(from_utf8(scenario.data_type)).get()) == S_OK);
            CHECK(object->putref_ADOConn(host_connection.get()) == S_OK);
            const ComPointer<_Inventory_Class> other = library.make_object();
            if (site.project_connection != nullptr) {
                const ComPointer<AdoConnection> project(new AdoConnection(*site.project_connection));
                CHECK(other->putref_ADOConn(project.get()) == S_OK);
            }
            const std::int32_t result = call_method(road, *object.get(), member, arguments);
            CHECK(object->putref_ADOConn(nullptr) == S_OK);
            CHECK(other->putref_ADOConn(nullptr) == S_OK);
            if (line_object) CHECK(references(*line_object.get()) == 1);
            CHECK(host_connection->references() == 1);
            return result;
        };
    }

    Apartment apartment;
    ComponentLibrary library;
    ClassRegistration recordsets{
        ado::recordset_class, [] { return ComPointer<IUnknown>(new AdoRecordset(shell_hooks().create_recordset())); }};
    std::unique_ptr<TestDatabase> database = make_sqlite_database();
};

TEST_CASE_FIXTURE(LibraryFixture, "Every scenario holds through the vtable") {
    const long alive = objects_alive;
    check_scenarios(all_scenarios(), *database, call_through(Road::early_bound));
    check_scenarios(scenarios_of_column_types(), *database, call_through(Road::early_bound));
    CHECK(objects_alive == alive);
    CHECK(library.can_unload());
}

TEST_CASE_FIXTURE(LibraryFixture, "Every scenario holds through IDispatch") {
    const long alive = objects_alive;
    check_scenarios(all_scenarios(), *database, call_through(Road::by_name));
    check_scenarios(scenarios_of_column_types(), *database, call_through(Road::by_name));
    CHECK(objects_alive == alive);
    CHECK(library.can_unload());
}

/// Whether a line's values have the types that its declared interface gives them.
bool can_be_declared(const Scenario& scenario) {
    const auto fits = [](const auto& property) {
        const auto& [name, value] = property;
        if (name == "Actualqty" || name == "Qty" || name == "UQty") return value.template is<float>();
        if (name == "Goodstutas" || name == "GoodsStatus") return value.template is<std::int32_t>();
        return value.template is<Text>();
    };
    return scenario.has_line && std::ranges::all_of(scenario.line, fits);
}

TEST_CASE_FIXTURE(LibraryFixture, "A line that has nothing but its declared interface is read through that") {
    std::vector<Scenario> scenarios;
    std::ranges::copy_if(all_scenarios(), std::back_inserter(scenarios), can_be_declared);
    std::set<std::string> members;
    for (const Scenario& scenario : scenarios) members.insert(scenario.member);
    CHECK(members.size() == 21);  // all that take a line
    const long alive = objects_alive;
    check_scenarios(scenarios, *database, call_through(Road::early_bound, make_declared_line));
    check_scenarios(scenarios, *database, call_through(Road::by_name, make_declared_line));
    CHECK(objects_alive == alive);
    MESSAGE(scenarios.size() << " scenarios through declared interfaces");
}

TEST_CASE_FIXTURE(LibraryFixture, "A failure of a declared interface's getter is the one that a named property's is") {
    int points = 0;
    for (const Scenario& scenario : all_scenarios()) {
        if (!can_be_declared(scenario)) continue;
        INFO(scenario.where());
        const int steps = run_scenario(scenario, *database).recorder.steps;
        for (int n = 1 + points % 3; n <= steps; n += 3) {
            INFO("step " << n);
            const Outcome expected = run_scenario(scenario, *database, {.at = n});
            const Outcome through =
                run_scenario(scenario, *database, {.at = n}, call_through(Road::early_bound, make_declared_line));
            CHECK(through.result == expected.result);
            CHECK(joined(through.recorder.trace(Detail::everything)) ==
                  joined(expected.recorder.trace(Detail::everything)));
            ++points;
        }
    }
    MESSAGE(points << " fault points through declared interfaces");
}

TEST_CASE_FIXTURE(LibraryFixture, "A failure of any step does through the library what it does without it") {
    constexpr int stride = 5;  // every fifth step of each scenario: all of them are tried on the portable class
    const long alive = objects_alive;
    int points = 0;
    for (const Scenario& scenario : all_scenarios()) {
        INFO(scenario.where());
        const int steps = run_scenario(scenario, *database).recorder.steps;
        for (int n = 1 + points % stride; n <= steps; n += stride) {
            INFO("step " << n);
            const Road road = points++ % 2 == 0 ? Road::early_bound : Road::by_name;
            const Outcome expected = run_scenario(scenario, *database, {.at = n});
            const Outcome through = run_scenario(scenario, *database, {.at = n}, call_through(road));
            CHECK(through.result == expected.result);
            CHECK(joined(through.recorder.trace(Detail::everything)) ==
                  joined(expected.recorder.trace(Detail::everything)));
            CHECK(joined(through.ledger) == joined(expected.ledger));
        }
    }
    CHECK(objects_alive == alive);
    MESSAGE(points << " fault points through the library");
}

}  // namespace
}  // namespace vantlo::test
