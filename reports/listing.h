#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "automation/variant.h"

namespace vantlo {

/// What the cells of a column hold: whoever shows them aligns and words them by it.
enum class CellType { text, number, quantity, time };

struct ListColumn {
    std::string_view name;  ///< English, as programs read it
    CellType type = CellType::text;
};

/// A list of anything: named columns, and rows with a cell for each. A cell is Null or Empty where there is nothing.
struct Listing {
    std::vector<ListColumn> columns;
    std::vector<std::vector<Variant>> rows;

    /// The place of a column; nothing if there is none of that name.
    [[nodiscard]] std::optional<std::size_t> find(std::string_view column) const;

    /// Takes the last column away.
    void drop_last();

    /// Sorts the rows by a column, the largest first if that is wanted; rows that are equal in it keep their order.
    void sort_by(std::size_t column, bool largest_first);
};

}  // namespace vantlo
