#pragma once

#include <string>
#include <vector>

#include "ado/native/native_connection.h"

namespace vantlo {

/// A column as the database describes it.
struct ColumnDescription {
    std::string table;
    std::string column;
    std::string type;        ///< with its digits where the engine tells them: `decimal(10,2)`
    std::string characters;  ///< the character set, encoding or collation of its texts; empty if that says nothing
};

/// A name with its ASCII letters in small ones, as names compare.
std::string in_small_letters(std::string name);

/// The columns of the system's tables; none for an engine that does not describe them.
std::vector<ColumnDescription> read_columns(NativeConnection& database);

}  // namespace vantlo
