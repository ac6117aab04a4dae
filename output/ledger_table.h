#pragma once

#include <string>

#include "reports/listing.h"

namespace vantlo {

/// An id with the name that goes with it, in UTF-8.
std::string named(const Text& id, const Text& name);

/// The list of list_stock as people read it: names beside ids, and the goods' units where there are several.
Listing ledger_for_people(const Listing& stock);

}  // namespace vantlo
