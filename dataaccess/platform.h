#pragma once

#include <cstdint>

#include "ado/connection.h"

namespace vantlo {

/// The database kinds whose date literals are known.
enum class DatabaseKind { other, sql_server, access };

/// Which kind a `DATAType` text names, compared exactly: "[Microsoft SQL Server]" or "[Microsoft Access]".
DatabaseKind database_kind_of(TextView data_type);

/// The project-wide copy of the two properties: what the most recently set instance of the same thread was given.
///
/// Plain data without a destructor, so that it may live in a bare thread slot. It holds a counted reference to the
/// connection; only set_project_connection changes it.
struct ProjectState {
    Connection* connection = nullptr;
    DatabaseKind database_kind = DatabaseKind::other;
};

/// What the shell under which the component runs supplies.
struct Platform {
    /// Makes a recordset that is neither connected nor open. Errors: Failure.
    RecordsetVariable (*create_recordset)();

    /// Shows a text to the user and returns when it has been dismissed. The texts are NUL-terminated.
    void (*show_message)(const char16_t* text, const char16_t* title, std::int32_t style) noexcept;

    /// The calling thread's project-wide copy.
    ProjectState& (*project_state)() noexcept;
};

/// Sets the platform for the whole process; the shell does so once, before the first object is made.
void set_platform(const Platform& platform);
const Platform& platform();

/// The calling thread's project-wide copy.
inline ProjectState& project_state() { return platform().project_state(); }

/// Puts a connection, or none, into the project-wide copy, counting references.
void set_project_connection(Connection* connection);

}  // namespace vantlo
