#pragma once

#include <optional>

#include "automation/variant.h"
#include "bills/bill_kinds.h"

namespace vantlo {

/// A field that holds what its column is not for: a text as a quantity, NaN, a number beyond its range, binary data.
struct BrokenValue {
    Text table;
    Text row;  ///< what tells the row: a key, a bill and its line
    Text column;
    Variant value;

    friend bool operator==(const BrokenValue&, const BrokenValue&) = default;
};

/// A value as a text, null as the empty one; nothing for what has no text.
std::optional<Text> text_or_nothing(const Variant& value);

/// Whether a value is one of the type, or null.
bool is_of_type(const Variant& value, ColumnType type);

}  // namespace vantlo
