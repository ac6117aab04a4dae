#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "automation/text.h"

namespace vantlo {

/// A statement in UTF-8, as the native engines take it.
/// Errors   bad_argument for a text with a NUL, where an engine would stop reading, or with half of a surrogate pair.
std::string checked_utf8(TextView statement);

/// The statements of a script given in UTF-8, without the semicolons that end them and the comments before them.
/// Shape    `--` begins a comment anywhere outside quotes; quotes are single or double ones, and PostgreSQL's `$tag$`.
///          `/* */` stays where it is: MariaDB reads what stands between `/*!` and `*/`.
///          After a line `delimiter //` statements end with `//`, as in the `mariadb` client.
std::vector<Text> statements_of(std::string_view script);

}  // namespace vantlo
