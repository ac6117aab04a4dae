#pragma once

#include <string>
#include <string_view>

namespace vantlo {

/// Text as automation hosts and databases see it: UTF-16 code units, nothing implied about their validity.
using Text = std::u16string;
using TextView = std::u16string_view;

/// Text without the blanks (U+0020 only) at either end.
/// Source   automation's Trim: tabs, ideographic blanks and zero-width characters stay.
TextView trim_blanks(TextView text);

/// Every occurrence of `from` replaced by `to`, from left to right, code units compared exactly.
Text replace_all(TextView text, char16_t from, TextView to);

/// Whether two texts are equal when ASCII letters are compared without regard to case.
bool equal_ignoring_case(TextView left, TextView right);

/// Whether every surrogate of the text belongs to a pair.
bool is_well_formed(TextView text);

/// UTF-16 to UTF-8. Errors: a lone surrogate becomes U+FFFD.
std::string to_utf8(TextView text);

/// UTF-8 to UTF-16. Errors: bytes that are no UTF-8 become U+FFFD, one for each byte.
Text from_utf8(std::string_view bytes);

}  // namespace vantlo
