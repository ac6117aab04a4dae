#pragma once

#include <string>

namespace vantlo {

/// A text as a comment of a script: each of its lines begins as one, so that no engine's client takes any for a statement.
/// Example  `B1`, a line feed, `drop table Goods` -> `-- B1`, a line feed, `-- drop table Goods`, a line feed
std::string sql_comment(const std::string& text);

}  // namespace vantlo
