#include "reports/lists.h"
#include "tool/commands/command.h"
#include "tool/commands/list_options.h"

namespace vantlo {

namespace words {

// clang-format off
constexpr Message bills_about   = {"列出已保存的单据", "List the stored bills"};
constexpr Message bills_example = {"2024 年 3 月的入库单和出库单", "Stock-in and stock-out bills of March 2024"};
constexpr Message bills_of_goods_example = {"编号以 G0 开头的商品在哪些单据上，最新的在前", "Bills with goods whose ids begin with G0, the latest first"};
constexpr Message only_kinds    = {"只列此种单据；可写多次", "Only this kind of bill; may be given several times"};
constexpr Message with_goods    = {"含有此商品；* 和 ? 为通配符，可写多次", "With such goods; * and ? stand for any signs, may be given several times"};
constexpr Message with_warehouse = {"涉及此仓库；可用通配符", "With such a warehouse; patterns as above"};
constexpr Message with_text     = {"编号或备注中含有此文字", "With this text in id or remarks"};
constexpr Message with_id       = {"单据编号；可用通配符", "The bill's id; patterns as above"};
// clang-format on

}  // namespace words

namespace {

struct Wanted {
    std::vector<std::string> kinds;
    std::string text;
    BillsWanted bills;
};

ExitCode show_bills(const CommonOptions& common, Wanted wanted, const ListOptions& options) {
    for (const std::string& name : wanted.kinds) {
        const BillKind* const kind = known_kind(common, name);
        if (kind == nullptr) return ExitCode::usage;
        wanted.bills.kinds.push_back(kind);
    }
    wanted.bills.text = from_utf8(wanted.text);
    const auto database = common.read();
    return write_list(list_bills(*database, wanted.bills), options, common);
}

}  // namespace

void add_bills(CLI::App& app, CommandCall& call) {
    const CommonOptions& common = call.common;
    CLI::App* const command = add_command(
        app, common, "bills", words::bills_about,
        {{"vantlo bills --kind stock-in --kind stock-out --from 2024-03 --to 2024-03", words::bills_example},
         {"vantlo bills --goods 'G0*' --sort -date --limit 20", words::bills_of_goods_example}});
    const auto wanted = std::make_shared<Wanted>();
    command->add_option("--kind", wanted->kinds, common.say(words::only_kinds))
        ->type_name("KIND")
        ->allow_extra_args(false);
    add_period(*command, common, wanted->bills.period);
    add_patterns(*command, "--id", wanted->bills.ids, common.say(words::with_id));
    add_patterns(*command, "--goods", wanted->bills.goods, common.say(words::with_goods));
    add_patterns(*command, "--warehouse", wanted->bills.warehouses, common.say(words::with_warehouse));
    command->add_option("--text", wanted->text, common.say(words::with_text));
    const auto options = add_list_options(*command, common);
    command->callback([&call, wanted, options] {
        call.work = [&common = call.common, wanted, options] { return show_bills(common, *wanted, *options); };
    });
}

}  // namespace vantlo
