#include "bookkeeping/bill_history.h"

#include <cmath>
#include <limits>
#include <nlohmann/json.hpp>

#include "automation/error_text.h"

namespace vantlo {

namespace {

using nlohmann::json;

json json_of(const Variant& value) {
    if (value.is<Null>()) return nullptr;
    if (const Text* const text = value.get_if<Text>()) return to_utf8(*text);
    return to_double(value);  // a date as its day number
}

float single_of(double number) {
    if (!(std::abs(number) <= static_cast<double>(std::numeric_limits<float>::max()))) throw Failure(error::overflow);
    return static_cast<float>(number);
}

Variant value_of(const json& value, ColumnType type) {
    if (value.is_null()) return Null{};
    if (value.is_string()) return from_utf8(value.get_ref<const std::string&>());
    const auto number = value.get<double>();
    switch (type) {
        case ColumnType::single: return single_of(number);
        case ColumnType::whole_number: return to_long(number);
        case ColumnType::date: return Date{number};
        case ColumnType::text: break;
    }
    throw Failure(error::type_mismatch, "a text is expected, not " + value.dump());
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

std::optional<Bill> bill_from_content(const BillKind& kind, const Text& id, const Text& content, std::string& account) {
    try {
        const json document = json::parse(to_utf8(content));
        Bill bill{&kind, id, record_of(document.at("header"), kind.header->columns), {}};
        for (const json& line : document.at("lines").get_ref<const json::array_t&>()) {
            bill.lines.push_back(record_of(line, kind.lines->columns));
        }
        return bill;
    } catch (const json::exception& failure) {
        account = failure.what();
    } catch (const Failure& failure) {
        account = account_of(failure, Language::english);
    }
    return std::nullopt;
}

}  // namespace vantlo
