#include <iostream>

#include "host/commands/command.h"
#include "host/schema.h"

namespace vantlo::host {

namespace {

ExitCode init(const CommonOptions& common, bool with_unique_key) {
    if (common.dry_run) {
        std::cout << schema_for(common.dialect());
        if (with_unique_key) std::cout << unique_key_for(common.dialect());
        return ExitCode::done;
    }
    const auto database = common.connect(true)();
    database->run_script(schema_for(database->dialect()));
    if (with_unique_key) database->run_script(unique_key_for(database->dialect()));
    std::cerr << common.say(words::tables_ready, database->engine()) << '\n';
    return ExitCode::done;
}

}  // namespace

void add_init(CLI::App& app, Invocation& invocation) {
    CommonOptions& common = invocation.common;
    CLI::App* const command =
        add_command(app, common, "init", words::init_about, {{"vantlo --db shop.db init", words::init_example}});
    command->add_flag("--dry-run", common.dry_run, common.say(words::init_dry_run_option));
    const auto with_unique_key = std::make_shared<bool>(false);
    command->add_flag("--unique-key", *with_unique_key, common.say(words::unique_key_option));
    command->callback([&invocation, with_unique_key] {
        invocation.work = [&common = invocation.common, with_unique_key] { return init(common, *with_unique_key); };
    });
}

}  // namespace vantlo::host
