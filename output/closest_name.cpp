#include "output/closest_name.h"

#include <algorithm>

namespace vantlo {

namespace {

/// How many letters are to be changed, inserted or left out to make one of the other.
std::size_t distance(std::string_view left, std::string_view right) {
    std::vector<std::size_t> row(right.size() + 1);
    for (std::size_t j = 0; j < row.size(); ++j) row[j] = j;
    for (std::size_t i = 1; i <= left.size(); ++i) {
        std::size_t diagonal = row[0];
        row[0] = i;
        for (std::size_t j = 1; j <= right.size(); ++j) {
            const std::size_t changed = diagonal + (left[i - 1] == right[j - 1] ? 0 : 1);
            diagonal = row[j];
            row[j] = std::min({changed, row[j] + 1, row[j - 1] + 1});
        }
    }
    return row.back();
}

}  // namespace

std::string closest_name(std::string_view typed, const std::vector<std::string>& names) {
    std::string closest;
    std::size_t least = std::max<std::size_t>(1, typed.size() / 3) + 1;
    for (const std::string& name : names) {
        const std::size_t letters = distance(typed, name);
        if (letters >= least) continue;
        least = letters;
        closest = name;
    }
    return closest;
}

}  // namespace vantlo
