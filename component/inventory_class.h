#pragma once

#include <initializer_list>

#include "component/member_table.h"

namespace vantlo {

/// The stock service: two properties and, through the member table, 40 posting methods.
///
/// One object belongs to one thread. It keeps nothing between calls but the two properties.
class Inventory_Class {
public:
    /// The database kind as it was given: "[Microsoft SQL Server]" or "[Microsoft Access]".
    [[nodiscard]] const Text& DATAType() const { return data_type_; }

    /// Keeps the database kind in this object and in the thread's project-wide copy.
    void let_DATAType(Text data_type);

    [[nodiscard]] Connection* ADOConn() const { return connection_.get(); }

    /// Keeps a reference to the connection, or none, in this object and in the thread's project-wide copy.
    void set_ADOConn(Connection* connection);

    /// Calls a posting method; arguments missing at the end take their defaults.
    ///
    /// Returns  0, or the number of the error that stopped it; 1 where a main item's bill has no header. Statements
    ///          already run stay applied.
    /// Errors   never raised: a failure is the result, and all but the assembly and disassembly methods show it.
    std::int32_t call(const Member& method, std::span<const Argument> arguments) noexcept;

    /// The same by name. Errors: no_such_member for a name that is no method.
    std::int32_t call(TextView method, std::initializer_list<Argument> arguments) noexcept;

private:
    Text data_type_;
    ConnectionReference connection_;
};

}  // namespace vantlo
