#pragma once

#include "automation/error.h"

namespace vantlo {

enum class Language { chinese, english };

/// The standard message text of an error number, NUL-terminated and static: it can be shown when memory is short.
///
/// Returns  one text for each number of the table in error_text.cpp, a general one for every other number.
const char16_t* standard_text(ErrorNumber number, Language language = Language::chinese) noexcept;

/// What a failure says of itself, or where that is nothing, the standard text of its number; in UTF-8.
std::string account_of(const Failure& failure, Language language);

}  // namespace vantlo
