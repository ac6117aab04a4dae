#include "audit/adoption.h"

#include <span>

#include "audit/ledger_entry.h"
#include "audit/ledger_table.h"

namespace vantlo {

namespace {

constexpr std::int64_t longest_key = 255;
constexpr std::int64_t most_decimals = 4;
constexpr std::int64_t most_digits_before = 15;  // of money and numeric(19,4)

/// Whether a movement holds every value of the column exactly. Floating point counts as four decimals.
bool holds_quantities(const LedgerColumn& column) {
    for (const char* const type : {"money", "smallmoney", "smallint", "tinyint", "mediumint", "int", "integer", "real",
                                   "float", "double", "double precision"}) {
        if (column.type == type) return true;
    }
    if (column.type != "numeric" && column.type != "decimal") return false;
    return column.decimals >= 0 && column.decimals <= most_decimals &&
           column.digits - column.decimals <= most_digits_before;
}

bool holds_key_text(const LedgerColumn& column) {
    if (column.type == "text" && column.length < 0) return true;  // PostgreSQL's, which the journal has too
    return column.type.find("char") != std::string::npos && column.length > 0 && column.length <= longest_key;
}

bool holds_status(const LedgerColumn& column) {
    return column.type.find("int") != std::string::npos && column.type != "bigint";
}

}  // namespace

std::vector<AdoptionNote> look_before_adopting(NativeConnection& database) {
    const LedgerTable table = read_ledger_table(database);
    if (!table.is_described) return {{AdoptionFinding::no_triggers, {}}};
    std::vector<AdoptionNote> notes;
    const auto check_types = [&](std::span<const char16_t* const> names, AdoptionFinding finding,
                                 bool (*holds)(const LedgerColumn&)) {
        for (const char16_t* const name : names) {
            const LedgerColumn* const column = table.column(to_utf8(name));
            if (column != nullptr && !holds(*column)) notes.push_back({finding, column->name + " " + column->type});
        }
    };
    if (database.dialect().name == "sqlite") return notes;  // which keeps any value in any column
    const std::span<const char16_t* const> key = key_columns;
    check_types(quantity_columns, AdoptionFinding::quantity_type, holds_quantities);
    check_types(key.first(status_part), AdoptionFinding::key_type, holds_key_text);
    check_types(key.subspan(status_part), AdoptionFinding::key_type, holds_status);
    return notes;
}

}  // namespace vantlo
