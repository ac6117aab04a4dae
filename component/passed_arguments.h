#pragma once

#include <vector>

#include "automation/dispatch_value.h"
#include "automation/error.h"
#include "component/member_table.h"

namespace vantlo {

/// The arguments of an automation call as they come in: in reverse, and those given by name before all others.
///
/// The counts are the caller's word. Nothing else about it is taken on trust: values may be references to nothing or to
/// themselves, a parameter may be given twice, there may be more names than values.
struct PassedArguments {
    const DispatchValue* values = nullptr;
    const std::int32_t* names = nullptr;  ///< the identifiers of the parameters that the first values are for
    std::uint32_t value_count = 0;
    std::uint32_t name_count = 0;
};

/// A call that automation's rules forbid. Its numbers are those under which hosts know that.
struct Misuse {
    ErrorNumber number = 0;
    std::uint32_t place = 0;  ///< of the value or name at fault, where there is one
};

/// What a call gives for one parameter.
struct GivenArgument {
    bool is_left_out = false;  ///< then the parameter's default is meant
    std::uint32_t place = 0;   ///< among the passed values
    DispatchValue value;  ///< no reference; of a type that the parameter's argument may have before it is converted
};

/// Finds each parameter's argument. The values stay the caller's; nothing of what they point to is touched but what
/// references lead to.
/// Errors   Misuse: wrong_argument_count, named_argument_not_found, argument_not_optional, type_mismatch, bad_type,
///          invalid_call.
std::vector<GivenArgument> arguments_for(std::span<const Parameter> parameters, const PassedArguments& passed);

/// One value as the parameter's argument, to be converted yet: no reference, nor a value that no conversion makes one.
/// Errors   Misuse: type_mismatch, bad_type.
DispatchValue value_for(const Parameter& parameter, const DispatchValue& passed, std::uint32_t place);

/// The one value that a property is set to, of any type that a value can have. Errors: Misuse, as above.
DispatchValue assigned_value(const PassedArguments& passed);

}  // namespace vantlo
