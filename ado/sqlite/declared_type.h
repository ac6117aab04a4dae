#pragma once

#include <cstdint>
#include <string_view>

#include "automation/variant.h"

namespace vantlo {

/// What the declared type of an SQLite column says about its values.
enum class DeclaredType {
    none,  ///< nothing: the value's own storage class decides
    byte,
    integer,
    long_integer,
    single,
    double_precision,
    currency,
    date,
    boolean,
    text,
    decimal,
};

/// The type that a declaration names, up to a parenthesis and without regard to case.
/// Example  `NVARCHAR(20)` -> text; an unknown name and the empty one of an expression -> none.
DeclaredType declared_type(std::string_view declaration);

// The value of a field, by its column's declared type and what is stored. SQLite lets a column hold anything: what does
// not fit the declared type comes back by its storage class (Long or Other, Double, String), so that a conversion which
// needs the declared type fails by itself.
Variant field_value(DeclaredType type, std::int64_t stored);
Variant field_value(DeclaredType type, double stored);
Variant field_value(DeclaredType type, Text stored);

}  // namespace vantlo
