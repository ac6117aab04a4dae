#include <iostream>

#include "host/commands/command.h"
#include "host/schema.h"

namespace vantlo::host {

namespace {

ExitCode init(const CommonOptions& common) {
    const auto database = common.connect(true)();
    database->run_script(schema_for(database->dialect()));
    std::cerr << common.say(words::tables_ready, database->engine()) << '\n';
    return ExitCode::done;
}

}  // namespace

void add_init(CLI::App& app, Invocation& invocation) {
    add_command(app, invocation.common, "init", words::init_about, {{"vantlo --db shop.db init", words::init_example}})
        ->callback([&invocation] { invocation.work = [&common = invocation.common] { return init(common); }; });
}

}  // namespace vantlo::host
