#include <iostream>

#include "host/commands/command.h"
#include "host/verify/report.h"
#include "host/verify/verification.h"

namespace vantlo::host {

namespace {

ExitCode verify_ledger(const CommonOptions& common) {
    const auto database = common.connect()();
    const Verification verification = verify(*database, common.language);
    std::cout << report_of(verification.findings, verification.course, verification.stored.size(), common.language)
              << report_of(notes_of(verification), common.language);
    return verification.findings.empty() ? ExitCode::done : ExitCode::differs;
}

}  // namespace

void add_verify(CLI::App& app, Invocation& invocation) {
    add_command(app, invocation.common, "verify", words::verify_about, {{"vantlo verify", words::verify_example}})
        ->callback(
            [&invocation] { invocation.work = [&common = invocation.common] { return verify_ledger(common); }; });
}

}  // namespace vantlo::host
