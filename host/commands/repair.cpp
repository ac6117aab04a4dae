#include "host/verify/repair.h"

#include <algorithm>
#include <iostream>

#include "host/commands/command.h"

namespace vantlo::host {

namespace {

bool has_differences(const Verification& verification) {
    return std::ranges::any_of(verification.findings, [](const Finding& f) { return !f.differences.empty(); });
}

/// Sets the ledger right in one transaction, which stays only if it then agrees with the bills.
ExitCode apply_in_transaction(NativeConnection& database, const CommonOptions& common) {
    database.begin();
    try {
        const std::vector<Repair> repairs = repairs_of(verify(database, common.language).findings);
        run_repairs(repairs, database);
        const Verification repaired = verify(database, common.language);
        if (has_differences(repaired)) {
            database.roll_back();
            std::cerr << "vantlo: " << common.say(words::repair_failed) << '\n';
            return ExitCode::posting_failed;
        }
        database.commit();
        std::cout << script_of(repairs, database.dialect(), common.language);
        std::cerr << common.say(words::repaired, repairs.size()) << '\n';
        return repaired.findings.empty() ? ExitCode::done : ExitCode::differs;
    } catch (...) {
        database.roll_back();
        throw;
    }
}

ExitCode repair_ledger(const CommonOptions& common, bool applies) {
    const auto database = common.connect()();
    if (applies) return apply_in_transaction(*database, common);
    const std::vector<Repair> repairs = repairs_of(verify(*database, common.language).findings);
    std::cout << script_of(repairs, database->dialect(), common.language);
    if (repairs.empty()) std::cerr << common.say(words::nothing_to_repair) << '\n';
    return ExitCode::done;
}

}  // namespace

void add_repair(CLI::App& app, Invocation& invocation) {
    const CommonOptions& common = invocation.common;
    CLI::App* const command = add_command(app, common, "repair", words::repair_about,
                                          {{"vantlo repair > repair.sql", words::repair_example},
                                           {"vantlo repair --apply", words::repair_apply_example}});
    const auto applies = std::make_shared<bool>(false);
    command->add_flag("--apply", *applies, common.say(words::repair_apply));
    command->callback([&invocation, applies] {
        invocation.work = [&common = invocation.common, applies] { return repair_ledger(common, *applies); };
    });
}

}  // namespace vantlo::host
