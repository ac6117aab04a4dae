#include <iostream>

#include "ado/native/snapshot.h"
#include "automation/calendar.h"
#include "output/ledger_table.h"
#include "reports/movements.h"
#include "reports/stock.h"
#include "tool/commands/command.h"
#include "tool/commands/list_options.h"

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
constexpr Message ledger_csv_example = {"将台账写成 CSV", "Write the ledger as CSV"};
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
};

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
                                           {"vantlo ledger --format csv > ledger.csv", words::ledger_csv_example}});
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
    add_day(*command, common, "--as-of", wanted->until, &Period::until, words::as_of_option);
    std::map<std::string, StockGroup> groups;
    for (const Group& group : group_names) groups.emplace(group.name, group.group);
    command->add_option("--group", wanted->groups, common.say(words::group_option))
        ->transform(CLI::CheckedTransformer(groups).description(""))
        ->type_name("GROUP")
        ->delimiter(',')
        ->allow_extra_args(false);
    const auto options = add_list_options(*command, common);
    command->callback([&call, wanted, options] {
        call.work = [&common = call.common, wanted, options] { return show_ledger(common, *wanted, *options); };
    });
}

}  // namespace vantlo
