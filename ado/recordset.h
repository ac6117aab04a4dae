#pragma once

#include <cstdint>
#include <memory>

#include "automation/text.h"
#include "automation/variant.h"

namespace vantlo {

class Connection;

/// The rows of a result and a cursor on one of them: what this system uses of an ADO Recordset, and nothing more.
///
/// Errors   every call may raise a Failure; eof, move_next, field and close answer object_closed on a closed recordset.
class Recordset {
public:
    Recordset() = default;
    Recordset(const Recordset&) = delete;
    Recordset& operator=(const Recordset&) = delete;
    virtual ~Recordset() = default;  // without closing it: releasing a reference does not close either

    /// Sets the connection that `open` uses. A null connection is legal here and fails in `open`.
    virtual void set_active_connection(Connection* connection) = 0;
    virtual void set_cursor_location(std::int32_t location) = 0;
    virtual void set_cursor_type(std::int32_t type) = 0;

    /// Runs a statement on the active connection and stands on the first row of its result.
    /// Errors   no_connection without a connection, object_open if it is open already.
    virtual void open(TextView source) = 0;

    [[nodiscard]] virtual bool eof() = 0;

    /// Errors   no_current_row, if it is at the end.
    virtual void move_next() = 0;

    /// The value of the current row's field, the name compared without regard to case.
    /// Errors   no_such_item for an unknown name, no_current_row at the end.
    [[nodiscard]] virtual Variant field(TextView name) = 0;

    /// 0 when closed, 1 when open.
    [[nodiscard]] virtual std::int32_t state() = 0;

    /// Errors   object_closed if it is not open.
    virtual void close() = 0;
};

/// A recordset variable: empty until something is assigned to it; assigning releases what it held.
using RecordsetVariable = std::unique_ptr<Recordset>;

}  // namespace vantlo
