#pragma once

#include <string>
#include <vector>

#include "audit/checks.h"
#include "automation/error_text.h"

namespace vantlo {

/// The report of a comparison: the causes in order, each with its rows and the bills that touch them.
std::string report_of(const std::vector<Finding>& findings, const BillTimeline& timeline, std::size_t ledger_rows,
                      Language language);

/// The notes beside the report; empty if there are none.
std::string report_of(const std::vector<Note>& notes, Language language);

/// What the witnesses at hand cannot tell of a difference: a paragraph with an empty line before it, or nothing.
std::string what_is_unknown(const Verification& verification, Language language);

/// A value that its column is not for, as what it is. Example: `the text 'two'`
std::string value_text(const Variant& value, Language language);

/// The same, with its table, row and column.
std::string broken_value_text(const BrokenValue& value, Language language);

/// A cause in a few words.
std::string cause_text(Cause cause, Language language);

/// The same for RepairJournal: English whatever the user's language, so that one query finds a cause.
std::string cause_in_journal(Cause cause);

/// What RepairJournal calls the undoing of a repair. Example: `repair 3 undone`
std::string undo_in_journal(std::int64_t number);

}  // namespace vantlo
