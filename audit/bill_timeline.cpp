#include "audit/bill_timeline.h"

#include <algorithm>
#include <map>
#include <optional>
#include <tuple>

#include "automation/calendar.h"
#include "bookkeeping/bill_history.h"
#include "bookkeeping/shop_description.h"

namespace vantlo {

namespace {

using Action = BillEvent::Action;

struct HistoryEntry {
    BillName bill;
    Text number;
    Text action;
    Text content;
    std::optional<Date> done_at;
};

std::optional<Date> date_or_nothing(const Variant& value) {
    const Date* const date = value.get_if<Date>();
    return date == nullptr ? std::nullopt : std::optional(*date);
}

/// A value as the tables of this system keep it, whatever the type of the column that it comes from. A number that stands
/// as a text stays one.
Variant in_own_type(const Variant& value, ColumnType type) {
    if (value.is<Null>() || !is_of_type(value, type)) return value;
    const Text* const text = value.get_if<Text>();
    switch (type) {
        case ColumnType::text: return to_text(value);
        case ColumnType::single: return text == nullptr ? Variant(static_cast<float>(to_double(value))) : value;
        case ColumnType::whole_number: return text == nullptr ? Variant(to_long(value)) : value;
        case ColumnType::date: break;
    }
    const std::optional<Date> date = text == nullptr ? std::nullopt : date_from_text(*text);
    return date ? Variant(*date) : value;
}

/// Reads headers and lines, and keeps apart what in them is broken.
class RecordReader {
public:
    RecordReader(const BillTable& table, std::vector<BrokenValue>& broken) : table_(table), broken_(broken) {}

    Record read(Recordset& rows, const Text& row) {
        const Record read = read_row(rows, table_.columns);
        Record record;
        for (const BillColumn& column : table_.columns) {
            const Variant& value = read.value(column.column);
            if (!is_of_type(value, column.type)) broken_.push_back({table_.name, row, column.column, value});
            record.set(column.column, in_own_type(value, column.type));
        }
        return record;
    }

    /// The text of a column by which rows are told apart; nothing if it has none.
    std::optional<Text> name(Recordset& rows, const char16_t* column) {
        const Variant value = rows.field(column);
        std::optional<Text> text = text_or_nothing(value);
        if (!text) broken_.push_back({table_.name, u"", column, value});
        return text;
    }

private:
    const BillTable& table_;
    std::vector<BrokenValue>& broken_;
};

std::map<Text, std::vector<Record>> read_lines(NativeConnection& database, const BillSource& source,
                                               std::vector<BrokenValue>& broken) {
    const BillTable& table = *source.lines;
    std::map<Text, std::vector<Record>> lines;
    RecordReader reader(table, broken);
    const RecordsetVariable rows = database.execute(source.select_lines);
    for (; !rows->eof(); rows->move_next()) {
        const std::optional<Text> id = reader.name(*rows, table.id_column);
        if (!id) continue;
        const Text number = text_or_nothing(rows->field(u"ItemNo")).value_or(u"?");
        lines[*id].push_back(reader.read(*rows, *id + u" " + number));
    }
    return lines;
}

class StoredBills {
public:
    StoredBills(NativeConnection& database, BillTimeline& timeline) {
        const std::vector<BillSource> sources = bill_sources(database, Language::english);
        timeline.has_bills = !sources.empty();
        for (const BillSource& source : sources) read_source(database, source, timeline);
    }

    /// Takes a bill out. Returns nothing if there is none of that name.
    std::optional<Bill> take(const BillName& name) {
        const auto found = bills_.extract(name);
        if (found.empty()) return std::nullopt;
        return std::move(found.mapped());
    }

    /// Those that nobody took, by date and id.
    std::vector<Bill> rest() {
        std::vector<Bill> bills;
        for (auto& [name, bill] : bills_) bills.push_back(std::move(bill));
        const auto order = [](const Bill& bill) {
            const Date* const date = bill.header.value(u"BillDate").get_if<Date>();
            return std::tuple(date == nullptr ? Date{} : *date, bill.id);
        };
        std::ranges::stable_sort(bills, {}, order);
        return bills;
    }

private:
    void read_source(NativeConnection& database, const BillSource& source, BillTimeline& timeline) {
        const BillTable& header = *source.header;
        std::map<Text, std::vector<Record>> lines_of = read_lines(database, source, timeline.broken);
        RecordReader reader(header, timeline.broken);
        const RecordsetVariable rows = database.execute(source.select_headers);
        for (; !rows->eof(); rows->move_next()) {
            const std::optional<Text> id = reader.name(*rows, header.id_column);
            if (!id) continue;
            const Text kind_name = reader.name(*rows, u"Kind").value_or(u"?");
            const BillKind* const kind = find_bill_kind(to_utf8(kind_name));
            auto own_lines = lines_of.extract(*id);
            if (kind == nullptr || kind->header->name != header.name) {
                timeline.unknown_kind.push_back({{kind_name, *id}});
                continue;
            }
            Bill bill{kind, *id, reader.read(*rows, *id), {}};
            if (!own_lines.empty()) bill.lines = std::move(own_lines.mapped());
            bills_.insert_or_assign(BillName{kind_name, *id}, std::move(bill));
        }
        for (const auto& [id, rest] : lines_of) timeline.headless.push_back({{source.lines->name, id}});
    }

    std::map<BillName, Bill> bills_;
};

std::vector<HistoryEntry> read_history(NativeConnection& database, std::vector<BrokenValue>& broken) {
    std::vector<HistoryEntry> history;
    const RecordsetVariable rows = database.execute(u"select * from BillHistory order by EntryNo");
    for (; !rows->eof(); rows->move_next()) {
        const Text number = text_or_nothing(rows->field(u"EntryNo")).value_or(u"?");
        const auto text = [&](const char16_t* column) {
            const Variant value = rows->field(column);
            const std::optional<Text> read = text_or_nothing(value);
            if (!read) broken.push_back({u"BillHistory", number, column, value});
            return read.value_or(u"");
        };
        history.push_back({{text(u"Kind"), text(u"BillId")},
                           number,
                           text(u"Action"),
                           text(u"Content"),
                           date_or_nothing(rows->field(u"DoneAt"))});
    }
    return history;
}

/// Makes the timeline backwards, as what a saved bill held is told by the entry that reversed it, or else by the tables.
class Timeline {
public:
    explicit Timeline(NativeConnection& database)
        : stored_(database, timeline_), history_(read_history(database, timeline_.broken)) {}

    BillTimeline read() {
        for (auto entry = history_.rbegin(); entry != history_.rend(); ++entry) take(*entry);
        take_unrecorded();
        std::ranges::reverse(timeline_.events);
        return std::move(timeline_);
    }

private:
    void take(const HistoryEntry& entry) {
        const BillKind* const kind = find_bill_kind(to_utf8(entry.bill.first));
        if (kind == nullptr) {
            note_unreadable(entry, "no such kind of bill");
        } else if (entry.action == history_action::reverse) {
            take_reversal(*kind, entry);
        } else if (entry.action == history_action::save) {
            take_saving(entry);
        } else {
            note_unreadable(entry, "no such action: " + to_utf8(entry.action));
        }
    }

    void take_reversal(const BillKind& kind, const HistoryEntry& entry) {
        std::string account;
        std::optional<Bill> bill = bill_from_content(kind, entry.bill.second, entry.content, account);
        if (bill) {
            timeline_.events.push_back({Action::reverse, *bill, true, entry.done_at});
        } else {
            note_unreadable(entry, account);
        }
        reversed_.insert_or_assign(entry.bill, std::move(bill));
    }

    void take_saving(const HistoryEntry& entry) {
        auto reversed = reversed_.extract(entry.bill);
        std::optional<Bill> bill = reversed.empty() ? stored_.take(entry.bill) : std::move(reversed.mapped());
        if (bill) {
            timeline_.events.push_back({Action::save, *std::move(bill), true, entry.done_at});
        } else if (reversed.empty()) {
            timeline_.lost.push_back({entry.bill, entry.done_at});
        }
    }

    /// What the history does not say was saved comes before all that it says.
    void take_unrecorded() {
        std::vector<Bill> unrecorded = stored_.rest();
        for (auto& [name, bill] : reversed_) {
            if (bill) unrecorded.insert(unrecorded.begin(), *std::move(bill));
        }
        for (auto bill = unrecorded.rbegin(); bill != unrecorded.rend(); ++bill) {
            timeline_.events.push_back({Action::save, std::move(*bill), false});
        }
    }

    void note_unreadable(const HistoryEntry& entry, const std::string& why) {
        timeline_.unreadable.push_back(
            {entry.bill, entry.done_at, "(BillHistory " + to_utf8(entry.number) + "): " + why});
    }

    BillTimeline timeline_;
    StoredBills stored_;
    std::vector<HistoryEntry> history_;
    std::map<BillName, std::optional<Bill>> reversed_;  // later than the entry at hand; empty if it cannot be read
};

}  // namespace

BillName name_of(const Bill& bill) { return {from_utf8(bill.kind->name), bill.id}; }

BillTimeline read_timeline(NativeConnection& database) { return Timeline(database).read(); }

}  // namespace vantlo
