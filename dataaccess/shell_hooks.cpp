#include "dataaccess/shell_hooks.h"

#include "ado/client_recordset.h"

namespace vantlo {

namespace {

RecordsetVariable create_native_recordset() { return make_client_recordset(); }

void show_nothing(const char16_t*, const char16_t*, std::int32_t) noexcept {}

ProjectState& native_project_state() noexcept {
    thread_local constinit ProjectState state;
    return state;
}

/// The default: native recordsets, no messages, thread-local state.
ShellHooks current_hooks{create_native_recordset, show_nothing, native_project_state};

}  // namespace

DatabaseKind database_kind_of(TextView data_type) {
    if (data_type == u"[Microsoft SQL Server]") return DatabaseKind::sql_server;
    if (data_type == u"[Microsoft Access]") return DatabaseKind::access;
    return DatabaseKind::other;
}

void set_shell_hooks(const ShellHooks& hooks) { current_hooks = hooks; }

const ShellHooks& shell_hooks() { return current_hooks; }

void set_project_connection(Connection* connection) {
    Connection*& held = project_state().connection;
    if (connection != nullptr) connection->add_reference();
    Connection* const previous = std::exchange(held, connection);
    if (previous != nullptr) previous->release();
}

}  // namespace vantlo
