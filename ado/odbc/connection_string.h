#pragma once

#include <string>
#include <string_view>

namespace vantlo {

/// A text in which the passwords of an ODBC connection string, wherever they occur, are replaced by three asterisks.
/// Shape    `KEY=value;` pairs, the keys PWD, Passwd, Password and SSLPwd in any case; a value in braces ends at the closing
///          brace, and two of those stand for one.
std::string without_password(std::string text, std::string_view connection_string);

/// Whether an ODBC connection string has a password that is not empty.
bool has_password(std::string_view connection_string);

/// Whether a password of an ODBC connection string has a closing brace in it.
bool has_closing_brace(std::string_view connection_string);

/// The connection string with a password: passwords that are empty go, since some drivers take the first they find.
/// Source   FreeTDS reads a value in braces only if a semicolon follows it.
std::string with_password(std::string_view connection_string, std::string_view password);

/// The connection string without braces around values that need none; the driver's name and passwords keep theirs.
/// Source   psqlodbc takes the braces of `Database={shop}` for a part of the name.
std::string without_needless_braces(std::string_view connection_string);

}  // namespace vantlo
