#pragma once

#include "automation/text.h"
#include "automation/variant.h"

namespace vantlo {
inline namespace CorvaneOPT_Function {

/// The default of the optional texts of GetSqlVal: no value was given.
inline constexpr TextView not_given = u"[Drop]";

/// Converts a value to an SQL literal.
///
/// Shape    Null, Empty and the zero date give `null`; numbers their plain text; True `1`, False `0`; other dates the text
///          of Get_DateStr. A text is trimmed and quoted, its quotes doubled. With `likeMode` it is escaped for LIKE; a
///          `wildcard` and a `position` (Start, End, Both, in any case) add ` like ` and the wildcard at that end. Values
///          of all other types give the empty text.
/// Errors   shown to the user under this routine's name; the result is then empty.
/// Example  ` O'Neil ` -> `'O''Neil'`; `50%_off`, true, `%`, `both` -> ` like '%50[%][_]off%'`
Text GetSqlVal(const Variant& value, bool likeMode = false, TextView wildcard = not_given,
               TextView position = not_given);

/// Escapes a text for a LIKE pattern: trimmed, quotes doubled, then `[`, `_` and `%` each put in brackets.
/// Errors   raised to the caller: those of a conversion to text.
/// Example  `a_b` -> `a[_]b`
Variant Get_LikeStr(const Variant& text);

/// The forms of a date literal. Every other number means the whole date and time.
namespace date_form {
inline constexpr std::int16_t whole = 0;
inline constexpr std::int16_t month = 1;
inline constexpr std::int16_t day = 2;
inline constexpr std::int16_t time = 3;
}  // namespace date_form

/// A date in the literal syntax of the project-wide database kind: '…' for SQL Server, #…# for Access, empty otherwise.
///
/// Shape    `yyyy-MM-dd HH:mm:ss` after the year 1900, the ordinary text up to then. Forms 1 to 3 read this text as a
///          date again and write its month, day or time.
/// Errors   shown to the user under this routine's name; the result is then empty.
Text Get_DateStr(const Variant& value, std::int16_t form);

}  // namespace CorvaneOPT_Function
}  // namespace vantlo
