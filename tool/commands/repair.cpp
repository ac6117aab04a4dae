#include "audit/repair.h"

#include <fmt/ranges.h>

#include <algorithm>
#include <iostream>

#include "audit/repair_plan.h"
#include "tool/commands/command.h"
#include "tool/output/repair_script.h"
#include "tool/output/verify_report.h"

namespace vantlo {

namespace words {

// clang-format off
constexpr Message repair_about   = {"打印使台账与单据相符的 SQL 语句；--apply 则直接执行", "Print the SQL that sets the ledger right; with --apply, run it"};
constexpr Message repair_example = {"只写出语句，供查看后执行", "Write the statements only, to be read first"};
constexpr Message repair_apply   = {"在一个事务中执行 --only 所列原因的修复，各行的前后数量记入 RepairJournal", "Run the repairs of the causes that --only names, in one transaction, and enter each row before and after into RepairJournal"};
constexpr Message repair_apply_example = {"修复数量被改动的行，并再次核对", "Repair the rows whose quantities were changed, and verify again"};
constexpr Message repair_only    = {"只修复此原因；可重复", "Only this cause; may be repeated"};
constexpr Message repair_goods   = {"只修复此商品的行；可重复。单据无从判断的行必须以此指明", "Only rows of these goods; may be repeated. Rows of which the bills tell nothing have to be named so"};
constexpr Message repair_warehouse = {"只修复此仓库的行；可重复", "Only rows of this warehouse; may be repeated"};
constexpr Message repaired       = {"已修复 {} 个键的台账行，前后数量记在 RepairJournal。", "Repaired the rows of {:key|keys}; RepairJournal has them before and after."};
constexpr Message nothing_to_repair = {"没有需要修复的行。", "There is nothing to repair."};
constexpr Message repair_failed  = {"修复后台账仍与单据不符；已全部回滚", "the ledger would still differ from the bills; all was rolled back"};
constexpr Message ledger_moved   = {"台账或单据在此期间有变动；未作任何修复，请再次运行", "the ledger or the bills changed meanwhile; nothing was repaired, run it again"};
constexpr Message name_causes    = {
    "修复以现有的单据和单位换算为准。如果被改动的是单据、换算率或期初库存，修复会改掉正确的库存。\n"
    "请先查看 vantlo verify 的结果，再用 --only 指明要修复的原因；现有：{}",
    "A repair takes bills and units as they are now for the truth: where a bill, a unit or opening stock is what was\n"
    "changed, it takes good stock away. Look at what vantlo verify says, then name what is to be repaired with --only;\n"
    "there is: {}"};
constexpr Message left_unjudged  = {
    "以下各处未修复，因为单据无从判断（没有单据涉及该行，或有单据无法读取、过账或已丢失）；确认无误后用 --goods 指明：",
    "Left alone, since the bills do not tell what is right (no bill touches the row, or some bill cannot be read or posted or\n"
    "is lost); name the goods with --goods where you know better:"};
constexpr Message left_unchosen  = {"未选择的原因：{}", "Not chosen: {}"};
constexpr Message confirm_repair = {"将改写以上 {} 个键的台账行。", "This changes the rows of {:key|keys}, as shown above."};
// clang-format on

}  // namespace words

namespace {

struct RepairOptions {
    bool applies = false;
    std::vector<std::string> causes;
    std::vector<std::string> goods;
    std::vector<std::string> warehouses;

    [[nodiscard]] RepairChoice choice() const {
        RepairChoice choice;
        for (const std::string& name : causes) choice.causes.push_back(*find_cause(name));
        for (const std::string& id : goods) choice.goods.push_back(from_utf8(id));
        for (const std::string& id : warehouses) choice.warehouses.push_back(from_utf8(id));
        return choice;
    }
};

/// The names of the findings' causes, each once.
std::string causes_of(const std::vector<Finding>& findings) {
    std::vector<std::string_view> names;
    for (const Finding& finding : findings) {
        if (std::ranges::count(names, name_of(finding.cause)) == 0) names.push_back(name_of(finding.cause));
    }
    return fmt::format("{}", fmt::join(names, ", "));
}

void tell_what_is_left(const RepairPlan& plan, const CommonOptions& common) {
    if (!plan.unjudged.empty()) {
        std::cerr << common.say(words::left_unjudged) << '\n';
        for (const Finding& finding : plan.unjudged) {
            for (const Difference& rows : finding.differences) {
                std::cerr << "  " << name_of(finding.cause) << "  " << to_utf8(condition_of(rows.key)) << '\n';
            }
        }
    }
    if (!plan.not_chosen.empty()) {
        std::cerr << common.say(words::left_unchosen, causes_of(plan.not_chosen)) << '\n';
    }
}

/// Whether the rows of every chosen finding are as the bills have them.
bool are_mended(const RepairPlan& plan, const Verification& repaired) {
    const auto has_key = [](const Finding& finding, const LedgerKey& key) {
        return std::ranges::count(finding.differences, key, &Difference::key) > 0;
    };
    return std::ranges::all_of(plan.chosen, [&](const Finding& finding) {
        return std::ranges::all_of(finding.differences, [&](const Difference& rows) {
            return std::ranges::none_of(repaired.findings,
                                        [&](const Finding& left) { return has_key(left, rows.key); });
        });
    });
}

/// Runs the repairs that were shown in one transaction, which stays only if they are still what is to be done, and if the
/// rows then agree with the bills.
ExitCode apply_in_transaction(NativeConnection& database, const RepairChoice& choice, const std::vector<Repair>& shown,
                              const CommonOptions& common) {
    const auto give_up = [&](const Message& why) {
        database.roll_back();
        std::cerr << "vantlo: " << common.say(why) << '\n';
        return ExitCode::posting_failed;
    };
    database.begin();
    try {
        const RepairPlan plan = plan_repairs(verify(database, common.language), choice);
        const std::vector<Repair> repairs = repairs_of(plan.chosen);
        if (repairs != shown) return give_up(words::ledger_moved);
        run_repairs(repairs, database, cause_in_journal);
        const Verification repaired = verify(database, common.language);
        if (!are_mended(plan, repaired)) return give_up(words::repair_failed);
        database.commit();
        std::cerr << common.say(words::repaired, Count(repairs.size())) << '\n';
        return repaired.findings.empty() ? ExitCode::done : ExitCode::differs;
    } catch (...) {
        database.roll_back();
        throw;
    }
}

ExitCode repair_ledger(const CommonOptions& common, const RepairOptions& options, bool says_yes) {
    const auto database = common.connect()();
    const RepairChoice choice = options.choice();
    const Verification verification = verify(*database, common.language);
    const RepairPlan plan = plan_repairs(verification, choice);
    if (options.applies && choice.causes.empty() && !(plan.chosen.empty() && plan.unjudged.empty())) {
        std::cerr << "vantlo: " << common.say(words::name_causes, causes_of(verification.findings)) << '\n';
        return ExitCode::refused;
    }
    const std::vector<Repair> repairs = repairs_of(plan.chosen);
    std::cout << script_of(repairs, database->dialect(), common.language);
    tell_what_is_left(plan, common);
    if (repairs.empty()) {
        std::cerr << common.say(words::nothing_to_repair) << '\n';
        return options.applies && !verification.findings.empty() ? ExitCode::differs : ExitCode::done;
    }
    if (!options.applies) return ExitCode::done;
    const std::string what = common.say(words::confirm_repair, Count(repairs.size()));
    if (const auto exit_code = not_confirmed(common, what, says_yes)) return *exit_code;
    return apply_in_transaction(*database, choice, repairs, common);
}

}  // namespace

void add_repair(CLI::App& app, CommandCall& call) {
    const CommonOptions& common = call.common;
    CLI::App* const command =
        add_command(app, common, "repair", words::repair_about,
                    {{"vantlo repair > repair.sql", words::repair_example},
                     {"vantlo repair --apply --only changed-quantity", words::repair_apply_example}});
    const auto options = std::make_shared<RepairOptions>();
    command->add_flag("--apply", options->applies, common.say(words::repair_apply));
    command->add_option("--only", options->causes, common.say(words::repair_only))
        ->check(CLI::IsMember(cause_names()))
        ->allow_extra_args(false)
        ->type_name("CAUSE");
    command->add_option("--goods", options->goods, common.say(words::repair_goods))->allow_extra_args(false);
    command->add_option("--warehouse", options->warehouses, common.say(words::repair_warehouse))
        ->allow_extra_args(false);
    const auto says_yes = add_yes_option(*command, common);
    command->callback([&call, options, says_yes] {
        call.work = [&common = call.common, options, says_yes] { return repair_ledger(common, *options, *says_yes); };
    });
}

}  // namespace vantlo
