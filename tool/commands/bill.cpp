#include <fmt/ranges.h>
#include <unistd.h>

#include <algorithm>
#include <iostream>
#include <utility>

#include "bookkeeping/rehearsal_copy.h"
#include "bookkeeping/stored_bill.h"
#include "output/list_output.h"
#include "output/table_output.h"
#include "output/visible.h"
#include "output/wrapped_text.h"
#include "reports/lists.h"
#include "tool/commands/command.h"

namespace vantlo {

namespace words {

// clang-format off
constexpr Message bill_about     = {"显示一张已保存的单据以及它对台账的影响", "Show a stored bill and the ledger rows that it moves"};
constexpr Message bill_example   = {"显示入库单 R1001", "Show the stock-in bill R1001"};
constexpr Message bill_id_example = {"编号只属于一张单据时，写编号即可", "The id alone, where only one bill has it"};
constexpr Message kind_or_id     = {"单据种类；只有一张单据有此编号时可省略", "Kind of bill; left out where only one bill has the id"};
constexpr Message no_bill_of_id  = {"没有编号为“{}”的单据", "there is no bill with the id \"{}\""};
constexpr Message several_bills  = {"有几张单据的编号为“{}”，请写明种类：{}", "several bills have the id \"{}\", say of which kind: {}"};
constexpr Message moved_row      = {"台账变动", "Ledger row moved"};
// clang-format on

}  // namespace words

namespace {

struct Named {
    std::string kind;
    std::string id;
};

/// Keeps what the latest bill changed.
class LatestChanges final : public BookkeepingObserver {
public:
    void ends(const std::vector<LedgerChange>& changes) override { changes_ = changes; }
    [[nodiscard]] const std::vector<LedgerChange>& changes() const { return changes_; }

private:
    std::vector<LedgerChange> changes_;
};

std::string cell(const Variant& value) { return value.is<Null>() ? "null" : to_utf8(to_text(value)); }

/// A field as people read it: in English as bill files call it.
std::string field_title(std::string_view field, Language language) {
    return language == Language::english ? std::string(field) : title_of(field, language);
}

/// The fields of a bill file beside their values; two columns that one field fills are shown once.
void write_header(const Bill& bill, Language language) {
    if (language == Language::english) std::cout << bill.kind->name << ' ';
    std::cout << bill.kind->chinese_name << ' ' << to_utf8(bill.id) << '\n';
    for (const BillColumn& column : bill.kind->header->columns) {
        constexpr std::size_t title_width = 10;
        const std::string title = field_title(column.field, language);
        const std::string beginning =
            "  " + title + std::string(title_width - std::min(title_width, cell_width(title)) + 1, ' ');
        const std::string value = cell(bill.header.value(column.column));
        const std::optional<std::size_t> width = terminal_width(STDOUT_FILENO);
        const std::size_t indent = cell_width(beginning);
        std::cout << beginning << (width ? wrapped_text(visible(value), *width, indent) : value) << '\n';
    }
}

void write_lines(const Bill& bill, Language language) {
    std::vector<TableOutput::Column> titles = {{"#", TableOutput::Align::right}};
    std::vector<BillColumn> columns;
    for (const BillColumn& column : bill.kind->lines->columns) {
        if (!columns.empty() && columns.back().field == column.field) continue;
        columns.push_back(column);
        const bool is_text = column.type == ColumnType::text;
        titles.push_back(
            {field_title(column.field, language), is_text ? TableOutput::Align::left : TableOutput::Align::right});
    }
    TableOutput table(titles);
    for (std::size_t i = 0; i < bill.lines.size(); ++i) {
        std::vector<std::string> cells = {std::to_string(i + 1)};
        for (const BillColumn& column : columns) cells.push_back(cell(bill.lines[i].value(column.column)));
        table.add_row(cells);
    }
    std::cout << '\n' << table.text();
}

void write_moves(const std::vector<LedgerChange>& changes, const CommonOptions& common) {
    constexpr auto right = TableOutput::Align::right;
    TableOutput table({{common.say(words::moved_row)},
                       {common.say(words::received), right},
                       {common.say(words::issued), right},
                       {common.say(words::on_hand), right}});
    const auto moved = [](const LedgerChange& change, Currency LedgerRow::*counter) {
        const Currency before = change.before ? (*change.before).*counter : Currency();
        const Currency difference = (*change.after).*counter - before;
        return (difference > Currency() ? "+" : "") + quantity_text(difference);
    };
    for (const LedgerChange& change : changes) {
        if (!change.after) continue;
        table.add_row({key_text(*change.after, common.language), moved(change, &LedgerRow::received),
                       moved(change, &LedgerRow::issued), moved(change, &LedgerRow::on_hand)});
    }
    std::cout << '\n' << table.text();
}

/// The kind of the one bill with that id.
/// Errors   Reason::no_such_bill if there is none, Reason::bad_input if there are several.
std::string only_kind_of(NativeConnection& database, const std::string& id, const CommonOptions& common) {
    const Listing bills = list_bills(database, {.ids = {from_utf8(id)}});
    if (bills.rows.empty()) throw TaskError(Reason::no_such_bill, common.say(words::no_bill_of_id, id));
    std::vector<std::string> kinds;
    for (const std::vector<Variant>& row : bills.rows) kinds.push_back(cell(row[*bills.find("kind")]));
    if (kinds.size() > 1)
        throw TaskError(Reason::bad_input, common.say(words::several_bills, id, fmt::join(kinds, ", ")));
    return kinds.front();
}

/// Takes the bill back and posts it again, on a copy in memory: the second is what it moves.
ExitCode show_bill(const CommonOptions& common, Named named) {
    if (named.id.empty()) {
        named.id = std::exchange(named.kind, {});
        named.kind = only_kind_of(*common.read(), named.id, common);
    }
    const BillKind* const kind = known_kind(common, named.kind);
    if (kind == nullptr) return ExitCode::usage;
    const auto database = common.read();
    const std::optional<Bill> stored = stored_bill(*database, *kind, from_utf8(named.id));
    std::vector<const Bill*> copied;
    if (stored) copied.push_back(&*stored);
    const auto copy = copy_for_rehearsal(*database, {}, copied);
    const auto latest = std::make_shared<LatestChanges>();
    Bookkeeping rehearsal([&] { return copy; }, latest, common.language, GuardRules{.is_forced = true});
    const Bill bill = rehearsal.reverse(*kind, from_utf8(named.id));
    rehearsal.save(bill);
    write_header(bill, common.language);
    write_lines(bill, common.language);
    write_moves(latest->changes(), common);
    return ExitCode::done;
}

}  // namespace

void add_bill(CLI::App& app, CommandCall& call) {
    const CommonOptions& common = call.common;
    CLI::App* const command = add_command(
        app, common, "bill", words::bill_about,
        {{"vantlo bill stock-in R1001", words::bill_example}, {"vantlo bill R1001", words::bill_id_example}});
    const auto named = std::make_shared<Named>();
    command->add_option("KIND", named->kind, common.say(words::kind_or_id))->required();
    command->add_option("ID", named->id, common.say(words::bill_id));
    command->callback(
        [&call, named] { call.work = [&common = call.common, named] { return show_bill(common, *named); }; });
}

}  // namespace vantlo
