#include <iostream>

#include "host/commands/command.h"

namespace vantlo::host {

namespace {

struct Named {
    std::string kind;
    std::string id;
};

ExitCode remove(const CommonOptions& common, const Named& bill) {
    const BillKind* const kind = known_kind(common, bill.kind);
    if (kind == nullptr) return ExitCode::usage;
    common.bookkeeping().remove(*kind, from_utf8(bill.id));
    std::cerr << common.say(common.dry_run ? words::would_take_back : words::taken_back, kind->name, bill.id) << '\n';
    return ExitCode::done;
}

}  // namespace

void add_delete(CLI::App& app, Invocation& invocation) {
    CommonOptions& common = invocation.common;
    CLI::App* const command = add_command(app, common, "delete", words::delete_about,
                                          {{"vantlo delete stock-in R1001", words::delete_example}});
    const auto bill = std::make_shared<Named>();
    command->add_option("KIND", bill->kind, common.say(words::bill_kind))->required();
    command->add_option("ID", bill->id, common.say(words::bill_id))->required();
    add_posting_options(*command, common);
    command->callback([&invocation, bill] {
        invocation.work = [&common = invocation.common, bill] { return remove(common, *bill); };
    });
}

}  // namespace vantlo::host
