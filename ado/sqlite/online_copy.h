#pragma once

#include <string>

namespace vantlo {

/// Copies an SQLite database into a file that is not there yet, while others may go on reading and writing it: the copy is
/// the database as it was at one moment, between two transactions. It needs no write-ahead log beside it.
/// Errors   Failure; the file may then be there in part.
void copy_sqlite_database(const std::string& from, const std::string& to);

}  // namespace vantlo
