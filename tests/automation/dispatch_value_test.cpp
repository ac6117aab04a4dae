#include "automation/dispatch_value.h"

#include <doctest/doctest.h>

#include <array>

namespace vantlo::test {
namespace {

DispatchValue reference(DispatchType type, const void* target) {
    DispatchValue value;
    value.type = type | DispatchType::reference_flag;
    value.write(target);
    return value;
}

DispatchValue int16(std::int16_t number) {
    DispatchValue value;
    value.type = DispatchType::int16;
    value.write(number);
    return value;
}

TEST_CASE("A value that is no reference is reached as it stands, of whatever type") {
    DispatchValue odd = int16(7);
    odd.type = static_cast<DispatchType>(36);
    for (const DispatchValue& value : {int16(7), odd}) {
        const FollowedValue followed = follow_references(value);
        CHECK(followed.reach == Reach::value);
        CHECK(followed.value.type == value.type);
        CHECK(followed.value.read<std::int16_t>() == 7);
    }
}

TEST_CASE("What a typed reference points to is read in its type's length, a decimal from its first byte on") {
    const std::int16_t number = -3;
    FollowedValue followed = follow_references(reference(DispatchType::int16, &number));
    CHECK(followed.reach == Reach::value);
    CHECK(followed.value.type == DispatchType::int16);
    CHECK(followed.value.read<std::int16_t>() == -3);

    alignas(8) std::array<std::byte, 16> decimal{};
    decimal[2] = std::byte{4};  // its scale
    decimal[8] = std::byte{9};  // its lowest digit
    followed = follow_references(reference(DispatchType::decimal, decimal.data()));
    CHECK(followed.value.type == DispatchType::decimal);
    CHECK(followed.value.reserved[0] == 4);
    CHECK(followed.value.read<std::uint64_t>() == 9);

    const void* array = &decimal;
    followed = follow_references(reference(DispatchType::int16 | DispatchType::array_flag, &array));
    CHECK(followed.value.type == (DispatchType::int16 | DispatchType::array_flag));
    CHECK(followed.value.read<const void*>() == array);
}

TEST_CASE("A null pointer, a type that no reference has, and a reference to itself lead to no value") {
    CHECK(follow_references(reference(DispatchType::int16, nullptr)).reach == Reach::null_reference);
    CHECK(follow_references(reference(DispatchType::variant, nullptr)).reach == Reach::null_reference);
    const int target = 0;
    CHECK(follow_references(reference(DispatchType::empty, &target)).reach == Reach::no_value);
    CHECK(follow_references(reference(static_cast<DispatchType>(36), &target)).reach == Reach::no_value);
    DispatchValue self;
    self = reference(DispatchType::variant, &self);
    CHECK(follow_references(self).reach == Reach::no_value);
}

TEST_CASE("Eight references to variants are followed, nine are not") {
    std::array<DispatchValue, 10> chain;
    chain[0] = int16(7);
    for (std::size_t i = 1; i < chain.size(); ++i) chain[i] = reference(DispatchType::variant, &chain[i - 1]);
    CHECK(follow_references(chain[8]).reach == Reach::value);
    CHECK(follow_references(chain[8]).value.read<std::int16_t>() == 7);
    CHECK(follow_references(chain[9]).reach == Reach::no_value);
}

TEST_CASE("Plain types are those that a value itself can have") {
    CHECK(is_plain_type(DispatchType::text));
    CHECK(is_plain_type(DispatchType::empty));
    CHECK_FALSE(is_plain_type(DispatchType::variant));
    CHECK_FALSE(is_plain_type(DispatchType::text | DispatchType::reference_flag));
    CHECK(is_object(DispatchType::object));
    CHECK(is_object(DispatchType::unknown_object));
    CHECK_FALSE(is_object(DispatchType::text));
}

}  // namespace
}  // namespace vantlo::test
