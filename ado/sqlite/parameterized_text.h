#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace vantlo {

/// A literal of a statement's text.
struct Literal {
    enum class Kind { text, integer, real };

    Kind kind;
    bool is_negative;           ///< of numbers: whether a minus sign belongs to it
    std::string_view spelling;  ///< in the statement: the digits without the sign, the text between its quotes
};

/// A statement's text with parameters in the places of its literals.
/// Example  `… where id='G1' and Status=0` -> shape `… where id=? and Status=0`, literal text `G1`
struct ParameterizedText {
    std::string shape;
    std::vector<Literal> literals;
};

/// Replaces the literals of a statement by parameters. The result goes into `parameterized`, whose memory is reused.
///
/// Shape    Every quoted text and every number becomes a `?`, except that whole numbers from -1 to 1 and those with
///          leading zeros stay: the engine's planner looks at a comparison with -1, 0 or 1.
/// Returns  whether each character was understood. Comments, names in quotes, parameters, semicolons, blobs, whole
///          numbers of more than 18 digits and texts of more than 64 KiB are not, nor is anything else beyond plain SQL.
///          The literals refer to `statement`.
bool parameterize(std::string_view statement, ParameterizedText& parameterized);

/// Whether binding values to the ? marks preserves the statement's meaning.
///
/// It does in four forms, where each mark is an operand of a comparison, an assignment or a value list:
///
///     select … from NAME … [where CONDITION] [order by NAME, …]     update NAME set NAME = SUM, … [where CONDITION]
///     insert into NAME[(NAME, …)] values(SUM, …)                    delete from NAME [where CONDITION]
///
/// CONDITION is comparisons of two SUMs, joined by `and` and `or`; a SUM is names, marks, numbers and `null`, joined by
/// `+ - * /`. There are no parentheses in either, no functions, and no keywords beyond those shown, the joins of a
/// select and `asc` and `desc`.
bool is_understood(std::string_view shape);

}  // namespace vantlo
