#include <fmt/format.h>

#include <iostream>

#include "host/commands/command.h"

namespace vantlo::host {

namespace {

struct Named {
    std::string kind;
    std::string id;
};

ExitCode remove(const CommonOptions& common, const Named& bill) {
    const BillKind* const kind = find_bill_kind(bill.kind);
    if (kind == nullptr) {
        std::string names;
        for (const BillKind& known : bill_kinds()) names += fmt::format("  {:20} {}\n", known.name, known.chinese_name);
        std::cerr << fmt::format("vantlo: there is no kind of bill \"{}\"; the kinds are\n{}", bill.kind, names);
        return ExitCode::usage;
    }
    common.bookkeeping().remove(*kind, from_utf8(bill.id));
    std::cerr << fmt::format("Took {} {} back.\n", kind->name, bill.id);
    return ExitCode::done;
}

}  // namespace

void add_delete(CLI::App& app, Invocation& invocation) {
    CLI::App* const command = app.add_subcommand("delete", "Take a stored bill back and delete it");
    const auto bill = std::make_shared<Named>();
    command->add_option("KIND", bill->kind, "Kind of bill")->required();
    command->add_option("ID", bill->id, "The bill's identifier")->required();
    command->callback([&invocation, bill] {
        invocation.work = [&common = invocation.common, bill] { return remove(common, *bill); };
    });
}

}  // namespace vantlo::host
