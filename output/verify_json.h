#pragma once

#include <string>

#include "audit/checks.h"

namespace vantlo {

/// What verify found, as docs/verify.schema.json describes it. Names are English in every language.
std::string verify_json(const Verification& verification);

}  // namespace vantlo
