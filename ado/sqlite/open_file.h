#pragma once

#include <string>

#include "ado/sqlite/sqlite_handle.h"

namespace vantlo {

/// Opens a database file, with the engine's flags. Errors: Failure.
SqliteHandle open_file(const std::string& file, int flags);

/// Opens a database file that need not be writable, nor its folder. Without those rights a file that nobody else has open
/// is taken for one that nobody changes meanwhile.
/// Errors   Failure, also where others have it open and their log cannot be read without the right to write it.
SqliteHandle open_file_for_reading(const std::string& file);

}  // namespace vantlo
