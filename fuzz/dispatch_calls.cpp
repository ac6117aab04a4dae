// Whether every call through automation, however wrong, ends in arguments or in the misuse that the rules name, without a
// read beyond what the caller passed. An input is what DispatchCall makes a call of.

#include <string>

#include "fuzz/require.h"
#include "support/dispatch_call.h"

namespace {

using namespace vantlo;
using fuzz::require;

std::string told(const Misuse& misuse) {
    return "error " + std::to_string(misuse.number) + " at " + std::to_string(misuse.place);
}

void require_same_value(const DispatchValue& value, const DispatchValue& expected) {
    require(value.type == expected.type, "a value of another type");
    if (value.type == DispatchType::decimal) {
        require(std::memcmp(&value.reserved, &expected.reserved, sizeof value.reserved) == 0, "another decimal");
    }
    const std::size_t size = value.type == DispatchType::decimal ? 8 : test::DispatchCall::size_of(value.type);
    require(std::memcmp(value.content, expected.content, size) == 0, "another value");
}

void check_method(const test::DispatchCall& call) {
    const test::ExpectedArguments expected = test::expected_arguments(call);
    try {
        const std::vector<GivenArgument> given = arguments_for(call.member().parameters(), call.passed());
        require(!expected.misuse, "taken in spite of " + (expected.misuse ? told(*expected.misuse) : ""));
        require(given.size() == expected.places.size(), "as many arguments as parameters");
        for (std::size_t i = 0; i < given.size(); ++i) {
            require(given[i].is_left_out != expected.places[i].has_value(), "left out or not");
            if (given[i].is_left_out) continue;
            require(given[i].place == *expected.places[i], "another argument's place");
            require_same_value(given[i].value, call.meant_by(*expected.places[i]).value);
        }
    } catch (const Misuse& misuse) {
        require(expected.misuse && expected.misuse->number == misuse.number && expected.misuse->place == misuse.place,
                told(misuse) + ", expected " + (expected.misuse ? told(*expected.misuse) : "none"));
    }
}

void check_assignment(const test::DispatchCall& call) {
    const test::DispatchCall::Meant expected = test::expected_assignment(call);
    try {
        const DispatchValue value = assigned_value(call.passed());
        require(expected.number == 0, "assigned in spite of error " + std::to_string(expected.number));
        require_same_value(value, expected.value);
    } catch (const Misuse& misuse) {
        require(misuse.number == expected.number, told(misuse) + ", expected " + std::to_string(expected.number));
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    char object = 0;
    const test::DispatchCall call({bytes, size}, &object);
    if (call.member().kind == MemberKind::method) {
        check_method(call);
    } else {
        check_assignment(call);
    }
    return 0;
}
