#pragma once

#include <cstdint>

#include "ado/connection.h"

namespace vantlo {

/// The database kinds whose date literals are known.
enum class DatabaseKind { other, sql_server, access };

/// The kind that a `DATAType` text names, compared exactly: "[Microsoft SQL Server]" or "[Microsoft Access]".
DatabaseKind database_kind_of(TextView data_type);

/// The project-wide copy of the two properties: the values set last in any instance of the thread.
///
/// It has no destructor, so that it can be kept in a bare thread slot. The connection is a counted reference; only
/// set_project_connection changes it.
struct ProjectState {
    Connection* connection = nullptr;
    DatabaseKind database_kind = DatabaseKind::other;
};

/// The functions that a shell supplies to the component.
struct ShellHooks {
    /// Makes a recordset that is neither connected nor open. Errors: Failure.
    RecordsetVariable (*create_recordset)();

    /// Shows a NUL-terminated text to the user; returns when the user has dismissed it.
    void (*show_message)(const char16_t* text, const char16_t* title, std::int32_t style) noexcept;

    /// The calling thread's project-wide copy.
    ProjectState& (*project_state)() noexcept;
};

/// Sets the functions for the whole process. The shell does so once, before the first object is made.
void set_shell_hooks(const ShellHooks& hooks);
const ShellHooks& shell_hooks();

/// The calling thread's project-wide copy.
inline ProjectState& project_state() { return shell_hooks().project_state(); }

/// Stores a reference to a connection, or nothing, in the project-wide copy.
void set_project_connection(Connection* connection);

}  // namespace vantlo
