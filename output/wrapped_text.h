#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace vantlo {

/// A text in lines of at most `width` terminal cells, broken at blanks and where Chinese may be broken; what is longer
/// without such a place is cut. At least one line. Blanks at the end of a line are dropped.
/// Source   Unicode Annex 14, except that letters, digits and signs of ASCII stay together: names of options and files.
std::vector<std::string> wrapped(std::string_view text, std::size_t width);

/// The same as one text whose lines after the first begin with blanks. `width` counts these as well.
std::string wrapped_text(std::string_view text, std::size_t width, std::size_t indent);

}  // namespace vantlo
