#include "audit/repair_journal.h"

#include <algorithm>
#include <map>

#include "audit/ledger_entry.h"
#include "automation/calendar.h"
#include "automation/error.h"
#include "automation/number_text.h"
#include "automation/text_value.h"

namespace vantlo {

namespace {

Text number_literal(std::int64_t number) { return from_utf8(std::to_string(number)); }

std::optional<std::int64_t> number_of(const Variant& value) {
    if (value.is<Null>()) return std::nullopt;
    return static_cast<std::int64_t>(to_double(value));
}

/// The quantity that a literal stands for, as a number; `null` for none.
Text quantity_literal(const RowImage& image, TextView column) {
    const Text* const literal = image.literal(column);
    if (literal == nullptr) return u"null";
    const bool is_quoted = literal->size() > 2 && literal->front() == u'\'' && literal->back() == u'\'';
    try {
        const auto quantity =
            currency_from_text(is_quoted ? TextView(*literal).substr(1, literal->size() - 2) : TextView(*literal));
        return quantity ? number_text(*quantity) : Text(u"null");
    } catch (const Failure&) {
        return u"null";  // no ledger quantity is as large
    }
}

void enter_row(NativeConnection& database, std::int64_t number, const Text& cause, std::optional<std::int64_t> undone,
               const RowImage* before, const RowImage* after) {
    Text columns = u"RepairNo,UndoneNo,Cause,Action";
    Text values = number_literal(number) + u"," + (undone ? number_literal(*undone) : Text(u"null")) + u"," +
                  exact_literal(cause) + u"," +
                  exact_literal(before == nullptr  ? u"insert"
                                : after == nullptr ? u"delete"
                                                   : u"update");
    const auto add = [&](const Text& column, const Text& value) {
        columns += u"," + column;
        values += u"," + value;
    };
    const RowImage& known = before != nullptr ? *before : *after;
    for (const char16_t* const column : key_columns) {
        const Text* const literal = known.literal(column);
        add(column, literal == nullptr ? Text(u"null") : *literal);
    }
    for (const char16_t* const column : quantity_columns) {
        add(Text(u"Before") + column, before == nullptr ? Text(u"null") : quantity_literal(*before, column));
        add(Text(u"After") + column, after == nullptr ? Text(u"null") : quantity_literal(*after, column));
    }
    add(u"BeforeRow", before == nullptr ? Text(u"null") : exact_literal(text_of(*before)));
    add(u"AfterRow", after == nullptr ? Text(u"null") : exact_literal(text_of(*after)));
    database.run(u"insert into RepairJournal(" + columns + u") values(" + values + u")");
}

}  // namespace

std::int64_t next_repair_number(NativeConnection& database) {
    const RecordsetVariable rows = database.execute(u"select max(RepairNo) as n from RepairJournal");
    return number_of(rows->field(u"n")).value_or(0) + 1;
}

void enter_repair(NativeConnection& database, std::int64_t number, const KeyRepair& repair,
                  std::optional<std::int64_t> undone) {
    for (std::size_t i = 0; i < std::max(repair.before.size(), repair.after.size()); ++i) {
        enter_row(database, number, repair.cause, undone, i < repair.before.size() ? &repair.before[i] : nullptr,
                  i < repair.after.size() ? &repair.after[i] : nullptr);
    }
}

std::vector<PastRepair> past_repairs(NativeConnection& database) {
    std::map<std::optional<std::int64_t>, PastRepair> repairs;
    const RecordsetVariable rows = database.execute(u"select * from RepairJournal order by EntryNo");
    for (; !rows->eof(); rows->move_next()) {
        const std::optional<std::int64_t> number = number_of(rows->field(u"RepairNo"));
        PastRepair& repair = repairs[number];
        repair.number = number;
        const Variant time = rows->field(u"RepairedAt");
        const Date* const date = time.get_if<Date>();
        repair.time = date == nullptr ? text_or_empty(time) : format_date_time(*date);
        const Text cause = text_or_empty(rows->field(u"Cause"));
        if (std::ranges::find(repair.causes, cause) == repair.causes.end()) repair.causes.push_back(cause);
        ++repair.rows;
        repair.undone = number_of(rows->field(u"UndoneNo"));
    }
    std::vector<PastRepair> list;
    for (const auto& [number, repair] : repairs) {
        const auto undone = repairs.find(repair.undone);
        if (repair.undone && undone != repairs.end()) undone->second.undone_by = number;
    }
    for (auto& [number, repair] : repairs) list.push_back(std::move(repair));
    return list;
}

RepairRecord read_repair(NativeConnection& database, std::int64_t number) {
    RepairRecord record;
    const RecordsetVariable rows = database.execute(u"select * from RepairJournal where RepairNo=" +
                                                    number_literal(number) + u" order by EntryNo");
    std::map<Text, std::size_t> key_at;
    for (; !rows->eof(); rows->move_next()) {
        const Text before = text_or_empty(rows->field(u"BeforeRow"));
        const Text after = text_or_empty(rows->field(u"AfterRow"));
        const std::optional<RowImage> old_row = image_from(before);
        const std::optional<RowImage> new_row = image_from(after);
        if ((!old_row && !before.empty()) || (!new_row && !after.empty()) || (!old_row && !new_row)) {
            record.is_readable = false;
            continue;
        }
        const auto [place, is_new] = key_at.emplace(condition_of(old_row ? *old_row : *new_row), record.keys.size());
        if (is_new) record.keys.push_back({text_or_empty(rows->field(u"Cause")), {}, {}});
        KeyRepair& key = record.keys[place->second];
        if (old_row) key.before.push_back(*old_row);
        if (new_row) key.after.push_back(*new_row);
    }
    const RecordsetVariable undoing =
        database.execute(u"select max(RepairNo) as n from RepairJournal where UndoneNo=" + number_literal(number));
    record.undone_by = number_of(undoing->field(u"n"));
    return record;
}

}  // namespace vantlo
