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
    const LedgerFilter filter{from_utf8(wanted.warehouse), from_utf8(wanted.goods)};
    std::cout << ledger_table(read_ledger(*database, filter), common.language);
    return ExitCode::done;
}

}  // namespace

void add_ledger(CLI::App& app, Invocation& invocation) {
    const CommonOptions& common = invocation.common;
    CLI::App* const command = add_command(app, common, "ledger", words::ledger_about,
                                          {{"vantlo ledger --warehouse W01", words::ledger_example}});
    const auto wanted = std::make_shared<Wanted>();
    command->add_option("--warehouse", wanted->warehouse, common.say(words::only_warehouse));
    command->add_option("--goods", wanted->goods, common.say(words::only_goods));
    command->callback([&invocation, wanted] {
        invocation.work = [&common = invocation.common, wanted] { return show_ledger(common, *wanted); };
    });
}

}  // namespace vantlo::host
