#pragma once

#include <string>
#include <vector>

#include "audit/checks.h"
#include "automation/error_text.h"

namespace vantlo {

/// The report of a comparison: the causes in order, each with its rows and the bills that touch them.
std::string report_of(const std::vector<Finding>& findings, const BillTimeline& timeline, std::size_t ledger_rows,
                      Language language);

/// The notes below the report; empty if there are none.
std::string report_of(const std::vector<Note>& notes, Language language);

/// A cause in a few words.
std::string cause_text(Cause cause, Language language);

/// The same for RepairJournal: English whatever the user's language, so that one query finds a cause.
std::string cause_in_journal(Cause cause);

/// What RepairJournal calls the undoing of a repair. Example: `repair 3 undone`
std::string undo_in_journal(std::int64_t number);

}  // namespace vantlo
