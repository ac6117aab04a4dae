#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace vantlo {

/// The name that was most likely meant: the one that the fewest letters tell from what was typed.
/// Returns  nothing (empty) if more than a third of the letters differ from every name.
std::string closest_name(std::string_view typed, const std::vector<std::string>& names);

}  // namespace vantlo
