#include "audit/broken_value.h"

#include <cmath>

#include "automation/error.h"

namespace vantlo {

namespace {

template <typename Convert>
bool converts(const Convert& convert) {
    try {
        convert();
        return true;
    } catch (const Failure&) {
        return false;
    }
}

}  // namespace

std::optional<Text> text_or_nothing(const Variant& value) {
    if (value.is<Null>()) return Text();
    try {
        return to_text(value);
    } catch (const Failure&) {
        return std::nullopt;
    }
}

bool is_of_type(const Variant& value, ColumnType type) {
    if (value.is<Null>()) return true;
    switch (type) {
        case ColumnType::text: return text_or_nothing(value).has_value();
        case ColumnType::single: {
            double number = 0;
            return converts([&] { number = to_double(value); }) && std::isfinite(number);
        }
        case ColumnType::whole_number: return converts([&] { to_long(value); });
        case ColumnType::date: break;  // nothing is posted by it
    }
    return true;
}

}  // namespace vantlo
