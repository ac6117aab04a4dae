#pragma once

#include "automation/error.h"

namespace vantlo {

enum class Language { chinese, english };

/// The standard message text of an error number, NUL-terminated and static: it can be shown when memory is short.
///
/// Returns  one text for each number of the table in error_text.cpp, a general one for every other number.
const char16_t* standard_text(ErrorNumber number, Language language = Language::chinese) noexcept;

}  // namespace vantlo
