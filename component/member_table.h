#pragma once

#include <array>
#include <cstdint>
#include <span>

#include "automation/variant_bool.h"
#include "dataaccess/trap.h"
#include "posting/line.h"

namespace vantlo {

class PostingFrame;

enum class MemberKind { property_get, property_let, property_set, method };

/// The line-object types of the sibling library.
enum class LineType { none, StockBillItemObject, LossOverItemObject, RGStockItemObject, BorrowItemObject };

enum class ParameterType { none, line, text, integer, boolean, long_integer };

/// One parameter of a method; all of them are passed by reference.
struct Parameter {
    const char16_t* name = nullptr;
    ParameterType type = ParameterType::none;
    LineType line_type = LineType::none;
    bool optional = false;
    std::int16_t default_number = 0;  ///< of an optional number; that of a text is the empty text

    /// The default as an argument value.
    [[nodiscard]] Variant default_value() const;
};

/// One argument of a call: a line, or a value that the method converts to its parameter's type.
struct Argument {
    Argument(Line& line_argument) : line(&line_argument) {}
    template <typename Value>
    requires std::constructible_from<Variant, Value> Argument(Value&& value_argument)
        : value(std::forward<Value>(value_argument)) {}
    Argument(VariantBool value_argument) : value(static_cast<std::int16_t>(value_argument)) {}

    Line* line = nullptr;
    Variant value;
};

/// A posting member as the table calls it: unpacks the arguments and posts. Errors: raised to the member's trap.
using BoundMember = std::int32_t (*)(PostingFrame& frame, std::span<const Argument> arguments);

/// One member of the default interface.
struct Member {
    static constexpr std::size_t most_parameters = 4;

    int number = 0;  ///< its place in the vtable, counted from the first slot after those of IDispatch
    std::uint32_t dispatch_id = 0;
    const char16_t* name = nullptr;
    MemberKind kind = MemberKind::method;
    std::array<Parameter, most_parameters> parameter_slots = {};
    OnError on_error = OnError::tell_user;
    BoundMember posting = nullptr;  ///< null for the property procedures

    [[nodiscard]] std::span<const Parameter> parameters() const;
};

/// All members in the order of the interface.
std::span<const Member> member_table();

/// The method of that name, compared without regard to case; null if there is none.
const Member* find_method(TextView name);

}  // namespace vantlo
