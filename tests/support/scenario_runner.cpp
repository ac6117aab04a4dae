#include "tests/support/scenario_runner.h"

#include <stdexcept>

#include "component/inventory_class.h"
#include "tests/support/allocation_failures.h"

namespace vantlo::test {

namespace {

Argument argument_of(const Parameter& parameter, const std::string& word, Line& line) {
    if (parameter.type == ParameterType::line) return line;
    if (parameter.type == ParameterType::text) return from_utf8(word);
    return std::int32_t{std::stoi(word)};
}

}  // namespace

std::int32_t call_member(const Scenario& scenario, Connection& connection, Line& line,
                         const std::function<void()>& before_call) {
    const Member* const member = find_method(from_utf8(scenario.member));
    if (member == nullptr) throw std::runtime_error(scenario.where() + ": no such member");
    std::vector<Argument> arguments;
    for (std::size_t i = 0; i < scenario.arguments.size(); ++i) {
        arguments.push_back(argument_of(member->parameters()[i], scenario.arguments[i], line));
    }
    Inventory_Class object;
    object.let_DATAType(from_utf8(scenario.data_type));
    object.set_ADOConn(&connection);
    if (before_call) before_call();
    const std::int32_t result = object.call(*member, arguments);
    allocation_plan().armed = false;
    return result;
}

Outcome run_scenario(const Scenario& scenario, TestDatabase& database, Fault fault, const Call& call) {
    database.fill(scenario.given);
    Outcome outcome;
    outcome.recorder.fail_at = fault.at;
    outcome.recorder.fail_with = fault.number;
    {
        const RecordingPlatform platform(outcome.recorder);
        RecordingConnection connection(outcome.recorder, database.component_connection());
        RecordedLine line(outcome.recorder, scenario.line);
        outcome.result = call ? call(scenario, connection, line) : call_member(scenario, connection, line);
        set_project_connection(nullptr);
        if (connection.references != 0) throw std::runtime_error(scenario.where() + ": a reference is left");
    }
    outcome.ledger = read_ledger(database.connection());
    return outcome;
}

}  // namespace vantlo::test
