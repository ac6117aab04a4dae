#include "component/passed_arguments.h"

#include <doctest/doctest.h>

#include <vector>

namespace vantlo::test {
namespace {

DispatchValue value(DispatchType type, std::uint64_t content = 1) {
    DispatchValue made;
    made.type = type;
    made.write(content);
    return made;
}

const DispatchValue left_out = value(DispatchType::error, 0x80020004);

/// A call with arguments in the order in which they are passed: in reverse, those with names first.
struct Call {
    [[nodiscard]] PassedArguments passed() const {
        return {values.data(), names.data(), static_cast<std::uint32_t>(values.size()),
                static_cast<std::uint32_t>(names.size())};
    }

    std::vector<DispatchValue> values;
    std::vector<std::int32_t> names = {};
};

std::vector<GivenArgument> given(const char16_t* method, const PassedArguments& passed) {
    return arguments_for(find_method(method)->parameters(), passed);
}

/// The misuse in a call; number 0 for none.
template <typename Body>
Misuse misuse_in(Body body) {
    try {
        body();
        return {};
    } catch (const Misuse& misuse) {
        return misuse;
    }
}

void check_misuse(const char16_t* method, const PassedArguments& passed, ErrorNumber number, std::uint32_t place = 0) {
    const Misuse misuse = misuse_in([&] { given(method, passed); });
    CHECK(misuse.number == number);
    CHECK(misuse.place == place);
}

TEST_CASE("Arguments find their parameters from the last one back, or by name") {
    const Call call{{value(DispatchType::int16, 3), value(DispatchType::text), value(DispatchType::text)}, {2}};
    const std::vector<GivenArgument> found = given(u"In_ReduceInventory", call.passed());
    REQUIRE(found.size() == 4);
    CHECK(found[0].place == 2);
    CHECK(found[1].place == 1);
    CHECK(found[2].place == 0);
    CHECK(found[2].value.read<std::int16_t>() == 3);
    CHECK(found[3].is_left_out);
}

TEST_CASE("An argument that is left out in the middle means its parameter's default") {
    const Call call{{value(DispatchType::int16), left_out, value(DispatchType::text)}};
    const std::vector<GivenArgument> found = given(u"In_ReduceInventory", call.passed());
    CHECK(found[1].is_left_out);
    CHECK_FALSE(found[2].is_left_out);
    check_misuse(u"ReduceInventory_Db", Call{{left_out}}.passed(), error::argument_not_optional);
    CHECK_FALSE(given(u"ReduceInventory_Db", Call{{value(DispatchType::error, 5)}}.passed())[0].is_left_out);
}

TEST_CASE("Counts that contradict each other, or what they count, are a misuse") {
    const DispatchValue text = value(DispatchType::text);
    check_misuse(u"ReduceInventory_Db", Call{{}}.passed(), error::wrong_argument_count);
    check_misuse(u"ReduceInventory_Db", Call{{text, text}}.passed(), error::wrong_argument_count);
    check_misuse(u"In_ReduceInventory", Call{{text}, {0, 1}}.passed(), error::wrong_argument_count);
    check_misuse(u"In_ReduceInventory", {nullptr, nullptr, 1, 0}, error::invalid_call);
    check_misuse(u"In_ReduceInventory", {&text, nullptr, 1, 1}, error::invalid_call);
}

TEST_CASE("A name that is none, or that names a parameter given already, is a misuse") {
    const DispatchValue text = value(DispatchType::text);
    check_misuse(u"In_ReduceInventory", Call{{text, text}, {4}}.passed(), error::named_argument_not_found);
    check_misuse(u"In_ReduceInventory", Call{{text, text}, {-1}}.passed(), error::named_argument_not_found);
    check_misuse(u"In_ReduceInventory", Call{{text, text}, {0}}.passed(), error::named_argument_not_found);
    check_misuse(u"In_ReduceInventory", Call{{text, text, text}, {1, 1}}.passed(), error::named_argument_not_found, 1);
}

TEST_CASE("A value that no conversion makes the parameter's argument is a misuse") {
    const DispatchType reference = DispatchType::text | DispatchType::reference_flag;
    const auto check_text = [](const DispatchValue& passed, ErrorNumber number) {
        check_misuse(u"ReduceInventory_Db", Call{{passed}}.passed(), number);
    };
    check_text(value(reference, 0), error::type_mismatch);
    check_text(value(DispatchType::empty | DispatchType::reference_flag), error::bad_type);
    check_text(value(DispatchType::text | DispatchType::array_flag), error::type_mismatch);
    check_text(value(DispatchType::variant), error::bad_type);
    check_text(value(DispatchType::null), error::type_mismatch);
    check_text(value(DispatchType::object, 0), error::type_mismatch);
    check_text(value(DispatchType::object), 0);
    check_misuse(u"AddInventory_Db", Call{{value(DispatchType::text)}}.passed(), error::type_mismatch);
    check_misuse(u"AddInventory_Db", Call{{value(DispatchType::unknown_object, 0)}}.passed(), 0);
    CHECK(value_for({u"a", ParameterType::text}, value(DispatchType::text, 5), 0).read<std::uint64_t>() == 5);
}

TEST_CASE("A property is set to one value, which may have the name that automation gives it") {
    const auto misuse = [](const PassedArguments& passed) { return misuse_in([&] { assigned_value(passed); }).number; };
    const DispatchValue text = value(DispatchType::text, 5);
    CHECK(assigned_value(Call{{text}}.passed()).read<std::uint64_t>() == 5);
    CHECK(assigned_value(Call{{text}, {-3}}.passed()).read<std::uint64_t>() == 5);
    CHECK(misuse(Call{{text}, {0}}.passed()) == error::named_argument_not_found);
    CHECK(misuse(Call{{}}.passed()) == error::wrong_argument_count);
    CHECK(misuse(Call{{text, text}}.passed()) == error::wrong_argument_count);
    CHECK(misuse(Call{{value(DispatchType::variant)}}.passed()) == error::bad_type);
}

}  // namespace
}  // namespace vantlo::test
