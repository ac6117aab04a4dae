#pragma once

#include <optional>
#include <string>

#include "bills/bill.h"

namespace vantlo {

/// What a host did with a bill.
namespace history_action {
inline constexpr TextView save = u"save";
inline constexpr TextView reverse = u"take back";
}  // namespace history_action

/// A bill as JSON, for the history: a bill that is taken back is stored nowhere else.
Text bill_content(const Bill& bill);

/// The bill that bill_content wrote, under its kind and id. Returns nothing for a text that is none of a bill of this kind;
/// `account` then says why, in the parser's words.
std::optional<Bill> bill_from_content(const BillKind& kind, const Text& id, const Text& content, std::string& account);

}  // namespace vantlo
