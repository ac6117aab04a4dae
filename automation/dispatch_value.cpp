#include "automation/dispatch_value.h"

#include <algorithm>
#include <iterator>

namespace vantlo {

namespace {

/// The system allows one reference to a variant that holds a typed one; a few more do no harm.
constexpr int most_references = 8;

struct TypeRow {
    DispatchType type;
    std::size_t size;  ///< of what a reference to the type points to
};

constexpr std::size_t pointer_size = sizeof(void*);
constexpr std::size_t decimal_size = 16;

// clang-format off
constexpr TypeRow plain_types[] = {
    {DispatchType::empty,        0},
    {DispatchType::null,         0},
    {DispatchType::int16,        2},
    {DispatchType::int32,        4},
    {DispatchType::single,       4},
    {DispatchType::real,         8},
    {DispatchType::currency,     8},
    {DispatchType::date,         8},
    {DispatchType::text,         pointer_size},
    {DispatchType::object,       pointer_size},
    {DispatchType::error,        4},
    {DispatchType::boolean,      2},
    {DispatchType::unknown_object, pointer_size},
    {DispatchType::decimal,      decimal_size},
    {DispatchType::int8,         1},
    {DispatchType::uint8,        1},
    {DispatchType::uint16,       2},
    {DispatchType::uint32,       4},
    {DispatchType::int64,        8},
    {DispatchType::uint64,       8},
    {DispatchType::machine_int,  4},
    {DispatchType::machine_uint, 4},
};
// clang-format on

/// How many bytes a reference to the type points to; 0 for a type that no reference has.
std::size_t size_behind(DispatchType type) {
    if (has_flag(type, DispatchType::array_flag)) return pointer_size;
    const auto* const row = std::ranges::find(plain_types, type, &TypeRow::type);
    return row != std::end(plain_types) ? row->size : 0;
}

/// What a typed reference points to, read once.
DispatchValue value_at(const void* place, DispatchType type, std::size_t size) {
    DispatchValue value;
    if (type == DispatchType::decimal) {
        std::memcpy(&value, place, size);  // a decimal fills a value from its first byte on
    } else {
        std::memcpy(value.content, place, size);
    }
    value.type = type;
    return value;
}

}  // namespace

bool is_plain_type(DispatchType type) {
    return std::ranges::find(plain_types, type, &TypeRow::type) != std::end(plain_types);
}

FollowedValue follow_references(const DispatchValue& passed) {
    DispatchValue value = passed;
    for (int followed = 0; has_flag(value.type, DispatchType::reference_flag); ++followed) {
        if (followed == most_references) return {};
        const DispatchType type = without_flag(value.type, DispatchType::reference_flag);
        const bool to_variant = type == DispatchType::variant;
        const std::size_t size = to_variant ? sizeof value : size_behind(type);
        if (size == 0) return {};
        const auto* const place = value.read<const void*>();
        if (place == nullptr) return {Reach::null_reference, {}};
        if (to_variant) {
            std::memcpy(&value, place, sizeof value);
        } else {
            value = value_at(place, type, size);
        }
    }
    return {Reach::value, value};
}

}  // namespace vantlo
