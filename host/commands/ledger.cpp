#include <iostream>

#include "host/commands/command.h"
#include "host/ledger_view.h"

namespace vantlo::host {

namespace {

struct Wanted {
    std::string warehouse;
    std::string goods;
};

ExitCode show_ledger(const CommonOptions& common, const Wanted& wanted) {
    const auto database = common.connect()();
    std::cout << ledger_table(read_ledger(*database, {from_utf8(wanted.warehouse), from_utf8(wanted.goods)}));
    return ExitCode::done;
}

}  // namespace

void add_ledger(CLI::App& app, Invocation& invocation) {
    CLI::App* const command = app.add_subcommand("ledger", "Show the stock ledger");
    const auto wanted = std::make_shared<Wanted>();
    command->add_option("--warehouse", wanted->warehouse, "Only this warehouse");
    command->add_option("--goods", wanted->goods, "Only these goods");
    command->callback([&invocation, wanted] {
        invocation.work = [&common = invocation.common, wanted] { return show_ledger(common, *wanted); };
    });
}

}  // namespace vantlo::host
