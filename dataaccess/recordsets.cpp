#include "dataaccess/recordsets.h"

#include "automation/error.h"
#include "dataaccess/shell_hooks.h"
#include "dataaccess/trap.h"

namespace vantlo {

namespace {

// ADO's numbers.
constexpr std::int32_t client_side_cursor = 3;
constexpr std::int32_t dynamic_cursor = 2;
constexpr std::int32_t state_closed = 0;

}  // namespace

Recordset& require_set(const RecordsetVariable& variable) {
    if (variable == nullptr) throw Failure(error::object_not_set);
    return *variable;
}

inline namespace CorvaneOPT_Function {

void Open_Recordset(RecordsetVariable& rs) {
    run_helper(u"Open_Recordset", [&] {
        rs = shell_hooks().create_recordset();
        // Held, since the recordset may call the host, which may set another connection.
        const ConnectionReference connection(project_state().connection);
        rs->set_active_connection(connection.get());
        rs->set_cursor_location(client_side_cursor);
        rs->set_cursor_type(dynamic_cursor);
    });
}

void Close_Recordset(RecordsetVariable& rs) {
    try {
        if (require_set(rs).state() != state_closed) rs->close();
    } catch (...) {
        // The bill is posted by now: a recordset that cannot be closed is released all the same.
    }
    rs.reset();
}

}  // namespace CorvaneOPT_Function
}  // namespace vantlo
