#include <iostream>

#include "ado/native/snapshot.h"
#include "output/card_text.h"
#include "output/ledger_table.h"
#include "reports/stock.h"
#include "reports/stock_card.h"
#include "tool/commands/command.h"
#include "tool/commands/list_options.h"

namespace vantlo {

namespace words {

// clang-format off
constexpr Message card_about     = {"商品的库存卡：每一次变动及其后的结存", "The stock cards of goods: each movement, and the balance after it"};
constexpr Message card_example   = {"商品 G001 在各仓库的库存卡", "The cards of goods G001 in every warehouse"};
constexpr Message card_period_example = {"仓库 W01 三月份的变动", "What moved in warehouse W01 in March"};
constexpr Message card_goods     = {"商品编号；* 和 ? 为通配符", "The goods' ids; * and ? stand for any signs"};
constexpr Message card_warehouse = {"只看此仓库", "Only this warehouse"};
constexpr Message card_model1    = {"只看此型号一", "Only this model 1"};
constexpr Message card_model2    = {"只看此型号二", "Only this model 2"};
constexpr Message card_status    = {"只看此状态", "Only this status"};
constexpr Message card_without_bill = {"只看无单据的变动", "Only movements that no bill made"};
constexpr Message card_heading   = {"{}，{}，状态 {}", "{}, {}, status {}"};
constexpr Message counted_in     = {"（{}）", " ({})"};
constexpr Message opening_line   = {"期初", "opening"};
constexpr Message closing_line   = {"期末", "closing"};
constexpr Message no_movements   = {"没有符合条件的变动。", "nothing moved there."};
// clang-format on

}  // namespace words

namespace {

constexpr std::string_view opening = "opening";
constexpr std::string_view closing = "closing";

/// The models of a row, as they stand behind its goods.
std::string goods_of(const LedgerRow& row) {
    std::string goods = named(row.goods, row.goods_name);
    for (const Text* const part : {&row.model1, &row.model2}) {
        if (!part->empty()) goods += " " + to_utf8(*part);
    }
    return goods;
}

std::string heading_of(const LedgerRow& row, const CommonOptions& common) {
    const std::string unit = row.unit.empty() ? "" : common.say(words::counted_in, to_utf8(row.unit));
    return common.say(words::card_heading, named(row.warehouse, row.warehouse_name), goods_of(row),
                      to_utf8(row.status)) +
           unit;
}

/// One card as a table between its opening and closing lines.
Listing listing_of(const StockCard& card, const CommonOptions& common) {
    Listing list{{{"time", CellType::time},
                  {"entry", CellType::text},
                  {"bill", CellType::text},
                  {"line", CellType::number},
                  {"received", CellType::quantity},
                  {"issued", CellType::quantity},
                  {"balance", CellType::quantity},
                  {"by", CellType::text}},
                 {}};
    const auto text = [](const std::string& utf8) { return Variant(from_utf8(utf8)); };
    list.rows.push_back(
        {Null(), text(common.say(words::opening_line)), Null(), Null(), Null(), Null(), card.opening, Null()});
    for (const CardEntry& entry : card.entries) {
        list.rows.push_back({entry.moved_at, text(account_of(entry, common.language)), entry.bill_id, entry.line,
                             entry.received, entry.issued, entry.balance, text(by_whom(entry))});
    }
    list.rows.push_back({Null(), text(common.say(words::closing_line)), Null(), Null(), card.row.received,
                         card.row.issued, card.closing, Null()});
    return list;
}

/// All cards as one list for programs: the key in each row, `entry` as the journal names it, or opening or closing.
Listing flat(const std::vector<StockCard>& cards) {
    Listing list;
    for (const char* const column : {"warehouse", "goods", "model1", "model2", "status", "unit"})
        list.columns.push_back({column, CellType::text});
    list.columns[4].type = CellType::number;
    list.columns.push_back({"time", CellType::time});
    for (const char* const column : {"entry", "kind", "bill"}) list.columns.push_back({column, CellType::text});
    list.columns.push_back({"line", CellType::number});
    list.columns.push_back({"member", CellType::text});
    for (const char* const column : {"received", "issued", "balance"})
        list.columns.push_back({column, CellType::quantity});
    for (const char* const column : {"user", "program"}) list.columns.push_back({column, CellType::text});
    for (const StockCard& card : cards) {
        const auto add = [&](std::vector<Variant> cells) {
            const LedgerRow& row = card.row;
            std::vector<Variant>& whole = list.rows.emplace_back();
            for (const Text* const part : {&row.warehouse, &row.goods, &row.model1, &row.model2})
                whole.emplace_back(*part);
            whole.push_back(status_cell(row.status));
            whole.emplace_back(row.unit);
            whole.insert(whole.end(), cells.begin(), cells.end());
        };
        const Null nothing;
        add({nothing, from_utf8(opening), nothing, nothing, nothing, nothing, nothing, nothing, card.opening, nothing,
             nothing});
        for (const CardEntry& entry : card.entries) {
            add({entry.moved_at, entry.action, entry.bill_kind, entry.bill_id, entry.line, entry.member, entry.received,
                 entry.issued, entry.balance, entry.user, entry.program});
        }
        add({nothing, from_utf8(closing), nothing, nothing, nothing, nothing, card.row.received, card.row.issued,
             card.closing, nothing, nothing});
    }
    return list;
}

ExitCode show_cards(const CommonOptions& common, const CardsWanted& wanted, const ListFormat& format) {
    const auto database = common.read();
    require_journal(*database, common);
    const Snapshot snapshot(*database);
    const std::vector<StockCard> cards = read_cards(*database, wanted);
    if (format.name != "table") {
        write_formatted(flat(cards), {}, format, common);
        return ExitCode::done;
    }
    if (cards.empty()) std::cerr << "vantlo: " << common.say(words::no_movements) << '\n';
    for (const StockCard& card : cards) {
        if (&card != &cards.front()) std::cout << '\n';
        std::cout << heading_of(card.row, common) << '\n';
        write_formatted(listing_of(card, common), {}, format, common);
    }
    return ExitCode::done;
}

}  // namespace

void add_card(CLI::App& app, CommandCall& call) {
    const CommonOptions& common = call.common;
    CLI::App* const command =
        add_command(app, common, "card", words::card_about,
                    {{"vantlo card G001", words::card_example},
                     {"vantlo card '*' --warehouse W01 --from 2024-03 --to 2024-03", words::card_period_example}});
    const auto wanted = std::make_shared<CardsWanted>();
    const auto format = std::make_shared<ListFormat>();
    add_patterns(*command, "GOODS", wanted->goods, common.say(words::card_goods));
    add_patterns(*command, "--warehouse", wanted->warehouses, common.say(words::card_warehouse));
    add_patterns(*command, "--model1", wanted->models1, common.say(words::card_model1));
    add_patterns(*command, "--model2", wanted->models2, common.say(words::card_model2));
    command->add_option("--status", wanted->status, common.say(words::card_status));
    command->add_flag("--without-bill", wanted->without_bill, common.say(words::card_without_bill));
    add_period(*command, common, wanted->period);
    add_format_options(*command, common, *format);
    command->get_option("GOODS")->required();
    command->callback([&call, wanted, format] {
        call.work = [&common = call.common, wanted, format] { return show_cards(common, *wanted, *format); };
    });
}

}  // namespace vantlo
