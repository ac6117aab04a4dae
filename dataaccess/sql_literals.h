#pragma once

#include "automation/text.h"
#include "automation/variant.h"

namespace vantlo {
inline namespace CorvaneOPT_Function {

/// The text that stands for "no value given" in the optional arguments of GetSqlVal.
inline constexpr TextView not_given = u"[Drop]";

/// Turns a value into the text of an SQL literal.
///
/// Shape    Null and Empty give `null`; numbers their plain text; True `1`, False `0`; a date what Get_DateStr makes of
///          it, the zero date `null`; a text comes trimmed, quotes doubled, in quotes. With `likeMode` the text is
///          escaped for LIKE, and a `wildcard` with a `position` (Start, End, Both; case ignored) puts ` like ` before
///          it and the wildcard at that end. Everything else gives the empty text.
/// Errors   shown to the user under this routine's name; the result is then empty.
/// Example  ` O'Neil ` -> `'O''Neil'`; `50%_off`, true, `%`, `both` -> ` like '%50[%][_]off%'`
Text GetSqlVal(const Variant& value, bool likeMode = false, TextView wildcard = not_given,
               TextView position = not_given);

/// Escapes a text for a LIKE pattern: trimmed, quotes doubled, then `[`, `_` and `%` each put in brackets.
/// Errors   raised to the caller: invalid_use_of_null and the other failures of a conversion to text.
/// Example  `a_b` -> `a[_]b`
Variant Get_LikeStr(const Variant& text);

/// The forms of a date literal that Get_DateStr tells apart; every other number means the whole date and time.
namespace date_form {
inline constexpr std::int16_t whole = 0;
inline constexpr std::int16_t month = 1;
inline constexpr std::int16_t day = 2;
inline constexpr std::int16_t time = 3;
}  // namespace date_form

/// A date in the literal syntax of the project-wide database kind: '…' for SQL Server, #…# for Access, empty otherwise.
///
/// Shape    `yyyy-MM-dd HH:mm:ss` after the year 1900, the ordinary text of a date up to then; forms 1 to 3 read that
///          text back and write the month, the day or the time of day.
/// Errors   shown to the user under this routine's name; the result is then empty.
Text Get_DateStr(const Variant& value, std::int16_t form);

}  // namespace CorvaneOPT_Function
}  // namespace vantlo
