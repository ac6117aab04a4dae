#include "reports/listing.h"

#include <algorithm>

namespace vantlo {

namespace {

bool is_nothing(const Variant& cell) { return cell.is<Null>() || cell.is<Empty>(); }

/// Nothing is less than everything, numbers are compared as numbers, all else as text.
bool is_less(const Variant& left, const Variant& right) {
    if (is_nothing(left) || is_nothing(right)) return is_nothing(left) && !is_nothing(right);
    if (left.is<Text>() || right.is<Text>()) return to_text(left) < to_text(right);
    return to_double(left) < to_double(right);
}

}  // namespace

std::optional<std::size_t> Listing::find(std::string_view column) const {
    const auto found = std::ranges::find(columns, column, &ListColumn::name);
    if (found == columns.end()) return std::nullopt;
    return static_cast<std::size_t>(found - columns.begin());
}

void Listing::drop_last() {
    columns.pop_back();
    for (std::vector<Variant>& row : rows) row.pop_back();
}

void Listing::sort_by(std::size_t column, bool largest_first) {
    std::ranges::stable_sort(rows, [&](const std::vector<Variant>& left, const std::vector<Variant>& right) {
        return largest_first ? is_less(right[column], left[column]) : is_less(left[column], right[column]);
    });
}

}  // namespace vantlo
