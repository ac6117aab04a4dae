#pragma once

#include <initializer_list>
#include <memory>

#include "ado/connection.h"
#include "component/member_table.h"

namespace vantlo {

/// The stock service: two properties and, through the member table, 40 posting methods.
///
/// One object belongs to one thread. It keeps no state but the two properties.
///
/// A host may call it again while a method runs: from a property of the line object, from the connection, or while a
/// message is shown. It may set the properties, call methods and destroy the object; the running method keeps what it
/// needs, and runs its next statement through the connection that ADOConn refers to by then.
class Inventory_Class {
public:
    Inventory_Class() : properties_(std::make_shared<Properties>()) {}
    Inventory_Class(const Inventory_Class&) = delete;
    Inventory_Class& operator=(const Inventory_Class&) = delete;
    ~Inventory_Class() = default;

    /// The database kind as it was given: "[Microsoft SQL Server]" or "[Microsoft Access]".
    [[nodiscard]] const Text& DATAType() const { return properties_->data_type; }

    /// Stores the database kind in this object and in the thread's project-wide copy.
    void let_DATAType(Text data_type);

    [[nodiscard]] Connection* ADOConn() const { return properties_->connection.get(); }

    /// Stores a reference to the connection, or nothing, in this object and in the thread's project-wide copy.
    void set_ADOConn(Connection* connection);

    /// Calls a posting method; arguments missing at the end take their defaults.
    ///
    /// Returns  0, or the number of the error that stopped it; 1 if a main-item method finds no header. Statements
    ///          already run stay applied.
    /// Errors   never raised: a failure is the result. All methods but those of assembly and disassembly show it too.
    std::int32_t call(const Member& method, std::span<const Argument> arguments) noexcept;

    /// The same by name. Errors: no_such_member for a name that is no method.
    std::int32_t call(TextView method, std::initializer_list<Argument> arguments) noexcept;

private:
    struct Properties {
        Text data_type;
        ConnectionReference connection;
    };

    std::shared_ptr<Properties> properties_;  // shared with the methods that run, which may outlive the object
};

}  // namespace vantlo
