#include "bookkeeping/bill_history.h"

#include <fmt/format.h>

#include <nlohmann/json.hpp>
#include <stdexcept>

namespace vantlo {

namespace {

using nlohmann::json;

json json_of(const Variant& value) {
    if (value.is<Null>()) return nullptr;
    if (const Text* const text = value.get_if<Text>()) return to_utf8(*text);
    return to_double(value);  // a date as its day number
}

Variant value_of(const json& value, ColumnType type) {
    if (value.is_null()) return Null{};
    if (value.is_string()) return from_utf8(value.get_ref<const std::string&>());
    switch (type) {
        case ColumnType::single: return value.get<float>();
        case ColumnType::whole_number: return value.get<std::int32_t>();
        case ColumnType::date: return Date{value.get<double>()};
        case ColumnType::text: break;
    }
    throw std::runtime_error("a text is expected, not " + value.dump());
}

json json_of(const Record& record) {
    json object = json::object();
    for (const Record::Field& field : record.fields()) object[to_utf8(field.column)] = json_of(field.value);
    return object;
}

Record record_of(const json& object, std::span<const BillColumn> columns) {
    Record record;
    for (const BillColumn& column : columns) {
        record.set(column.column, value_of(object.at(to_utf8(column.column)), column.type));
    }
    return record;
}

}  // namespace

Text bill_content(const Bill& bill) {
    json lines = json::array();
    for (const Record& line : bill.lines) lines.push_back(json_of(line));
    return from_utf8(json{{"header", json_of(bill.header)}, {"lines", std::move(lines)}}.dump());
}

Bill bill_from_content(const BillKind& kind, const Text& id, const Text& content) {
    try {
        const json document = json::parse(to_utf8(content));
        Bill bill{&kind, id, record_of(document.at("header"), kind.header->columns), {}};
        for (const json& line : document.at("lines")) bill.lines.push_back(record_of(line, kind.lines->columns));
        return bill;
    } catch (const json::exception& failure) {
        throw std::runtime_error(
            fmt::format("the history's {} {} cannot be read: {}", kind.name, to_utf8(id), failure.what()));
    }
}

}  // namespace vantlo
