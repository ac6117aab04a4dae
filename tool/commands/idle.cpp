#include <iostream>

#include "ado/native/snapshot.h"
#include "automation/calendar.h"
#include "reports/idle_stock.h"
#include "reports/movements.h"
#include "tool/commands/command.h"
#include "tool/commands/list_options.h"

namespace vantlo {

namespace words {

// clang-format off
constexpr Message idle_about     = {"多日没有变动的库存，最久的在前", "Stock that has not moved for days, longest first"};
constexpr Message idle_example   = {"半年没有变动的库存", "What has not moved for half a year"};
constexpr Message idle_days      = {"至少这么多天没有变动", "Not moved for so many days at least"};
constexpr Message idle_goods     = {"只看此商品；* 和 ? 为通配符，可写多次", "Only these goods; * and ? stand for any signs, may be given several times"};
constexpr Message idle_warehouse = {"只看此仓库；写法同上", "Only this warehouse; patterns as above"};
constexpr Message journal_too_young = {"库存流水从 {} 才开始：不足 {} 天，无从得知什么这么久没有变动", "the journal of movements begins only on {}: what has not moved for {:day|days} is not known"};
// clang-format on

}  // namespace words

namespace {

struct Wanted {
    IdleWanted stock;
    int days = 90;
};

ExitCode show_idle(const CommonOptions& common, Wanted wanted, const ListOptions& options) {
    const auto database = common.read();
    require_journal(*database, common);
    const Snapshot snapshot(*database);
    wanted.stock.since = Date{local_now().days - wanted.days};
    const Date begins = journal_begins(*database).value_or(local_now());
    if (begins > wanted.stock.since) {
        throw TaskError(Reason::refused, common.say(words::journal_too_young, to_utf8(ordinary_text(begins)),
                                                    Count(static_cast<std::size_t>(wanted.days))));
    }
    return write_list(list_idle_stock(*database, wanted.stock), options, common);
}

}  // namespace

void add_idle(CLI::App& app, CommandCall& call) {
    const CommonOptions& common = call.common;
    CLI::App* const command =
        add_command(app, common, "idle", words::idle_about, {{"vantlo idle --days 180", words::idle_example}});
    const auto wanted = std::make_shared<Wanted>();
    command->add_option("--days", wanted->days, common.say(words::idle_days))
        ->check(CLI::Range(0, 100000))
        ->type_name("DAYS")
        ->capture_default_str();
    add_patterns(*command, "--goods", wanted->stock.goods, common.say(words::idle_goods));
    add_patterns(*command, "--warehouse", wanted->stock.warehouses, common.say(words::idle_warehouse));
    const auto options = add_list_options(*command, common);
    command->callback([&call, wanted, options] {
        call.work = [&common = call.common, wanted, options] { return show_idle(common, *wanted, *options); };
    });
}

}  // namespace vantlo
