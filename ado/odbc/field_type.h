#pragma once

#include <string_view>

#include "automation/variant.h"

namespace vantlo {

/// What a column's SQL type says about its values.
enum class FieldType {
    text,
    byte,
    integer,
    long_integer,
    big_integer,  ///< 64 bits, which is none of the simple numbers
    exact,        ///< an exact number of any size and scale
    single,
    double_precision,
    boolean,
    date,
    time,
    date_and_time,
    other,  ///< nothing that this system distinguishes, such as bytes
};

/// Whether a column's ODBC type code does not determine its type: field_type then needs the engine's type name.
bool needs_type_name(int sql_type);

/// The type of a column by its ODBC type code and, where drivers disagree about the code, the engine's own type name;
/// the name may be empty where it is not needed.
FieldType field_type(int sql_type, std::string_view type_name);

/// An exact number from its decimal digits: a Currency if it has no more than four decimals and fits, else an Other. It
/// never becomes a double on the way.
/// Example  `24.5000` -> Currency 24.5; `0.00001` -> Other 0.00001
Variant exact_number(std::string_view digits);

}  // namespace vantlo
