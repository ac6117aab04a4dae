#pragma once

#include <algorithm>
#include <string>
#include <string_view>
#include <vector>

namespace vantlo {

/// A value as a file holds it, with where it stands: a JSON value, or the cell of a table.
struct InputValue {
    enum class Kind {
        null,
        boolean,
        number,
        text,
        list,
        object,
        cell,         ///< typed by people: what it is, its field says
        number_cell,  ///< a number of a sheet, with a point
        date_cell,    ///< a date of a sheet, as date_from_text reads it
        error_cell,   ///< an error of a sheet, such as #N/A
    };

    Kind kind = Kind::null;
    std::size_t offset = 0;
    std::string text;  ///< of a text or a cell; of a number and a boolean, as the file spells it
    std::string name;  ///< of a member of an object
    std::size_t name_offset = 0;
    std::vector<InputValue> children{};  ///< of a list or an object

    /// The member of that name; null if there is none.
    [[nodiscard]] const InputValue* member(std::string_view wanted) const {
        const auto found = std::ranges::find(children, wanted, &InputValue::name);
        return found == children.end() ? nullptr : &*found;
    }
};

}  // namespace vantlo
