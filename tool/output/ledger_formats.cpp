#include "tool/output/ledger_formats.h"

#include <nlohmann/json.hpp>

namespace vantlo {

namespace {

struct Field {
    const char* name;
    std::string (*json)(const LedgerRow& row);
    std::string (*plain)(const LedgerRow& row);
};

std::string quoted(const std::string& text) { return nlohmann::json(text).dump(); }

template <Text LedgerRow::*text>
constexpr Field text_field(const char* name) {
    return {name, [](const LedgerRow& row) { return quoted(to_utf8(row.*text)); },
            [](const LedgerRow& row) { return to_utf8(row.*text); }};
}

template <Currency LedgerRow::*quantity>
constexpr Field quantity_field(const char* name) {
    const auto plain = [](const LedgerRow& row) { return quantity_text(row.*quantity); };
    return {name, plain, plain};
}

/// A number in JSON, as the column is, unless the database holds something else.
std::string status_json(const LedgerRow& row) {
    const std::string status = to_utf8(row.status);
    if (status.empty()) return "null";
    const bool is_number = status.find_first_not_of("0123456789") == std::string::npos;
    return is_number ? status : quoted(status);
}

const Field fields[] = {
    text_field<&LedgerRow::warehouse>("warehouse"),
    text_field<&LedgerRow::warehouse_name>("warehouse_name"),
    text_field<&LedgerRow::goods>("goods"),
    text_field<&LedgerRow::goods_name>("goods_name"),
    text_field<&LedgerRow::model1>("model1"),
    text_field<&LedgerRow::model2>("model2"),
    {"status", status_json, [](const LedgerRow& row) { return to_utf8(row.status); }},
    text_field<&LedgerRow::goods_class>("class"),
    text_field<&LedgerRow::unit>("unit"),
    quantity_field<&LedgerRow::received>("received"),
    quantity_field<&LedgerRow::issued>("issued"),
    quantity_field<&LedgerRow::on_hand>("on_hand"),
};

std::string json_object(const LedgerRow& row) {
    std::string object;
    for (const Field& field : fields) {
        object += object.empty() ? "{" : ", ";
        object += quoted(field.name) + ": " + field.json(row);
    }
    return object + "}";
}

template <typename CellOf>
std::string csv_record(const CellOf& cell_of, CsvCells cells) {
    std::string record;
    for (const Field& field : fields) record += (&field == fields ? "" : ",") + csv_field(cell_of(field), cells);
    return record + "\r\n";
}

}  // namespace

std::string ledger_json(const std::vector<LedgerRow>& rows) {
    std::string text;
    for (const LedgerRow& row : rows) text += (text.empty() ? "[\n  " : ",\n  ") + json_object(row);
    return text.empty() ? "[]\n" : text + "\n]\n";
}

std::string ledger_json_lines(const std::vector<LedgerRow>& rows) {
    std::string text;
    for (const LedgerRow& row : rows) text += json_object(row) + "\n";
    return text;
}

std::string ledger_csv(const std::vector<LedgerRow>& rows, CsvCells cells) {
    std::string text = csv_record([](const Field& field) { return std::string(field.name); }, cells);
    for (const LedgerRow& row : rows) text += csv_record([&](const Field& field) { return field.plain(row); }, cells);
    return text;
}

}  // namespace vantlo
