#include "tests/support/scenario_runner.h"

#include <optional>
#include <stdexcept>

#include "component/inventory_class.h"
#include "tests/support/allocation_failures.h"

namespace vantlo::test {

Argument argument_of(const Parameter& parameter, const std::string& word, Line& line) {
    if (parameter.type == ParameterType::line) return line;
    if (parameter.type == ParameterType::text) return from_utf8(word);
    return std::int32_t{std::stoi(word)};
}

std::int32_t call_member(const Scenario& scenario, const CallSite& site, const std::function<void()>& before_call) {
    const Member* const member = find_method(from_utf8(scenario.member));
    if (member == nullptr) throw std::runtime_error(scenario.where() + ": no such member");
    std::vector<Argument> arguments;
    for (std::size_t i = 0; i < scenario.arguments.size(); ++i) {
        arguments.push_back(argument_of(member->parameters()[i], scenario.arguments[i], site.line));
    }
    Inventory_Class object;
    object.let_DATAType(from_utf8(scenario.data_type));
    object.set_ADOConn(&site.connection);
    Inventory_Class other;
    if (site.project_connection != nullptr) other.set_ADOConn(site.project_connection);
    if (before_call) before_call();
    const std::int32_t result = object.call(*member, arguments);
    allocation_plan().armed = false;
    return result;
}

Outcome run_scenario(const Scenario& scenario, TestDatabase& database, Fault fault, const Call& call) {
    database.fill(scenario.given, scenario.columns);
    const std::unique_ptr<TestDatabase> project_database = scenario.has_project ? make_sqlite_database() : nullptr;
    if (project_database) project_database->fill(scenario.given_to_project);
    Outcome outcome;
    outcome.recorder.fail_at = fault.at;
    outcome.recorder.fail_with = fault.number;
    {
        const RecordingHooks hooks(outcome.recorder);
        RecordingConnection connection(outcome.recorder, database.component_connection(), {},
                                       from_utf8(scenario.without_rows));
        std::optional<RecordingConnection> project;
        if (project_database) project.emplace(outcome.recorder, project_database->connection(), "project");
        RecordedLine line(outcome.recorder, scenario.line);
        const CallSite site{connection, line, project ? &*project : nullptr};
        outcome.result = call ? call(scenario, site) : call_member(scenario, site);
        set_project_connection(nullptr);
        if (connection.references != 0) throw std::runtime_error(scenario.where() + ": a reference is left");
        if (project && project->references != 0) throw std::runtime_error(scenario.where() + ": a reference is left");
    }
    outcome.ledger = read_ledger(database.connection());
    if (project_database) outcome.project_ledger = read_ledger(project_database->connection());
    return outcome;
}

}  // namespace vantlo::test
