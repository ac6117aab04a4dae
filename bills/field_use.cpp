#include "bills/field_use.h"

#include <algorithm>
#include <stdexcept>
#include <string>

namespace vantlo {

namespace {

// clang-format off
constexpr FieldUse uses[] = {
    // kind                 warehouses              ignored                                          minus minus, converts, inserts as it updates
    {"stock",               "receiver supplier",    ".status status"},
    {"stock-in",            "receiver",             "supplier status"},
    {"stock-out",           "supplier",             "receiver status"},
    {"stock-out-magnitude", "supplier",             "receiver status"},
    {"loss",                "supplier",             "receiver status"},
    {"overage",             "receiver",             "supplier status"},
    {"sales-return",        "receiver",             ".status supplier"},
    {"return-repair",       ".receiver .supplier",  "warehouse status_warehouse status"},
    {"repair-in",           "warehouse",            ".receiver .supplier status_warehouse status"},
    {"repair-in-status",    "status_warehouse",     ".receiver .supplier warehouse"},
    {"repair-out",          "warehouse",            ".receiver .supplier status_warehouse status"},
    {"transfer",            ".receiver .supplier",  "warehouse status_warehouse status"},
    {"repaired-in",         "warehouse",            ".receiver .supplier status_warehouse",              "", true, false},
    {"repaired-out",        "warehouse",            ".receiver .supplier status_warehouse"},
    {"conversion",          "receiver supplier",    "status",                                        "", false},
    {"borrow-out",          "supplier",             "receiver"},
    {"borrow-in",           "receiver",             "supplier"},
    {"assembly",            ".warehouse warehouse", "",                                              ".quantity", true, false},
    {"disassembly",         ".warehouse warehouse", "",                                              ".quantity quantity", true, false},
};
// clang-format on

/// Whether a list of fields has one of them.
bool has_field(std::string_view list, BillPart part, std::string_view field) {
    const std::string wanted = (part == BillPart::header ? " ." : " ") + std::string(field) + " ";
    return (" " + std::string(list) + " ").find(wanted) != std::string::npos;
}

}  // namespace

std::span<const BillColumn> columns_of(const BillKind& kind, BillPart part) {
    return (part == BillPart::header ? kind.header : kind.lines)->columns;
}

bool FieldUse::is_warehouse(BillPart part, std::string_view field) const { return has_field(warehouses, part, field); }

bool FieldUse::is_ignored(BillPart part, std::string_view field) const { return has_field(ignored, part, field); }

bool FieldUse::puts_minus_signs_together(BillPart part) const { return has_field(minus_minus, part, "quantity"); }

std::span<const FieldUse> field_uses() { return uses; }

const FieldUse& field_use_of(const BillKind& kind) {
    const auto found = std::ranges::find(uses, kind.name, &FieldUse::kind);
    if (found == std::end(uses)) throw std::out_of_range("no kind of bill " + std::string(kind.name));
    return *found;
}

bool is_left_out(const Record& record, TextView column) {
    const Variant* const value = record.find(column);
    if (value == nullptr || value->is<Null>()) return true;
    if (const Text* const text = value->get_if<Text>()) return trim_blanks(*text).empty();
    return to_double(*value) == 0;
}

std::vector<FieldFault> field_faults(const Bill& bill) {
    std::vector<FieldFault> faults;
    const FieldUse& use = field_use_of(*bill.kind);
    struct Judged {
        const BillColumn* column;
        bool is_warehouse;
    };
    const auto judged = [&](BillPart part) {
        std::vector<Judged> columns;
        for (const BillColumn& column : columns_of(*bill.kind, part)) {
            const bool is_warehouse = use.is_warehouse(part, column.field);
            if (is_warehouse || use.is_ignored(part, column.field)) columns.push_back({&column, is_warehouse});
        }
        return columns;
    };
    const auto look_at = [&](const std::vector<Judged>& columns, const Record& record, BillPart part,
                             std::size_t line) {
        for (const auto& [column, is_warehouse] : columns) {
            const bool is_missing = is_left_out(record, column->column);
            if (is_missing == is_warehouse) faults.push_back({part, line, column->field, is_missing});
        }
    };
    look_at(judged(BillPart::header), bill.header, BillPart::header, 0);
    const std::vector<Judged> columns = judged(BillPart::line);
    for (std::size_t i = 0; i < bill.lines.size(); ++i) look_at(columns, bill.lines[i], BillPart::line, i + 1);
    return faults;
}

}  // namespace vantlo
