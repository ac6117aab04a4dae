#pragma once

#include <span>
#include <string>
#include <vector>

#include "audit/verification.h"

namespace vantlo {

/// What deserves a look, and is no difference by itself.
enum class Remark {
    negative_by_bills,     ///< stock is negative, and the bills say so too
    unbalanced_by_design,  ///< received less issued is not on hand, by what the members do
    several_by_design,     ///< bills with a null in the key: each posting of such a line makes a row of its own
    keys_look_alike,       ///< bills wrote one thing in two ways
    lost_bill,             ///< the history knows it, and the tables do not
    unknown_kind,
    headless_lines,
    not_in_journal,    ///< rows that are not the sum of their movements
    empty_literal,     ///< a column whose values the component writes as nothing: its statement fails
    loses_digits,      ///< a column that does not keep four decimals
    loses_characters,  ///< a text column without Chinese characters
};

/// The name by which other programs know a remark. Example: `lost-bill`
std::string_view name_of(Remark remark);

struct Note {
    Remark remark;
    std::string subject;  ///< a key, a bill or a column
};

/// The notes of a verified ledger, in the order of the remarks.
std::vector<Note> notes_of(const Verification& verification);

/// Columns on which the component's statements fail or lose something.
std::vector<Note> column_notes(std::span<const ColumnDescription> columns);

}  // namespace vantlo
