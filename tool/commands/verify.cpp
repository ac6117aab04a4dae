#include <iostream>

#include "audit/ledger_conditions.h"
#include "audit/verification.h"
#include "tool/commands/command.h"
#include "tool/output/conditions_report.h"
#include "tool/output/verify_report.h"

namespace vantlo {

namespace words {

// clang-format off
constexpr Message verify_about   = {"将台账与单据逐行核对；不符时退出码为 3", "Compare the ledger row by row with what the bills make of it; exit code 3 if they differ"};
constexpr Message verify_example = {"核对 vantlo.db 的台账", "Verify the ledger of vantlo.db"};
// clang-format on

}  // namespace words

namespace {

ExitCode verify_ledger(const CommonOptions& common) {
    const auto database = common.read();
    std::cerr << report_of(ledger_conditions(*database), common.language);
    const Verification verification = verify(*database, common.language);
    std::cout << report_of(verification.findings, verification.timeline, verification.stored.size(), common.language)
              << report_of(notes_of(verification), common.language);
    return verification.findings.empty() ? ExitCode::done : ExitCode::differs;
}

}  // namespace

void add_verify(CLI::App& app, CommandCall& call) {
    add_command(app, call.common, "verify", words::verify_about, {{"vantlo verify", words::verify_example}})
        ->callback([&call] { call.work = [&common = call.common] { return verify_ledger(common); }; });
}

}  // namespace vantlo
