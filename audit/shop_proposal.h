#pragma once

#include <string>

#include "ado/native/native_connection.h"
#include "automation/error_text.h"

namespace vantlo {

/// A description of the bill tables that the database seems to have, to be completed by people: see docs/adopting.md.
///
/// Tables and columns are recognized by their names, English or Chinese. What is not, or could be several, is `"?"`; so is
/// the kind of every value by which headers differ. A description with `"?"` in it is refused when it is to be kept.
/// Returns  its JSON; empty if no table looks like one of bill lines.
std::string propose_description(NativeConnection& database, Language language);

}  // namespace vantlo
