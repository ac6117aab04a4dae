#pragma once

#include <span>
#include <vector>

#include "bills/bill.h"

namespace vantlo {

/// The ids of all goods that bills name, in header and lines; each once, in order, without the blanks around it.
std::vector<Text> goods_of(std::span<const Bill* const> bills);

/// Texts as the literals of a list. Example  `G1`, `O'2` -> `'G1','O''2'`
Text literal_list(std::span<const Text> texts);

}  // namespace vantlo
