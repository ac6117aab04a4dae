#pragma once

#include <string>
#include <string_view>

namespace vantlo {

/// A text in which the passwords of an ODBC connection string, wherever they occur, are replaced by three asterisks.
/// Shape    `KEY=value;` pairs, the keys PWD and Password in any case; a value in braces ends at the closing brace, and
///          two of those stand for one.
std::string without_password(std::string text, std::string_view connection_string);

/// Whether an ODBC connection string has a password that is not empty.
bool has_password(std::string_view connection_string);

}  // namespace vantlo
