#include <iostream>

#include "ado/native/snapshot.h"
#include "audit/ledger_conditions.h"
#include "audit/verification.h"
#include "output/conditions_report.h"
#include "output/verify_json.h"
#include "output/verify_report.h"
#include "tool/commands/command.h"

namespace vantlo {

namespace words {

// clang-format off
constexpr Message verify_about   = {"将台账与单据逐行核对；不符时退出码为 3", "Compare the ledger row by row with what the bills make of it; exit code 3 if they differ"};
constexpr Message verify_format  = {"输出格式：text，或 docs/verify.schema.json 所述的 json", "Output: text, or json as docs/verify.schema.json describes it"};
constexpr Message verify_all     = {"与全部单据核对，包括流水开始之前的；期初库存则显示为没有单据的行", "Compare with all bills, also those from before the journal began; opening stock then shows as rows without a bill"};
constexpr Message verify_json_example = {"供其他程序读取", "For other programs"};
constexpr Message verify_example = {"核对 vantlo.db 的台账", "Verify the ledger of vantlo.db"};
// clang-format on

}  // namespace words

namespace {

struct VerifyOptions {
    std::string format = "text";
    bool takes_all_bills = false;
};

/// The report, with what agrees in the end, and causes before hints.
std::string report_text(const Verification& verification, Language language) {
    const std::string report =
        report_of(verification.findings, verification.timeline, verification.stored.size(), language);
    const std::string notes = report_of(notes_of(verification), language);
    const std::string gap = notes.empty() ? "" : "\n";
    if (verification.findings.empty()) {
        const bool can_be_posted = verification.movements.state != JournalState::broken;
        return notes + gap + report + (can_be_posted ? "" : what_is_unknown(verification, language));
    }
    return report + gap + notes + what_is_unknown(verification, language);
}

ExitCode verify_ledger(const CommonOptions& common, const VerifyOptions& options) {
    const auto database = common.read();
    std::cerr << report_of(ledger_conditions(*database), common.language);
    const Snapshot snapshot(*database);
    const Verification verification =
        verify(*database, common.language, options.takes_all_bills ? WhichBills::all : WhichBills::since_opening);
    std::cout << (options.format == "json" ? verify_json(verification) : report_text(verification, common.language));
    return verification.findings.empty() ? ExitCode::done : ExitCode::differs;
}

}  // namespace

void add_verify(CLI::App& app, CommandCall& call) {
    const CommonOptions& common = call.common;
    CLI::App* const command = add_command(
        app, common, "verify", words::verify_about,
        {{"vantlo verify", words::verify_example}, {"vantlo verify --format json", words::verify_json_example}});
    const auto options = std::make_shared<VerifyOptions>();
    command->add_option("--format", options->format, common.say(words::verify_format))
        ->check(CLI::IsMember({"text", "json"}))
        ->type_name("FORMAT");
    command->add_flag("--all-bills", options->takes_all_bills, common.say(words::verify_all));
    command->callback(
        [&call, options] { call.work = [&common = call.common, options] { return verify_ledger(common, *options); }; });
}

}  // namespace vantlo
