#include "ado/odbc/field_type.h"

#include <sql.h>
#include <sqlext.h>

#include <algorithm>
#include <optional>

#include "automation/error.h"
#include "automation/number_text.h"

namespace vantlo {

namespace {

struct TypeRow {
    int sql_type;
    FieldType type;
};

struct TypeNameRow {
    std::string_view name;
    FieldType type;
};

// clang-format off
// ODBC type,               what it means; every type that is missing here is read as text
constexpr TypeRow types[] = {
    {SQL_TINYINT,           FieldType::byte},
    {SQL_SMALLINT,          FieldType::integer},
    {SQL_INTEGER,           FieldType::long_integer},
    {SQL_BIGINT,            FieldType::big_integer},
    {SQL_DECIMAL,           FieldType::exact},
    {SQL_NUMERIC,           FieldType::exact},
    {SQL_REAL,              FieldType::single},
    {SQL_FLOAT,             FieldType::double_precision},
    {SQL_DOUBLE,            FieldType::double_precision},
    {SQL_BIT,               FieldType::boolean},
    {SQL_TYPE_DATE,         FieldType::date},
    {SQL_TYPE_TIME,         FieldType::time},
    {SQL_TYPE_TIMESTAMP,    FieldType::date_and_time},
    {SQL_BINARY,            FieldType::other},
    {SQL_VARBINARY,         FieldType::other},
    {SQL_LONGVARBINARY,     FieldType::other},
};

// engine's type name,      what it means
constexpr TypeNameRow types_by_name[] = {
    {"bool",                FieldType::boolean},  // PostgreSQL's driver calls it a text by default
    {"time",                FieldType::time},     // SQL Server's has a type code of its own
};
// clang-format on

/// Whether decimal digits need no more than the four decimals of a Currency.
bool has_four_decimals(std::string_view digits) {
    const std::size_t point = digits.find('.');
    return point == std::string_view::npos || digits.find_last_not_of('0') <= point + 4;
}

std::optional<Currency> currency_of(TextView digits) {
    try {
        return currency_from_text(digits);
    } catch (const Failure&) {
        return std::nullopt;
    }
}

}  // namespace

bool needs_type_name(int sql_type) {
    return std::ranges::none_of(types, [sql_type](const TypeRow& row) { return row.sql_type == sql_type; });
}

FieldType field_type(int sql_type, std::string_view type_name) {
    for (const TypeNameRow& row : types_by_name) {
        if (row.name == type_name) return row.type;
    }
    for (const TypeRow& row : types) {
        if (row.sql_type == sql_type) return row.type;
    }
    return FieldType::text;
}

Variant exact_number(std::string_view digits) {
    const Text text = from_utf8(digits);
    if (has_four_decimals(digits)) {
        if (const std::optional<Currency> currency = currency_of(text)) return *currency;
    }
    return Other{text};
}

}  // namespace vantlo
