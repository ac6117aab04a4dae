#include "reports/lists.h"
#include "tool/commands/command.h"
#include "tool/commands/list_options.h"

namespace vantlo {

namespace words {

// clang-format off
constexpr Message goods_about      = {"列出商品", "List the goods"};
constexpr Message goods_example    = {"名称、型号等含有“手机”的商品", "Goods with the word phone in name, model or remarks"};
constexpr Message warehouses_about = {"列出仓库", "List the warehouses"};
constexpr Message warehouses_example = {"编号以 W 开头的仓库", "Warehouses whose ids begin with W"};
constexpr Message units_about      = {"列出商品的计量单位及换算系数", "List the units of goods, with their factors"};
constexpr Message units_example    = {"商品 G001 的单位", "The units of goods G001"};
constexpr Message id_pattern       = {"编号；* 和 ? 为通配符", "Ids; * and ? stand for any signs"};
constexpr Message row_text         = {"任一文字栏中含有此文字", "With this text in one of its texts"};
// clang-format on

}  // namespace words

namespace {

/// A list of a master table as a command.
struct MasterList {
    const char* name;  ///< of the command and, in files, of the table
    const Message& about;
    Example example;
};

struct Wanted {
    std::vector<Text> ids;
    std::string text;
};

ExitCode show_rows(const CommonOptions& common, const char* table, const Wanted& wanted, const ListOptions& options) {
    const auto database = common.read();
    return write_list(list_master_rows(*database, *find_master_table(table), {wanted.ids}, from_utf8(wanted.text)),
                      options, common);
}

void add_master_list(CLI::App& app, CommandCall& call, const MasterList& list) {
    const CommonOptions& common = call.common;
    CLI::App* const command = add_command(app, common, list.name, list.about, {list.example});
    const auto wanted = std::make_shared<Wanted>();
    add_patterns(*command, "ID", wanted->ids, common.say(words::id_pattern));
    command->add_option("--text", wanted->text, common.say(words::row_text));
    const auto options = add_list_options(*command, common);
    command->callback([&call, wanted, options, table = list.name] {
        call.work = [&common = call.common, wanted, options, table] {
            return show_rows(common, table, *wanted, *options);
        };
    });
}

}  // namespace

void add_goods(CLI::App& app, CommandCall& call) {
    add_master_list(app, call, {"goods", words::goods_about, {"vantlo goods --text phone", words::goods_example}});
}

void add_warehouses(CLI::App& app, CommandCall& call) {
    add_master_list(app, call,
                    {"warehouses", words::warehouses_about, {"vantlo warehouses 'W*'", words::warehouses_example}});
}

void add_units(CLI::App& app, CommandCall& call) {
    add_master_list(app, call, {"units", words::units_about, {"vantlo units G001", words::units_example}});
}

}  // namespace vantlo
