#include "host/bill_file.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <fstream>
#include <limits>
#include <nlohmann/json.hpp>

namespace vantlo::host {

namespace {

using nlohmann::json;

// clang-format off
constexpr BillColumn warehouse_columns[] = {
    {"id", u"ID", ColumnType::text}, {"name", u"Name", ColumnType::text},
};
constexpr BillColumn goods_columns[] = {
    {"id", u"ID", ColumnType::text}, {"name", u"Name", ColumnType::text}, {"class", u"Class", ColumnType::text},
    {"model", u"Model", ColumnType::text}, {"unit", u"Unit", ColumnType::text},
    {"main_goods", u"GCZYCPFlag", ColumnType::whole_number}, {"remarks", u"Remarks", ColumnType::text},
};
constexpr BillColumn unit_columns[] = {
    {"goods", u"id", ColumnType::text}, {"unit", u"Unit", ColumnType::text},
    {"factor", u"UnitConverter", ColumnType::single},
};

struct MasterTable {
    const char* field;
    const char16_t* table;
    std::span<const BillColumn> columns;
};
constexpr MasterTable master_tables[] = {
    {"warehouses", u"Warehouse", warehouse_columns},
    {"goods",      u"Goods",     goods_columns},
    {"units",      u"GoodsUnit", unit_columns},
};
// clang-format on

/// Where in a file something stands, for people.
struct Place {
    const std::string& file;
    std::string part;

    [[noreturn]] void refuse(const std::string& reason) const {
        throw BadInput(fmt::format("{}: {}: {}", file, part, reason));
    }
    [[nodiscard]] Place at(const std::string& further) const { return {file, part + ", " + further}; }
};

Variant empty_value(ColumnType type) {
    switch (type) {
        case ColumnType::single: return 0.0F;
        case ColumnType::whole_number: return std::int32_t{0};
        case ColumnType::text:
        case ColumnType::date: break;
    }
    return Text();
}

/// A value as it is named in a refusal. A list or object is named by its type alone: it may be nested without end.
std::string shown(const json& value) { return value.is_structured() ? value.type_name() : value.dump(); }

/// A number of the file in the type of its column. Errors: refused if it does not fit.
template <typename Number>
Number number_in_range(const json& value, const Place& place) {
    const auto number = value.get<double>();
    using Limits = std::numeric_limits<Number>;
    if (number < double{Limits::lowest()} || number > double{Limits::max()}) {
        place.refuse("the number " + value.dump() + " is too large");
    }
    return static_cast<Number>(number);
}

Variant value_of(const json& value, ColumnType type, const Place& place) {
    switch (type) {
        case ColumnType::text:
            if (!value.is_string()) place.refuse("a text is expected, not " + shown(value));
            return from_utf8(value.get_ref<const std::string&>());
        case ColumnType::single:
            if (value.is_null()) return Null{};
            if (!value.is_number()) place.refuse("a number is expected, not " + shown(value));
            return number_in_range<float>(value, place);
        case ColumnType::whole_number:
            if (value.is_null()) return Null{};
            if (!value.is_number_integer()) place.refuse("a whole number is expected, not " + shown(value));
            return number_in_range<std::int32_t>(value, place);
        case ColumnType::date: break;
    }
    const std::optional<Date> date =
        value.is_string() ? date_from_text(from_utf8(value.get_ref<const std::string&>())) : std::nullopt;
    if (!date) place.refuse("a date like 2024-03-05 is expected, not " + shown(value));
    return *date;
}

/// Takes the columns' fields out of an object; what else it has must be among `others`.
Record read_record(const json& object, std::span<const BillColumn> columns, std::initializer_list<const char*> others,
                   const Place& place) {
    if (!object.is_object()) place.refuse("an object is expected, not " + shown(object));
    for (const auto& [field, value] : object.items()) {
        const bool known =
            std::ranges::find(columns, field, &BillColumn::field) != columns.end() ||
            std::ranges::find(others, field, [](const char* other) { return std::string(other); }) != others.end();
        if (!known) place.refuse("unknown field \"" + field + "\"");
    }
    Record record;
    for (const BillColumn& column : columns) {
        const auto found = object.find(column.field);
        const Place field = place.at(std::string(column.field));
        record.set(column.column,
                   found == object.end() ? empty_value(column.type) : value_of(*found, column.type, field));
    }
    return record;
}

Bill read_bill(const json& object, const Place& place) {
    if (!object.is_object() || !object.contains("kind") || !object.contains("id")) {
        place.refuse("a bill has a \"kind\" and an \"id\"");
    }
    Bill bill;
    const std::string kind = object["kind"].is_string() ? object["kind"].get<std::string>() : shown(object["kind"]);
    bill.kind = find_bill_kind(kind);
    if (bill.kind == nullptr) place.refuse("unknown kind of bill \"" + kind + "\"");
    bill.id = to_text(value_of(object["id"], ColumnType::text, place.at("id")));
    if (trim_blanks(bill.id).empty()) place.refuse("the id is empty");
    const Place named = place.at(to_utf8(bill.id));
    bill.header = read_record(object, bill.kind->header->columns, {"kind", "id", "lines"}, named);
    if (!object.contains("lines") || !object["lines"].is_array()) named.refuse("\"lines\" is missing or no list");
    int number = 0;
    for (const json& line : object["lines"]) {
        const Place at_line = named.at(fmt::format("line {}", ++number));
        bill.lines.push_back(read_record(line, bill.kind->lines->columns, {}, at_line));
    }
    return bill;
}

json parsed(const std::string& path) {
    std::ifstream file(path);
    if (!file) throw BadInput(path + ": the file cannot be read");
    try {
        return json::parse(file);
    } catch (const json::exception& failure) {
        throw BadInput(path + ": this is no JSON: " + failure.what());
    }
}

}  // namespace

ShopFile read_shop_file(const std::string& path) {
    const json document = parsed(path);
    const Place whole{path, "the file"};
    if (!document.is_object()) whole.refuse("an object is expected");
    ShopFile shop;
    for (const auto& [part, rows] : document.items()) {
        const auto* const master =
            std::ranges::find(master_tables, part, [](const MasterTable& table) { return std::string(table.field); });
        if (master == std::end(master_tables) && part != "bills") whole.refuse("unknown part \"" + part + "\"");
        if (!rows.is_array()) whole.refuse("\"" + part + "\" is no list");
        int number = 0;
        for (const json& row : rows) {
            const Place place{path, fmt::format("{} {}", part, ++number)};
            if (part == "bills") {
                shop.bills.push_back(read_bill(row, place));
            } else {
                shop.master.push_back({master->table, read_record(row, master->columns, {}, place)});
            }
        }
    }
    return shop;
}

}  // namespace vantlo::host
