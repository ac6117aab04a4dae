#pragma once

#include "bills/bill.h"

namespace vantlo {

/// What a host did with a bill.
namespace history_action {
inline constexpr TextView save = u"save";
inline constexpr TextView reverse = u"take back";
}  // namespace history_action

/// A bill as JSON, for the history: a bill that is taken back is stored nowhere else.
Text bill_content(const Bill& bill);

/// The bill that bill_content wrote, under its kind and id.
/// Errors   std::runtime_error for a text that is none of a bill of this kind.
Bill bill_from_content(const BillKind& kind, const Text& id, const Text& content);

}  // namespace vantlo
