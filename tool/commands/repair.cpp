#include "audit/repair.h"

#include <algorithm>
#include <iostream>

#include "tool/commands/command.h"
#include "tool/output/repair_script.h"
#include "tool/output/verify_report.h"

namespace vantlo {

namespace words {

// clang-format off
constexpr Message repair_about   = {"打印使台账与单据相符的 SQL 语句；--apply 则直接执行", "Print the SQL that sets the ledger right; with --apply, run it"};
constexpr Message repair_example = {"只写出语句，供查看后执行", "Write the statements only, to be read first"};
constexpr Message repair_apply   = {"在一个事务中执行，各行的前后数量记入 RepairJournal", "Run it in one transaction, and enter each row before and after into RepairJournal"};
constexpr Message repair_apply_example = {"执行，并再次核对", "Run them, and verify again"};
constexpr Message repaired       = {"已修复 {} 个键的台账行，前后数量记在 RepairJournal。", "Repaired the rows of {} keys; RepairJournal has them before and after."};
constexpr Message nothing_to_repair = {"没有需要修复的行。", "There is nothing to repair."};
constexpr Message repair_failed  = {"修复后台账仍与单据不符；已全部回滚", "the ledger would still differ from the bills; all was rolled back"};
// clang-format on

}  // namespace words

namespace {

bool has_differences(const Verification& verification) {
    return std::ranges::any_of(verification.findings, [](const Finding& f) { return !f.differences.empty(); });
}

/// Sets the ledger right in one transaction, which stays only if it then agrees with the bills.
ExitCode apply_in_transaction(NativeConnection& database, const CommonOptions& common) {
    database.begin();
    try {
        const std::vector<Repair> repairs = repairs_of(verify(database, common.language).findings);
        run_repairs(repairs, database, cause_in_journal);
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

}  // namespace vantlo
