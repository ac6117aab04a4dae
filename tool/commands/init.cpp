#include <iostream>

#include "bills/schema.h"
#include "tool/commands/command.h"

namespace vantlo {

namespace words {

// clang-format off
constexpr Message init_about     = {"建立缺少的数据表", "Make the tables that are missing"};
constexpr Message unique_key_option = {"禁止同一键有两行台账；多个主机同时记账时使用", "Forbid two ledger rows of one key; for several hosts at once"};
constexpr Message init_example   = {"在 shop.db 中建立数据表", "Make the tables in shop.db"};
constexpr Message init_dry_run_option = {"只显示将执行的语句", "Only show the statements"};
constexpr Message tables_ready   = {"数据表已齐备（{}）。", "The tables are there ({})."};
// clang-format on

}  // namespace words

namespace {

ExitCode init(const CommonOptions& common, bool with_unique_key) {
    if (common.dry_run) {
        std::cout << schema_for(common.dialect().name);
        if (with_unique_key) std::cout << unique_key_for(common.dialect().name);
        return ExitCode::done;
    }
    const auto database = common.connect(true)();
    database->run_script(schema_for(database->dialect().name));
    if (with_unique_key) database->run_script(unique_key_for(database->dialect().name));
    std::cerr << common.say(words::tables_ready, database->engine()) << '\n';
    return ExitCode::done;
}

}  // namespace

void add_init(CLI::App& app, CommandCall& call) {
    CommonOptions& common = call.common;
    CLI::App* const command =
        add_command(app, common, "init", words::init_about, {{"vantlo --db shop.db init", words::init_example}});
    command->add_flag("--dry-run", common.dry_run, common.say(words::init_dry_run_option));
    const auto with_unique_key = std::make_shared<bool>(false);
    command->add_flag("--unique-key", *with_unique_key, common.say(words::unique_key_option));
    command->callback([&call, with_unique_key] {
        call.work = [&common = call.common, with_unique_key] { return init(common, *with_unique_key); };
    });
}

}  // namespace vantlo
