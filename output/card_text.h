#pragma once

#include <string>

#include "automation/error_text.h"
#include "reports/stock_card.h"

namespace vantlo {

/// What an entry of a stock card was, for people: its kind of bill, or that it had none.
std::string account_of(const CardEntry& entry, Language language);

/// Who made it: the user and the program, as far as they are known.
std::string by_whom(const CardEntry& entry);

}  // namespace vantlo
