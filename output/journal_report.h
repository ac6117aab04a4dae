#pragma once

#include <string>

#include "automation/message.h"
#include "bookkeeping/journal.h"

namespace vantlo {

namespace words {

// clang-format off
inline constexpr Message no_journal_here = {"{} 没有触发器，无法自己记录流水", "{} has no triggers, so it can keep no journal"};
// clang-format on

}  // namespace words

/// What there is of a journal, with each ledger key that its movements do not explain.
std::string report_of(const JournalStatus& status, Language language);

}  // namespace vantlo
