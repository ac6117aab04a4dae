#include "audit/checks.h"

#include <algorithm>
#include <map>
#include <set>

#include "audit/unconverted_columns.h"

namespace vantlo {

namespace {

constexpr std::string_view ledger_quantities[] = {"inventory.inqty", "inventory.outqty", "inventory.currentqty"};
constexpr std::string_view without_literal[] = {"decimal", "numeric", "bigint", "int8", "number"};
constexpr std::string_view inexact[] = {"real",      "float", "float4",  "float8",   "double", "double precision",
                                        "single",    "int",   "integer", "smallint", "bigint", "tinyint",
                                        "smallmoney"};
/// Character sets, encodings and collations that hold Chinese, by how their names begin.
constexpr std::string_view chinese[] = {"utf", "gb", "big5", "euc_cn", "euc_tw", "ucs2", "chinese"};

bool has(std::span<const std::string_view> list, std::string_view word) {
    return std::ranges::find(list, word) != list.end();
}

/// Whether members write the column's values as they read them.
bool is_unconverted(const std::string& table, const std::string& column) {
    return std::ranges::any_of(unconverted_columns(), [&](const ColumnName& name) {
        return equal_ignoring_case(name.table, from_utf8(table)) && equal_ignoring_case(name.column, from_utf8(column));
    });
}

/// Whether texts of that character set, encoding or collation can be Chinese.
bool holds_chinese(const std::string& characters) {
    const std::string name = in_small_letters(characters);
    return name.ends_with("_utf8") ||
           std::ranges::any_of(chinese, [&](std::string_view beginning) { return name.starts_with(beginning); });
}

/// `decimal(10,2)` -> 2; a type without digits after the point keeps none, `decimal(10)` and `decimal` too.
int scale_of(const std::string& type) {
    const std::size_t comma = type.find(',');
    return comma == std::string::npos ? 0 : std::atoi(type.c_str() + comma + 1);
}

struct RemarkName {
    Remark remark;
    std::string_view name;
};
constexpr RemarkName remark_names[] = {
    {Remark::negative_by_bills, "negative-by-bills"},
    {Remark::unbalanced_by_design, "unbalanced-by-design"},
    {Remark::several_by_design, "several-by-design"},
    {Remark::keys_look_alike, "keys-look-alike"},
    {Remark::lost_bill, "lost-bill"},
    {Remark::unknown_kind, "unknown-kind"},
    {Remark::headless_lines, "headless-lines"},
    {Remark::not_in_journal, "not-in-journal"},
    {Remark::empty_literal, "empty-literal"},
    {Remark::loses_digits, "loses-digits"},
    {Remark::loses_characters, "loses-characters"},
};
static_assert(std::size(remark_names) == static_cast<std::size_t>(Remark::loses_characters) + 1);

std::string shown(const LedgerKey& key) { return to_utf8(condition_of(key)); }

void add_bill_notes(const Verification& verification, std::vector<Note>& notes) {
    const BillTimeline& timeline = verification.timeline;
    const auto is_found = [&](const BillTrace& trace) {
        return std::ranges::count(verification.findings, trace.bill, &Finding::bill) > 0;
    };
    const auto add = [&](Remark remark, const std::vector<BillTrace>& traces) {
        for (const BillTrace& trace : traces) {
            if (!is_found(trace)) notes.push_back({remark, to_utf8(trace.bill.first + u" " + trace.bill.second)});
        }
    };
    add(Remark::lost_bill, timeline.lost);
    add(Remark::unknown_kind, timeline.unknown_kind);
    add(Remark::headless_lines, timeline.headless);
}

}  // namespace

std::string_view name_of(Remark remark) { return std::ranges::find(remark_names, remark, &RemarkName::remark)->name; }

std::vector<Note> notes_of(const Verification& verification) {
    std::vector<Note> notes;
    std::map<LedgerKey, int> rows_by_key;
    std::map<LedgerKey, LedgerKey> key_by_look;
    for (const LedgerEntry& entry : verification.expected.rows) {
        const Amounts amounts = entry.amounts();
        if (amounts[2] < 0) notes.push_back({Remark::negative_by_bills, shown(entry.key)});
        if (!is_balanced(amounts)) notes.push_back({Remark::unbalanced_by_design, shown(entry.key)});
        if (++rows_by_key[entry.key] == 2) notes.push_back({Remark::several_by_design, shown(entry.key)});
        const auto [like, is_new] = key_by_look.emplace(look_of(entry.key), entry.key);
        if (!is_new && like->second != entry.key) {
            notes.push_back({Remark::keys_look_alike, shown(like->second) + "  |  " + shown(entry.key)});
        }
    }
    add_bill_notes(verification, notes);
    for (const LedgerKey& key : verification.unjournaled) notes.push_back({Remark::not_in_journal, shown(key)});
    const std::vector<Note> of_columns = column_notes(verification.columns);
    notes.insert(notes.end(), of_columns.begin(), of_columns.end());
    std::ranges::stable_sort(notes, {}, &Note::remark);
    return notes;
}

std::vector<Note> column_notes(std::span<const ColumnDescription> columns) {
    static const std::set<std::string> tables = {"inventory",      "goodsunit", "stockbill",        "stockbillitems",
                                                 "rgstockbill",    "gborrow",   "rgstockbillitems", "gborrowitems",
                                                 "goodsbillitems", "goodsbill"};
    std::vector<Note> notes;
    for (const auto& [table, column, full_type, characters] : columns) {
        if (!tables.contains(in_small_letters(table))) continue;
        const std::string written = table + "." + column;
        const std::string name = in_small_letters(written);
        const std::string type = in_small_letters(full_type.substr(0, full_type.find('(')));
        const bool is_decimal = type == "decimal" || type == "numeric";
        const auto note = [&](Remark remark, const std::string& what) {
            notes.push_back({remark, written + " " + what});
        };
        if (has(without_literal, type) && is_unconverted(table, column)) note(Remark::empty_literal, full_type);
        if (has(ledger_quantities, name) && (has(inexact, type) || (is_decimal && scale_of(full_type) < 4))) {
            note(Remark::loses_digits, full_type);
        }
        if (!characters.empty() && !holds_chinese(characters))
            note(Remark::loses_characters, full_type + " " + characters);
    }
    return notes;
}

}  // namespace vantlo
