#include <fmt/ranges.h>

#include <iostream>

#include "ado/native/snapshot.h"
#include "automation/calendar.h"
#include "automation/number_text.h"
#include "tool/commands/command.h"
#include "tool/commands/count_file.h"
#include "tool/commands/list_options.h"

namespace vantlo {

namespace words {

// clang-format off
constexpr Message count_about     = {"盘点：写出一个仓库的盘点表，填好后录入，差异存为报损单和报溢单", "Count a warehouse: write a sheet, enter it filled in, save the differences as loss and overage bills"};
constexpr Message count_sheet_example = {"写出仓库 W01 的盘点表，供电子表格程序填写", "A sheet of warehouse W01, to be filled in with a spreadsheet program"};
constexpr Message count_print_example = {"同样，供打印；不显示账面数量", "The same to be printed, without what should be there"};
constexpr Message count_enter_example = {"只看差异，不保存", "Only show the differences"};
constexpr Message count_action    = {"sheet 写出盘点表，enter 录入", "sheet writes one, enter takes it back filled in"};
constexpr Message count_of        = {"sheet 的仓库编号，enter 的文件", "A warehouse's id for sheet, the file for enter"};
constexpr Message count_all_goods = {"也列出仓库中没有的商品", "Goods too of which the warehouse has nothing"};
constexpr Message count_blind     = {"不写账面数量", "Without what should be there"};
constexpr Message count_dry_run   = {"只显示差异，不保存", "Show the differences, and save nothing"};
constexpr Message sheet_without_journal = {"此数据库没有开启库存流水：录入之前台账不得变动，否则须重新盘点。vantlo journal on 开启。",
                                    "this database keeps no journal of movements: until the sheet is entered the ledger must not move, or the count is lost. vantlo journal on begins one."};
constexpr Message blind_needs_journal = {"没有库存流水时，盘点表须写明账面数量", "without a journal of movements a sheet has to tell what should be there"};
constexpr Message unknown_warehouse = {"没有仓库“{}”", "there is no warehouse \"{}\""};
constexpr Message sheet_heading   = {"盘点表 {}，仓库 {}，{}", "Counting sheet {}, warehouse {}, {}"};
constexpr Message is_entered      = {"此盘点表已经录入：{}。要重新录入，先用 vantlo delete 撤销这些单据。", "this sheet was entered already: {}. To enter it again, take these bills back first (vantlo delete)."};
constexpr Message unknown_counted = {"没有这些商品：{}", "there are no such goods: {}"};
constexpr Message has_moved       = {"没有库存流水，而盘点表写出之后台账已有变动：{}。请重新写表盘点。", "there is no journal of movements, and since the sheet was written the ledger has changed: {}. Write a new sheet and count again."};
constexpr Message tells_nothing   = {"没有库存流水，盘点表也未写明账面数量：无从比较", "there is no journal of movements, and the sheet does not tell what should be there: nothing to compare with"};
constexpr Message is_other_journal = {"库存流水不是写出盘点表时的那一份：请重新写表盘点", "the journal of movements is not the one that there was when the sheet was written: write a new sheet and count again"};
constexpr Message not_counted     = {"{} 行未盘点，不变。", "{:row was|rows were} not counted and stay as they are."};
constexpr Message no_difference   = {"盘点 {} 行，与台账一致。", "{:row|rows} counted, all as the ledger has them."};
constexpr Message count_summary   = {"盘点 {} 行，其中 {} 行有差异：将保存 {} 张单据（{}）。", "{:row|rows} counted, {} of them different: {:bill|bills} to be saved ({})."};
constexpr Message count_saved     = {"已保存。", "Saved."};
constexpr Message count_rehearsed = {"未写入任何数据。", "Nothing was written."};
// clang-format on

}  // namespace words

namespace {

struct Wanted {
    std::string action;
    std::string of;
    bool with_all_goods = false;
    bool is_blind = false;
    bool is_dry_run = false;
    ListFormat format;
};

void require_warehouse(NativeConnection& database, const Text& warehouse, const CommonOptions& common) {
    const auto is_it = [&](const Text& table, const Text& column) {
        return !database
                    .execute(u"select " + column + u" from " + table + u" where 1=1" + and_matches(column, {warehouse}))
                    ->eof();
    };
    const bool is_id = warehouse.find_first_of(u"*?") == Text::npos;
    if (!is_id || (!is_it(u"Warehouse", u"ID") && !is_it(u"Inventory", u"WID")))
        throw TaskError(Reason::bad_input, common.say(words::unknown_warehouse, to_utf8(warehouse)));
}

/// The sheet as people fill it in with a pen.
Listing for_paper(Listing sheet) {
    const std::size_t counted = *sheet.find("counted");
    for (std::vector<Variant>& row : sheet.rows) row[counted] = u"________";
    for (ListColumn& column : sheet.columns) {
        if (column.name == "counted") column.type = CellType::text;
    }
    for (int i = 0; i < 2; ++i) {  // sheet and warehouse stand in the heading
        sheet.columns.erase(sheet.columns.begin());
        for (std::vector<Variant>& row : sheet.rows) row.erase(row.begin());
    }
    return sheet;
}

ExitCode write_sheet(const CommonOptions& common, const Wanted& wanted) {
    const auto database = common.read();
    const Text warehouse = from_utf8(wanted.of);
    require_warehouse(*database, warehouse, common);
    const Snapshot snapshot(*database);
    const SheetName name = new_sheet_name(*database);
    if (!name.next_movement) {
        if (wanted.is_blind) throw TaskError(Reason::refused, common.say(words::blind_needs_journal));
        std::cerr << "vantlo: " << common.say(words::sheet_without_journal) << '\n';
    }
    const Listing sheet = make_count_sheet(*database, name, warehouse, wanted.with_all_goods, !wanted.is_blind);
    if (wanted.format.name == "table") {
        std::cout << common.say(words::sheet_heading, to_utf8(name.text), wanted.of,
                                to_utf8(format_date_time(name.made_at)))
                  << "\n\n";
        write_formatted(for_paper(sheet), {}, wanted.format, common);
    } else {
        write_formatted(sheet, {}, wanted.format, common);
    }
    return ExitCode::done;
}

std::string joined(const std::vector<Text>& names) {
    std::vector<std::string> texts;
    for (const Text& name : names) texts.push_back(to_utf8(name));
    return fmt::format("{}", fmt::join(texts, ", "));
}

void require_comparable(const CountComparison& comparison, const CommonOptions& common) {
    const auto refuse = [](const std::string& why) { throw TaskError(Reason::refused, why); };
    switch (comparison.obstacle) {
        case CountObstacle::none: return;
        case CountObstacle::entered_already: refuse(common.say(words::is_entered, joined(comparison.names))); break;
        case CountObstacle::unknown_goods:
            throw TaskError(Reason::bad_input, common.say(words::unknown_counted, joined(comparison.names)));
        case CountObstacle::moved_since: refuse(common.say(words::has_moved, joined(comparison.names))); break;
        case CountObstacle::nothing_expected: refuse(common.say(words::tells_nothing)); break;
        case CountObstacle::other_journal: refuse(common.say(words::is_other_journal)); break;
    }
}

/// The lines that differ.
Listing differences(const CountComparison& comparison) {
    constexpr auto text = CellType::text;
    constexpr auto quantity = CellType::quantity;
    Listing list{{{"goods", text},
                  {"goods_name", text},
                  {"model1", text},
                  {"model2", text},
                  {"status", CellType::number},
                  {"unit", text},
                  {"expected", quantity},
                  {"counted", quantity},
                  {"difference", quantity},
                  {"moved_since", quantity}},
                 {}};
    for (const CountDifference& row : comparison.counted) {
        if (row.difference() == Currency()) continue;
        list.rows.push_back({row.key.goods, row.goods_name, row.key.model1, row.key.model2, row.key.status, row.unit,
                             row.expected, row.counted, row.difference(), row.moved_since});
    }
    return list;
}

ExitCode enter_sheet(const CommonOptions& common, const Wanted& wanted, bool says_yes) {
    InputErrors errors(common.language);
    const CountedSheet sheet = read_counted_sheet(wanted.of, errors);
    errors.raise();
    CountComparison comparison;
    {
        const auto database = common.read();
        require_warehouse(*database, sheet.warehouse, common);
        const Snapshot snapshot(*database);
        comparison = compare_count(*database, sheet);
    }
    require_comparable(comparison, common);
    const Listing list = differences(comparison);
    if (comparison.not_counted > 0)
        std::cerr << "vantlo: " << common.say(words::not_counted, Count(comparison.not_counted)) << '\n';
    if (list.rows.empty()) {
        std::clog << common.say(words::no_difference, Count(comparison.counted.size())) << '\n';
        return ExitCode::done;
    }
    write_formatted(list, {}, wanted.format, common);
    const std::vector<Bill> bills = count_bills(sheet, comparison.counted);
    std::vector<Text> ids;
    std::vector<const Bill*> pointers;
    for (const Bill& bill : bills) {
        ids.push_back(bill.id);
        pointers.push_back(&bill);
    }
    const std::string summary = common.say(words::count_summary, Count(comparison.counted.size()), list.rows.size(),
                                           Count(bills.size()), joined(ids));
    if (wanted.is_dry_run) {
        std::clog << summary << '\n' << common.say(words::count_rehearsed) << '\n';
        return ExitCode::done;
    }
    std::cout << std::flush;
    if (const auto exit_code = not_confirmed(common, summary, says_yes)) return *exit_code;
    common.bookkeeping(pointers).import(pointers);
    std::clog << common.say(words::count_saved) << '\n';
    return ExitCode::done;
}

}  // namespace

void add_count(CLI::App& app, CommandCall& call) {
    const CommonOptions& common = call.common;
    CLI::App* const command =
        add_command(app, common, "count", words::count_about,
                    {{"vantlo count sheet W01 --format csv > w01.csv", words::count_sheet_example},
                     {"vantlo count sheet W01 --blind", words::count_print_example},
                     {"vantlo count enter w01.csv --dry-run", words::count_enter_example}});
    const auto wanted = std::make_shared<Wanted>();
    command->add_option("ACTION", wanted->action, common.say(words::count_action))
        ->required()
        ->check(CLI::IsMember({"sheet", "enter"}))
        ->type_name("");
    command->add_option("OF", wanted->of, common.say(words::count_of))->required()->type_name("");
    command->add_flag("--all-goods", wanted->with_all_goods, common.say(words::count_all_goods));
    command->add_flag("--blind", wanted->is_blind, common.say(words::count_blind));
    add_format_options(*command, common, wanted->format);
    command->add_flag("--dry-run", wanted->is_dry_run, common.say(words::count_dry_run));
    const auto says_yes = add_yes_option(*command, common);
    command->callback([&call, wanted, says_yes] {
        call.work = [&common = call.common, wanted, says_yes] {
            return wanted->action == "sheet" ? write_sheet(common, *wanted) : enter_sheet(common, *wanted, *says_yes);
        };
    });
}

}  // namespace vantlo
