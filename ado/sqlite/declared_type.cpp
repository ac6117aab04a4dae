#include "ado/sqlite/declared_type.h"

#include <sqlite3.h>

#include <cmath>
#include <limits>
#include <optional>
#include <string>
#include <utility>

#include "automation/calendar.h"
#include "automation/error.h"
#include "automation/number_text.h"

namespace vantlo {

namespace {

struct TypeName {
    std::string_view name;
    DeclaredType type;
};

// clang-format off
// declared name,         what it means
constexpr TypeName type_names[] = {
    {"tinyint",           DeclaredType::byte},
    {"byte",              DeclaredType::byte},
    {"smallint",          DeclaredType::integer},
    {"short",             DeclaredType::integer},
    {"int",               DeclaredType::long_integer},
    {"integer",           DeclaredType::long_integer},
    {"long",              DeclaredType::long_integer},
    {"mediumint",         DeclaredType::long_integer},
    {"real",              DeclaredType::single},
    {"single",            DeclaredType::single},
    {"float4",            DeclaredType::single},
    {"float",             DeclaredType::double_precision},
    {"double",            DeclaredType::double_precision},
    {"double precision",  DeclaredType::double_precision},
    {"money",             DeclaredType::currency},
    {"currency",          DeclaredType::currency},
    {"smallmoney",        DeclaredType::currency},
    {"datetime",          DeclaredType::date},
    {"smalldatetime",     DeclaredType::date},
    {"date",              DeclaredType::date},
    {"timestamp",         DeclaredType::date},
    {"bit",               DeclaredType::boolean},
    {"boolean",           DeclaredType::boolean},
    {"yesno",             DeclaredType::boolean},
    {"char",              DeclaredType::text},
    {"varchar",           DeclaredType::text},
    {"nchar",             DeclaredType::text},
    {"nvarchar",          DeclaredType::text},
    {"text",              DeclaredType::text},
    {"ntext",             DeclaredType::text},
    {"memo",              DeclaredType::text},
    {"clob",              DeclaredType::text},
    {"decimal",           DeclaredType::decimal},
    {"numeric",           DeclaredType::decimal},
    {"bigint",            DeclaredType::decimal},
};
// clang-format on

Variant by_storage_class(std::int64_t stored) {
    if (std::in_range<std::int32_t>(stored)) return static_cast<std::int32_t>(stored);
    return Other{from_utf8(std::to_string(stored))};
}

bool is_automation_day(double days) {
    constexpr double first_day = -657434;      // 1 January 100
    constexpr double day_past_last = 2958466;  // 1 January 10000
    return days >= first_day && days < day_past_last;
}

// Source: automation's true is -1, a bit's is 1.
bool is_truth_value(std::int64_t stored) { return stored == 0 || stored == 1 || stored == -1; }

std::optional<Currency> currency_of(std::int64_t stored) {
    constexpr std::int64_t largest = std::numeric_limits<std::int64_t>::max() / Currency::scale;
    if (stored < -largest || stored > largest) return std::nullopt;
    return Currency::from_ten_thousandths(stored * Currency::scale);
}

std::optional<Currency> currency_of(double stored) {
    try {
        return Currency::from_double(stored);
    } catch (const Failure&) {
        return std::nullopt;
    }
}

}  // namespace

DeclaredType declared_type(std::string_view declaration) {
    std::string_view name = declaration.substr(0, declaration.find('('));
    name = name.substr(0, name.find_last_not_of(' ') + 1);
    for (const TypeName& row : type_names) {
        if (row.name.size() == name.size() &&
            sqlite3_strnicmp(row.name.data(), name.data(), static_cast<int>(name.size())) == 0) {
            return row.type;
        }
    }
    return DeclaredType::none;
}

Variant field_value(DeclaredType type, std::int64_t stored) {
    switch (type) {
        case DeclaredType::byte:
            if (std::in_range<std::uint8_t>(stored)) return static_cast<std::uint8_t>(stored);
            break;
        case DeclaredType::integer:
            if (std::in_range<std::int16_t>(stored)) return static_cast<std::int16_t>(stored);
            break;
        case DeclaredType::single: return static_cast<float>(stored);
        case DeclaredType::double_precision: return static_cast<double>(stored);
        case DeclaredType::currency:
            if (const auto value = currency_of(stored)) return *value;
            break;
        case DeclaredType::date:
            if (is_automation_day(static_cast<double>(stored))) return Date{static_cast<double>(stored)};
            break;
        case DeclaredType::boolean:
            if (is_truth_value(stored)) return stored != 0;
            break;
        case DeclaredType::text: return from_utf8(std::to_string(stored));
        case DeclaredType::decimal: return Other{from_utf8(std::to_string(stored))};
        case DeclaredType::long_integer:
        case DeclaredType::none: break;
    }
    return by_storage_class(stored);
}

Variant field_value(DeclaredType type, double stored) {
    switch (type) {
        case DeclaredType::single:
            if (std::abs(stored) <= std::numeric_limits<float>::max()) return static_cast<float>(stored);
            break;
        case DeclaredType::currency:
            if (const auto value = currency_of(stored)) return *value;
            break;
        case DeclaredType::date:
            if (is_automation_day(stored)) return Date{stored};
            break;
        case DeclaredType::text:
            if (std::isfinite(stored)) return number_text(stored);
            break;
        case DeclaredType::decimal:
            if (std::isfinite(stored)) return Other{number_text(stored)};
            break;
        case DeclaredType::byte:
        case DeclaredType::integer:
        case DeclaredType::long_integer:
        case DeclaredType::double_precision:
        case DeclaredType::boolean:
        case DeclaredType::none: break;
    }
    return stored;
}

Variant field_value(DeclaredType type, Text stored) {
    if (type == DeclaredType::date) {
        if (const auto date = date_from_text(stored)) return *date;
    }
    return stored;
}

}  // namespace vantlo
