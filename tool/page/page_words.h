#pragma once

#include <span>
#include <string_view>

#include "automation/message.h"

namespace vantlo {

/// A text of the page by the name that its template and its script know it by.
struct PageWord {
    std::string_view name;
    Message wording;
};

std::span<const PageWord> page_words();

/// The text of that name in the language.
/// Errors   std::logic_error if there is none.
std::string_view page_word(std::string_view name, Language language);

}  // namespace vantlo
