#include "component/passed_arguments.h"

#include <algorithm>
#include <optional>

namespace vantlo {

namespace {

/// The name that automation gives to the value of a property.
constexpr std::int32_t assigned_value_name = -3;

/// What a caller passes in the place of an argument that it leaves out: an error of this code.
constexpr auto parameter_not_found = static_cast<std::int32_t>(0x80020004);

/// Errors   Misuse for counts that contradict each other or what they count.
void check_counts(const PassedArguments& passed, std::size_t most_values) {
    if (passed.value_count > most_values || passed.name_count > passed.value_count) {
        throw Misuse{error::wrong_argument_count};
    }
    const bool values_are_there = passed.value_count == 0 || passed.values != nullptr;
    const bool names_are_there = passed.name_count == 0 || passed.names != nullptr;
    if (!values_are_there || !names_are_there) throw Misuse{error::invalid_call};
}

/// Where each parameter's argument stands, if there is one. Errors: Misuse for a name that is none, or given already.
std::vector<std::optional<std::uint32_t>> places_of(std::size_t parameter_count, const PassedArguments& passed) {
    std::vector<std::optional<std::uint32_t>> places(parameter_count);
    const std::uint32_t by_position = passed.value_count - passed.name_count;
    for (std::uint32_t i = 0; i < by_position; ++i) places[i] = passed.value_count - 1 - i;
    for (std::uint32_t i = 0; i < passed.name_count; ++i) {
        const auto parameter = static_cast<std::uint32_t>(passed.names[i]);
        const bool is_free = parameter < places.size() && !places[parameter];
        if (!is_free) throw Misuse{error::named_argument_not_found, i};
        places[parameter] = i;
    }
    return places;
}

/// The value behind a passed one, of a type that a value can have. Errors: Misuse.
DispatchValue value_behind(const DispatchValue& passed, std::uint32_t place) {
    const FollowedValue followed = follow_references(passed);
    if (followed.reach == Reach::null_reference) throw Misuse{error::type_mismatch, place};
    if (followed.reach == Reach::no_value) throw Misuse{error::bad_type, place};
    if (has_flag(followed.value.type, DispatchType::array_flag)) throw Misuse{error::type_mismatch, place};
    if (!is_plain_type(followed.value.type)) throw Misuse{error::bad_type, place};
    return followed.value;
}

bool is_left_out(const DispatchValue& value) {
    return value.type == DispatchType::error && value.read<std::int32_t>() == parameter_not_found;
}

/// Errors   Misuse for a value that no conversion makes the parameter's argument.
void check_value(const Parameter& parameter, const DispatchValue& value, std::uint32_t place) {
    if (parameter.type == ParameterType::line) {
        if (!is_object(value.type)) throw Misuse{error::type_mismatch, place};
        return;
    }
    const bool is_nothing = is_object(value.type) && value.read<const void*>() == nullptr;
    if (value.type == DispatchType::null || is_nothing) throw Misuse{error::type_mismatch, place};
}

GivenArgument argument_at(std::uint32_t place, const Parameter& parameter, const PassedArguments& passed) {
    const DispatchValue value = value_behind(passed.values[place], place);
    if (is_left_out(value)) {
        if (!parameter.optional) throw Misuse{error::argument_not_optional, place};
        return {.is_left_out = true, .place = place, .value = {}};
    }
    check_value(parameter, value, place);
    return {.is_left_out = false, .place = place, .value = value};
}

}  // namespace

std::vector<GivenArgument> arguments_for(std::span<const Parameter> parameters, const PassedArguments& passed) {
    check_counts(passed, parameters.size());
    const std::vector<std::optional<std::uint32_t>> places = places_of(parameters.size(), passed);
    std::vector<GivenArgument> given;
    for (std::size_t i = 0; i < parameters.size(); ++i) {
        if (places[i]) {
            given.push_back(argument_at(*places[i], parameters[i], passed));
        } else if (parameters[i].optional) {
            given.push_back({.is_left_out = true, .place = 0, .value = {}});
        } else {
            throw Misuse{error::wrong_argument_count};
        }
    }
    return given;
}

DispatchValue value_for(const Parameter& parameter, const DispatchValue& passed, std::uint32_t place) {
    const DispatchValue value = value_behind(passed, place);
    check_value(parameter, value, place);
    return value;
}

DispatchValue assigned_value(const PassedArguments& passed) {
    check_counts(passed, 1);
    if (passed.value_count == 0) throw Misuse{error::wrong_argument_count};
    if (passed.name_count == 1 && passed.names[0] != assigned_value_name) {
        throw Misuse{error::named_argument_not_found, 0};
    }
    return value_behind(passed.values[0], 0);
}

}  // namespace vantlo
