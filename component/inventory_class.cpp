#include "component/inventory_class.h"

#include <vector>

#include "automation/error.h"
#include "dataaccess/platform.h"

namespace vantlo {

namespace {

/// Whether an argument is of the sort that its parameter takes: a line for a line, a value for everything else.
bool fits(const Parameter& parameter, const Argument& argument) {
    return (parameter.type == ParameterType::line) == (argument.line != nullptr);
}

/// The arguments with the defaults of those that are missing at the end.
/// Errors   wrong_argument_count, or object_required where a line and a value are mixed up.
std::vector<Argument> completed(std::span<const Parameter> parameters, std::span<const Argument> arguments) {
    if (arguments.size() > parameters.size()) throw Failure(error::wrong_argument_count);
    std::vector<Argument> complete;
    complete.reserve(parameters.size());
    for (std::size_t i = 0; i < parameters.size(); ++i) {
        if (i < arguments.size()) {
            if (!fits(parameters[i], arguments[i])) throw Failure(error::object_required);
            complete.push_back(arguments[i]);
        } else if (parameters[i].optional) {
            complete.emplace_back(parameters[i].default_value());
        } else {
            throw Failure(error::wrong_argument_count);
        }
    }
    return complete;
}

}  // namespace

void Inventory_Class::let_DATAType(Text data_type) {
    data_type_ = std::move(data_type);
    project_state().database_kind = database_kind_of(data_type_);
}

void Inventory_Class::set_ADOConn(Connection* connection) {
    connection_ = ConnectionReference(connection);
    set_project_connection(connection);
}

std::int32_t Inventory_Class::call(const Member& method, std::span<const Argument> arguments) noexcept {
    return run_trapped(method.name, method.on_error, [&] {
        const std::vector<Argument> complete = completed(method.parameters(), arguments);
        return method.posting(connection_.get(), complete);
    });
}

std::int32_t Inventory_Class::call(TextView method, std::initializer_list<Argument> arguments) noexcept {
    const Member* const member = find_method(method);
    if (member == nullptr) return error::no_such_member;
    return call(*member, std::span(arguments.begin(), arguments.size()));
}

}  // namespace vantlo
