#pragma once

#include <string>

namespace vantlo {

/// A field of a CSV record.
/// Source   RFC 4180: a field with a comma, a quote or a line end stands in quotes, quotes doubled.
std::string csv_field(const std::string& text);

}  // namespace vantlo
