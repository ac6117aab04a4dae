#include <fmt/format.h>

#include <iostream>

#include "host/commands/command.h"
#include "host/schema.h"

namespace vantlo::host {

namespace {

ExitCode init(const CommonOptions& common) {
    const auto database = common.connect()();
    database->run_script(schema_for(database->dialect()));
    std::cerr << fmt::format("The tables are there ({}).\n", database->engine());
    return ExitCode::done;
}

}  // namespace

void add_init(CLI::App& app, Invocation& invocation) {
    app.add_subcommand("init", "Make the tables that are missing")->callback([&invocation] {
        invocation.work = [&common = invocation.common] { return init(common); };
    });
}

}  // namespace vantlo::host
