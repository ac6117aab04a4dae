#include "component/inventory_class.h"

#include <vector>

#include "automation/error.h"
#include "dataaccess/shell_hooks.h"
#include "posting/posting_frame.h"

namespace vantlo {

namespace {

/// Errors   wrong_argument_count for too many or too few, object_required for a value in place of a line or a line in
///          place of a value.
void check(std::span<const Parameter> parameters, std::span<const Argument> arguments) {
    if (arguments.size() > parameters.size()) throw Failure(error::wrong_argument_count);
    for (std::size_t i = 0; i < parameters.size(); ++i) {
        if (i >= arguments.size() && !parameters[i].optional) throw Failure(error::wrong_argument_count);
        const bool takes_line = parameters[i].type == ParameterType::line;
        const bool given_line = i < arguments.size() && arguments[i].line != nullptr;
        if (takes_line != given_line) throw Failure(error::object_required);
    }
}

/// The arguments, followed by the defaults of those that are missing at the end.
std::vector<Argument> completed(std::span<const Parameter> parameters, std::span<const Argument> arguments) {
    std::vector<Argument> complete(arguments.begin(), arguments.end());
    for (const Parameter& missing : parameters.subspan(arguments.size())) {
        complete.emplace_back(missing.default_value());
    }
    return complete;
}

}  // namespace

void Inventory_Class::let_DATAType(Text data_type) {
    properties_->data_type = std::move(data_type);
    project_state().database_kind = database_kind_of(properties_->data_type);
}

void Inventory_Class::set_ADOConn(Connection* connection) {
    // Releasing the previous connection may call the host, which may set another one or destroy this object.
    const std::shared_ptr<Properties> properties = properties_;
    const ConnectionReference given(connection);
    properties->connection = given;
    set_project_connection(connection);
}

std::int32_t Inventory_Class::call(const Member& method, std::span<const Argument> arguments) noexcept {
    const std::shared_ptr<const Properties> properties = properties_;
    PostingFrame frame(properties->connection);
    return run_trapped(method.name, method.on_error, [&] {
        const std::span<const Parameter> parameters = method.parameters();
        check(parameters, arguments);
        if (arguments.size() == parameters.size()) return method.posting(frame, arguments);
        return method.posting(frame, completed(parameters, arguments));
    });
}

std::int32_t Inventory_Class::call(TextView method, std::initializer_list<Argument> arguments) noexcept {
    const Member* const member = find_method(method);
    if (member == nullptr) return error::no_such_member;
    return call(*member, std::span(arguments.begin(), arguments.size()));
}

}  // namespace vantlo
