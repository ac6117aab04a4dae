#include "ado/odbc/result_rows.h"

#include <sql.h>
#include <sqlext.h>

#include <functional>
#include <optional>
#include <utility>

#include "ado/native/statement_text.h"
#include "ado/odbc/field_type.h"
#include "automation/calendar.h"
#include "automation/error.h"

namespace vantlo {

namespace {

struct Column {
    Text name;
    FieldType type;
};

Column describe(SQLHSTMT statement, SQLUSMALLINT number) {
    char name[512] = "";
    SQLSMALLINT sql_type = 0;
    SQLSMALLINT length = 0, decimals = 0, nullable = 0;
    SQLULEN size = 0;
    checked(SQLDescribeCol(statement, number, reinterpret_cast<SQLCHAR*>(name), sizeof name, &length, &sql_type, &size,
                           &decimals, &nullable));
    char type_name[128] = "";
    if (needs_type_name(sql_type)) {
        checked(SQLColAttribute(statement, number, SQL_DESC_TYPE_NAME, type_name, sizeof type_name, nullptr, nullptr));
    }
    return {from_utf8(name), field_type(sql_type, type_name)};
}

/// The bytes of a text field, or nothing for null.
std::optional<std::string> read_bytes(SQLHSTMT statement, SQLUSMALLINT column) {
    std::string bytes;
    char piece[4096];
    for (;;) {
        SQLLEN length = 0;  // of all that is left, the piece included
        if (checked(SQLGetData(statement, column, SQL_C_CHAR, piece, sizeof piece, &length)) == SQL_NO_DATA)
            return bytes;
        if (length == SQL_NULL_DATA) return std::nullopt;
        const std::size_t room = sizeof piece - 1;  // each piece ends in a NUL
        const bool is_last = length != SQL_NO_TOTAL && static_cast<std::size_t>(length) <= room;
        bytes.append(piece, is_last ? static_cast<std::size_t>(length) : room);
        if (is_last) return bytes;
    }
}

/// A field of a fixed size, or nothing for null.
template <typename Type>
std::optional<Type> read_fixed(SQLHSTMT statement, SQLUSMALLINT column, SQLSMALLINT c_type) {
    Type value{};
    SQLLEN length = 0;
    checked(SQLGetData(statement, column, c_type, &value, sizeof value, &length));
    if (length == SQL_NULL_DATA) return std::nullopt;
    return value;
}

template <typename Optional, typename Convert>
Variant or_null(const Optional& field, Convert convert) {
    if (!field) return Null{};
    return convert(*field);
}

/// The narrowest of the wanted type, Long and Other that holds a whole number.
template <typename Wanted>
Variant whole_number(std::int64_t value) {
    if (std::in_range<Wanted>(value)) return static_cast<Wanted>(value);
    if (std::in_range<std::int32_t>(value)) return static_cast<std::int32_t>(value);
    return Other{from_utf8(std::to_string(value))};
}

/// A date, or an Other where automation has no such day: MariaDB's 0000-00-00, a year beyond 9999.
Variant date_or_other(const DateParts& parts) {
    try {
        return date_of(parts);
    } catch (const Failure&) {
        return Other{};
    }
}

Variant read_whole_number(SQLHSTMT statement, SQLUSMALLINT column, Variant (*narrow)(std::int64_t)) {
    return or_null(read_fixed<std::int64_t>(statement, column, SQL_C_SBIGINT), narrow);
}

Variant read_field(SQLHSTMT statement, SQLUSMALLINT column, FieldType type) {
    switch (type) {
        case FieldType::text:
            return or_null(read_bytes(statement, column), [](const auto& bytes) { return from_utf8(bytes); });
        case FieldType::byte: return read_whole_number(statement, column, whole_number<std::uint8_t>);
        case FieldType::integer: return read_whole_number(statement, column, whole_number<std::int16_t>);
        case FieldType::long_integer: return read_whole_number(statement, column, whole_number<std::int32_t>);
        case FieldType::big_integer:
            return or_null(read_bytes(statement, column), [](const auto& digits) { return Other{from_utf8(digits)}; });
        case FieldType::exact: return or_null(read_bytes(statement, column), exact_number);
        case FieldType::single: return or_null(read_fixed<float>(statement, column, SQL_C_FLOAT), std::identity());
        case FieldType::double_precision:
            return or_null(read_fixed<double>(statement, column, SQL_C_DOUBLE), std::identity());
        case FieldType::boolean:
            return or_null(read_fixed<std::uint8_t>(statement, column, SQL_C_BIT), [](auto bit) { return bit != 0; });
        case FieldType::date:
            return or_null(read_fixed<SQL_DATE_STRUCT>(statement, column, SQL_C_TYPE_DATE), [](const auto& date) {
                return date_or_other({.year = date.year, .month = date.month, .day = date.day});
            });
        case FieldType::time:
            return or_null(read_fixed<SQL_TIME_STRUCT>(statement, column, SQL_C_TYPE_TIME), [](const auto& time) {
                return date_or_other({.hour = time.hour, .minute = time.minute, .second = time.second});
            });
        case FieldType::date_and_time:
            return or_null(
                read_fixed<SQL_TIMESTAMP_STRUCT>(statement, column, SQL_C_TYPE_TIMESTAMP), [](const auto& time) {
                    return date_or_other({time.year, time.month, time.day, time.hour, time.minute, time.second});
                });
        case FieldType::other: return or_null(read_bytes(statement, column), [](const auto&) { return Other{}; });
    }
    return Other{};
}

}  // namespace

std::int16_t checked(std::int16_t result) {
    if (!SQL_SUCCEEDED(result) && result != SQL_NO_DATA) throw StatementFailed();
    return result;
}

ResultTable read_rows(void* statement, std::int16_t column_count) {
    ResultTable result;
    result.yields_rows = true;
    std::vector<FieldType> types;
    for (SQLSMALLINT number = 1; number <= column_count; ++number) {
        Column column = describe(statement, static_cast<SQLUSMALLINT>(number));
        result.columns.push_back(std::move(column.name));
        types.push_back(column.type);
    }
    while (checked(SQLFetch(statement)) != SQL_NO_DATA) {
        std::vector<Variant>& row = result.rows.emplace_back();
        row.reserve(types.size());
        SQLUSMALLINT number = 0;
        for (const FieldType type : types) row.push_back(read_field(statement, ++number, type));
    }
    return result;
}

}  // namespace vantlo
