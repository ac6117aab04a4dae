#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <type_traits>

namespace vantlo {

/// The types that a value in an automation call can have, under the system's numbers.
enum class DispatchType : std::uint16_t {
    empty = 0,
    null = 1,
    int16 = 2,
    int32 = 3,
    single = 4,
    real = 5,
    currency = 6,
    date = 7,
    text = 8,
    object = 9,
    error = 10,
    boolean = 11,
    variant = 12,
    unknown_object = 13,
    decimal = 14,
    int8 = 16,
    uint8 = 17,
    uint16 = 18,
    uint32 = 19,
    int64 = 20,
    uint64 = 21,
    machine_int = 22,
    machine_uint = 23,
    array_flag = 0x2000,
    reference_flag = 0x4000,
};

constexpr DispatchType operator|(DispatchType left, DispatchType right) {
    return static_cast<DispatchType>(static_cast<std::uint16_t>(left) | static_cast<std::uint16_t>(right));
}
constexpr bool has_flag(DispatchType type, DispatchType flag) {
    return (static_cast<std::uint16_t>(type) & static_cast<std::uint16_t>(flag)) != 0;
}
constexpr DispatchType without_flag(DispatchType type, DispatchType flag) {
    return static_cast<DispatchType>(static_cast<std::uint16_t>(type) & ~static_cast<std::uint16_t>(flag));
}

/// A value as automation calls carry it: the system's VARIANT, byte for byte, without the system's header.
///
/// What a caller passes is followed and refused in this form, by code that runs on every platform, before any function of
/// the system touches it. It owns nothing, and may lie where the system's own structure does.
struct [[gnu::may_alias]] DispatchValue {
    DispatchType type = DispatchType::empty;
    std::uint16_t reserved[3] = {};
    alignas(8) std::byte content[2 * sizeof(void*)] = {};

    /// What the content begins with. Example: `read<std::int16_t>()` of an int16.
    template <typename Type>
    [[nodiscard]] Type read() const {
        static_assert(std::is_trivially_copyable_v<Type> && sizeof(Type) <= sizeof content);
        Type value;
        std::memcpy(&value, content, sizeof value);
        return value;
    }
    template <typename Type>
    void write(Type value) {
        static_assert(std::is_trivially_copyable_v<Type> && sizeof(Type) <= sizeof content);
        std::memcpy(content, &value, sizeof value);
    }
};

/// Whether a value itself, no reference and no array, can have the type.
bool is_plain_type(DispatchType type);

constexpr bool is_object(DispatchType type) {
    return type == DispatchType::object || type == DispatchType::unknown_object;
}

/// How the search for the value behind references ended.
enum class Reach { value, null_reference, no_value };

struct FollowedValue {
    Reach reach = Reach::no_value;
    DispatchValue value;  ///< without a reference; only where one was reached
};

/// The value behind a value's references. Nothing is counted or copied: what it points to stays the caller's.
///
/// Returns  a value that is no reference, as it stands; null_reference where a pointer is null; no_value for a reference to
///          a type that no value has, and after more references than any host makes, which one to itself is.
FollowedValue follow_references(const DispatchValue& passed);

}  // namespace vantlo
