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

/// A bill's name: its kind and its id.
using BillName = std::pair<Text, Text>;

struct HistoryEntry {
    BillName bill;
    Text number;
    Text action;
    Text content;
};

Text text_of(const Variant& value) { return value.is<Null>() ? Text() : to_text(value); }

std::string shown(const Text& first, const Text& second) { return to_utf8(first + u" " + second); }

/// A value as the tables of this system keep it, whatever the type of the column that it comes from. A number that stands
/// as a text stays one.
Variant in_own_type(const Variant& value, ColumnType type) {
    if (value.is<Null>()) return value;
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

Record read_record(Recordset& rows, std::span<const BillColumn> columns) {
    const Record read = read_row(rows, columns);
    Record record;
    for (const BillColumn& column : columns) {
        record.set(column.column, in_own_type(read.value(column.column), column.type));
    }
    return record;
}

std::map<Text, std::vector<Record>> read_lines(NativeConnection& database, const BillSource& source) {
    const BillTable& table = *source.lines;
    std::map<Text, std::vector<Record>> lines;
    const RecordsetVariable rows = database.execute(source.select_lines);
    for (; !rows->eof(); rows->move_next()) {
        lines[text_of(rows->field(table.id_column))].push_back(read_record(*rows, table.columns));
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
        std::map<Text, std::vector<Record>> lines_of = read_lines(database, source);
        const RecordsetVariable rows = database.execute(source.select_headers);
        for (; !rows->eof(); rows->move_next()) {
            const Text id = text_of(rows->field(header.id_column));
            const Text kind_name = text_of(rows->field(u"Kind"));
            const BillKind* const kind = find_bill_kind(to_utf8(kind_name));
            auto own_lines = lines_of.extract(id);
            if (kind == nullptr || kind->header->name != header.name) {
                timeline.unknown_kind.push_back(shown(kind_name, id));
                continue;
            }
            Bill bill{kind, id, read_record(*rows, header.columns), {}};
            if (!own_lines.empty()) bill.lines = std::move(own_lines.mapped());
            bills_.insert_or_assign(BillName{kind_name, id}, std::move(bill));
        }
        for (const auto& [id, rest] : lines_of) timeline.headless.push_back(shown(source.lines->name, id));
    }

    std::map<BillName, Bill> bills_;
};

std::vector<HistoryEntry> read_history(NativeConnection& database) {
    std::vector<HistoryEntry> history;
    const RecordsetVariable rows = database.execute(u"select * from BillHistory order by EntryNo");
    for (; !rows->eof(); rows->move_next()) {
        history.push_back({{text_of(rows->field(u"Kind")), text_of(rows->field(u"BillId"))},
                           text_of(rows->field(u"EntryNo")),
                           text_of(rows->field(u"Action")),
                           text_of(rows->field(u"Content"))});
    }
    return history;
}

/// Makes the timeline backwards, as what a saved bill held is told by the entry that reversed it, or else by the tables.
class Timeline {
public:
    explicit Timeline(NativeConnection& database) : stored_(database, timeline_), history_(read_history(database)) {}

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
            timeline_.events.push_back({Action::reverse, *bill, true});
        } else {
            note_unreadable(entry, account);
        }
        reversed_.insert_or_assign(entry.bill, std::move(bill));
    }

    void take_saving(const HistoryEntry& entry) {
        auto reversed = reversed_.extract(entry.bill);
        std::optional<Bill> bill = reversed.empty() ? stored_.take(entry.bill) : std::move(reversed.mapped());
        if (bill) {
            timeline_.events.push_back({Action::save, *std::move(bill), true});
        } else if (reversed.empty()) {
            timeline_.lost.push_back(shown(entry.bill.first, entry.bill.second));
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
        timeline_.unreadable.push_back(shown(entry.bill.first, entry.bill.second) + " (BillHistory " +
                                       to_utf8(entry.number) + "): " + why);
    }

    BillTimeline timeline_;
    StoredBills stored_;
    std::vector<HistoryEntry> history_;
    std::map<BillName, std::optional<Bill>> reversed_;  // later than the entry at hand; empty if it cannot be read
};

}  // namespace

BillTimeline read_timeline(NativeConnection& database) { return Timeline(database).read(); }

}  // namespace vantlo
