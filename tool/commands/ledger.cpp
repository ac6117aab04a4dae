#include <iostream>

#include "ado/native/snapshot.h"
#include "automation/calendar.h"
#include "bills/ledger_row.h"
#include "reports/movements.h"
#include "reports/stock.h"
#include "tool/commands/command.h"
#include "tool/commands/list_options.h"
#include "tool/output/ledger_picture.h"
#include "tool/output/ledger_table.h"
#include "tool/output/replace_file.h"

namespace vantlo {

namespace words {

// clang-format off
constexpr Message ledger_about   = {"显示库存台账", "Show the stock ledger"};
constexpr Message only_warehouse = {"只看此仓库；* 和 ? 为通配符，可写多次", "Only this warehouse; * and ? stand for any signs, may be given several times"};
constexpr Message only_goods     = {"只看此商品；写法同上", "Only these goods; patterns as above"};
constexpr Message ledger_example = {"显示仓库 W01 的台账", "Show the ledger of warehouse W01"};
constexpr Message only_class     = {"只看此类别；写法同上", "Only this goods class; patterns as above"};
constexpr Message only_status    = {"只看此状态；可写多次", "Only this status; may be given several times"};
constexpr Message only_model1     = {"只看此型号一；可用通配符", "Only this model 1; patterns as above"};
constexpr Message only_model2     = {"只看此型号二；可用通配符", "Only this model 2; patterns as above"};
constexpr Message only_negative   = {"只看结存为负的行", "Only rows with less than nothing on hand"};
constexpr Message only_nonzero    = {"不看结存为零的行", "No rows with nothing on hand"};
constexpr Message as_of_option    = {"那一天（月、年）结束时的台账，据库存流水得出", "The ledger as it stood at the end of that day, month or year, from the journal of movements"};
constexpr Message group_option    = {"合并为每组一行：warehouse、goods、class、model1、model2、status；可写几个，以逗号分隔", "A row for each group: warehouse, goods, class, model1, model2, status; several with commas between"};
constexpr Message ledger_as_of_example = {"三月底的库存", "The stock at the end of March"};
constexpr Message ledger_group_example = {"每种商品共有多少，结存最多的在前", "How much there is of each goods, the most first"};
constexpr Message not_known_then  = {"库存流水从 {} 开始：在那以前台账是怎样的，无从得知", "the journal of movements begins on {}: how the ledger stood before is not known"};
constexpr Message journal_was_off = {"库存流水在那时前后关闭过：其间的变动不在这些数字里。", "the journal of movements was off around that time: what changed meanwhile is not in these figures."};
constexpr Message one_picture     = {"图片只取一个仓库、商品、类别和状态，且不用通配符", "a picture takes one warehouse, goods, class and status, without patterns"};
constexpr Message picture_option = {"改为写入图片文件：.svg 或 .html", "Write a picture instead: an .svg drawing or an .html page"};
constexpr Message ledger_csv_example = {"将台账写成 CSV", "Write the ledger as CSV"};
constexpr Message ledger_picture_example = {"画出各仓库的库存和每日进出", "Draw the stock of each warehouse and the movement by day"};
constexpr Message is_no_picture  = {"{} 已存在，且不是图片文件；未改动", "{} is there and is no such picture; it was left alone"};
constexpr Message picture_name   = {"文件名须以 .svg 或 .html 结尾", "the name of a picture ends with .svg or .html"};
constexpr Message cannot_write   = {"无法写入 {}", "{} cannot be written"};
// clang-format on

}  // namespace words

namespace {

struct Group {
    const char* name;
    StockGroup group;
};

constexpr Group group_names[] = {{"warehouse", StockGroup::warehouse}, {"goods", StockGroup::goods},
                                 {"class", StockGroup::goods_class},   {"model1", StockGroup::model1},
                                 {"model2", StockGroup::model2},       {"status", StockGroup::status}};

struct Wanted {
    StockWanted stock;
    std::optional<Date> until;  ///< the midnight at which the stock is wanted; nothing: as it is now
    std::vector<StockGroup> groups;
    std::string picture;
};

/// The one text of a list; empty if there is none.
Text only_one(const std::vector<Text>& patterns, const CommonOptions& common) {
    if (patterns.empty()) return {};
    if (patterns.size() > 1 || patterns.front().find_first_of(u"*?") != Text::npos)
        throw TaskError(Reason::bad_input, common.say(words::one_picture));
    return patterns.front();
}

LedgerFilter picture_filter(const StockWanted& wanted, const CommonOptions& common) {
    if (wanted.statuses.size() > 1) throw TaskError(Reason::bad_input, common.say(words::one_picture));
    return {only_one(wanted.warehouses, common), only_one(wanted.goods, common), only_one(wanted.classes, common),
            wanted.statuses.empty() ? std::nullopt : std::optional(wanted.statuses.front())};
}

void write_picture(NativeConnection& database, const Wanted& wanted, const CommonOptions& common) {
    const LedgerPicture picture = read_picture(database, picture_filter(wanted.stock, common), common.language);
    const bool is_page = wanted.picture.ends_with(".html");
    const Replaced replaced =
        is_page ? replace_file(wanted.picture, "<!doctype html>", picture_page(picture, common.language))
                : replace_file(wanted.picture, "<svg ", picture_svg(picture, common.language));
    if (replaced == Replaced::is_something_else)
        throw TaskError(Reason::bad_input, common.say(words::is_no_picture, wanted.picture));
    if (replaced == Replaced::not_written)
        throw TaskError(Reason::cannot_write, common.say(words::cannot_write, wanted.picture));
}

std::vector<StockRow> stock_of_past(NativeConnection& database, const Wanted& wanted, const CommonOptions& common) {
    require_journal(database, common);
    PastStock past = read_stock_at(database, wanted.stock, *wanted.until);
    if (past.known_from)
        throw TaskError(Reason::refused, common.say(words::not_known_then, to_utf8(ordinary_text(*past.known_from))));
    if (past.journal_was_off) std::cerr << "vantlo: " << common.say(words::journal_was_off) << '\n';
    return std::move(past.rows);
}

ExitCode show_ledger(const CommonOptions& common, const Wanted& wanted, const ListOptions& options) {
    const auto database = common.read();
    if (!wanted.picture.empty()) {
        write_picture(*database, wanted, common);
        return ExitCode::done;
    }
    std::vector<StockRow> rows;
    {
        const Snapshot snapshot(*database);
        const bool is_past = wanted.until && *wanted.until <= local_now();
        rows = is_past ? stock_of_past(*database, wanted, common) : read_stock(*database, wanted.stock);
    }
    const std::vector<std::string_view> summed = {"received", "issued", "on_hand"};
    if (!wanted.groups.empty()) return write_list(group_stock(rows, wanted.groups), options, common, summed);
    Listing list = list_stock(rows);
    if (!sort_list(list, options, common)) return ExitCode::usage;
    if (options.format.name == "table") {
        write_sorted(ledger_for_people(list), options, common, summed);
    } else {
        list.drop_last();  // the unit in which rows are added, which is there for people
        write_sorted(list, options, common);
    }
    return ExitCode::done;
}

}  // namespace

void add_ledger(CLI::App& app, CommandCall& call) {
    const CommonOptions& common = call.common;
    CLI::App* const command = add_command(app, common, "ledger", words::ledger_about,
                                          {{"vantlo ledger --warehouse W01", words::ledger_example},
                                           {"vantlo ledger --as-of 2024-03", words::ledger_as_of_example},
                                           {"vantlo ledger --group goods --sort -on_hand", words::ledger_group_example},
                                           {"vantlo ledger --format csv > ledger.csv", words::ledger_csv_example},
                                           {"vantlo ledger --as-picture stock.svg", words::ledger_picture_example}});
    const auto wanted = std::make_shared<Wanted>();
    add_patterns(*command, "--warehouse", wanted->stock.warehouses, common.say(words::only_warehouse));
    add_patterns(*command, "--goods", wanted->stock.goods, common.say(words::only_goods));
    add_patterns(*command, "--class", wanted->stock.classes, common.say(words::only_class));
    add_patterns(*command, "--model1", wanted->stock.models1, common.say(words::only_model1));
    add_patterns(*command, "--model2", wanted->stock.models2, common.say(words::only_model2));
    command->add_option("--status", wanted->stock.statuses, common.say(words::only_status))
        ->type_name("STATUS")
        ->allow_extra_args(false);
    command->add_flag("--negative", wanted->stock.negative, common.say(words::only_negative));
    command->add_flag("--nonzero", wanted->stock.nonzero, common.say(words::only_nonzero));
    CLI::Option* const as_of = add_day(*command, common, "--as-of", wanted->until, &Period::until, words::as_of_option);
    std::map<std::string, StockGroup> groups;
    for (const Group& group : group_names) groups.emplace(group.name, group.group);
    CLI::Option* const group = command->add_option("--group", wanted->groups, common.say(words::group_option))
                                   ->transform(CLI::CheckedTransformer(groups).description(""))
                                   ->type_name("GROUP")
                                   ->delimiter(',')
                                   ->allow_extra_args(false);
    const auto options = add_list_options(*command, common);
    command->add_option("--as-picture", wanted->picture, common.say(words::picture_option))
        ->check([&common](const std::string& name) {
            return name.ends_with(".svg") || name.ends_with(".html") ? "" : common.say(words::picture_name);
        })
        ->type_name("FILE")
        ->excludes(command->get_option("--format"))
        ->excludes(as_of)
        ->excludes(group);
    command->callback([&call, wanted, options] {
        call.work = [&common = call.common, wanted, options] { return show_ledger(common, *wanted, *options); };
    });
}

}  // namespace vantlo
