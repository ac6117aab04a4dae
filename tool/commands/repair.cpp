#include "audit/repair.h"

#include <fmt/ranges.h>

#include <algorithm>
#include <iostream>

#include "audit/ledger_conditions.h"
#include "audit/repair_plan.h"
#include "audit/repair_undo.h"
#include "automation/error.h"
#include "bills/schema.h"
#include "output/conditions_report.h"
#include "output/repair_report.h"
#include "output/repair_script.h"
#include "output/verify_report.h"
#include "output/visible.h"
#include "tool/commands/command.h"

namespace vantlo {

namespace words {

// clang-format off
constexpr Message repair_about   = {"打印使台账与单据相符的 SQL 语句；--apply 则直接执行", "Print the SQL that sets the ledger right; with --apply, run it"};
constexpr Message repair_example = {"只写出语句，供查看后执行", "Write the statements only, to be read first"};
constexpr Message repair_apply   = {"在一个事务中执行修复，各行修复前后的完整内容记入 RepairJournal", "Run the repairs in one transaction, and enter each row, whole, before and after into RepairJournal"};
constexpr Message repair_apply_example = {"修复数量被改动的行，并再次核对", "Repair the rows whose quantities were changed, and verify again"};
constexpr Message repair_only    = {"只修复此原因；可重复", "Only this cause; may be repeated"};
constexpr Message repair_goods   = {"只修复此商品的行；可重复。单据无从判断的行必须以此指明", "Only rows of these goods; may be repeated. Rows of which the bills tell nothing have to be named so"};
constexpr Message repair_warehouse = {"只修复此仓库的行；可重复", "Only rows of this warehouse; may be repeated"};
constexpr Message repair_list    = {"列出做过的修复：编号、时间、行数、原因", "List past repairs: number, time, rows, causes"};
constexpr Message repair_undo    = {"撤销此编号的修复，各行恢复原样", "Undo the repair of that number: its rows return as they were"};
constexpr Message repair_undo_example = {"撤销 3 号修复", "Undo repair 3"};
constexpr Message repaired       = {"已修复 {} 个键的台账行；这是 {} 号修复，vantlo repair --undo {} 可撤销。", "Repaired the rows of {:key|keys}. This is repair {}; vantlo repair --undo {} brings them back."};
constexpr Message undone         = {"已撤销 {} 号修复，各行恢复原样；这本身是 {} 号修复。", "Repair {} is undone, and its rows are as they were; this is repair {} itself."};
constexpr Message confirm_undo   = {"将把 {} 个键的台账行恢复为 {} 号修复之前的样子。", "This brings the rows of {:key|keys} back to what they were before repair {}."};
constexpr Message no_such_repair = {"没有 {} 号修复；vantlo repair --list 列出做过的修复", "there is no repair {}; vantlo repair --list shows those that there are"};
constexpr Message unreadable_repair = {"{} 号修复在 RepairJournal 中的记录有一行无法读取；未作任何改动", "an entry of repair {} in RepairJournal cannot be read; nothing was changed"};
constexpr Message undone_already = {"{} 号修复已被 {} 号修复撤销", "repair {} was undone already, by repair {}"};
constexpr Message moved_since    = {"{} 号修复之后，其中的行又有变动；未作任何改动：", "rows of repair {} have moved since; nothing was changed:"};
constexpr Message not_as_before  = {"数据库没有照原样收下这些行（可能有触发器）；已全部回滚：{}", "the database did not take the rows as they were, perhaps because of a trigger; all was rolled back: {}"};
constexpr Message no_repair_journal = {"没有表 RepairJournal；vantlo init 建立", "there is no table RepairJournal: vantlo init makes it"};
constexpr Message cannot_repair  = {"在此情况下不作修复", "nothing is repaired under these conditions"};
constexpr Message spoilt_keys    = {"数据库把不同的键当作同一个键，或没有照写入的内容保存；修复会使台账更糟，已全部回滚。涉及的键：", "the database takes differing keys for one, or does not keep what is written: the repair would make the ledger worse, and all was rolled back. The keys:"};
constexpr Message others_write   = {"有其他用户正在写入；未作任何改动，请再次运行。数据库的说明：{}", "others were writing meanwhile; nothing was changed, run it again. The database says: {}"};
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
    bool lists = false;
    std::optional<std::int64_t> undone;
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
                std::cerr << "  " << name_of(finding.cause) << "  " << visible(to_utf8(condition_of(rows.key))) << '\n';
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

/// Runs work in a transaction in which nobody else changes the ledger. The work commits it, or rolls it back.
template <typename Work>
ExitCode in_locked_ledger(NativeConnection& database, const CommonOptions& common, const Work& work) {
    try {
        database.begin();
        if (database.dialect().lock_ledger != nullptr) database.run(database.dialect().lock_ledger);
        return work();
    } catch (const Failure& failure) {
        const bool helps_to_wait = database.remedy() != Remedy::none;
        database.roll_back();
        if (!helps_to_wait) throw;
        std::cerr << "vantlo: " << common.say(words::others_write, failure.what()) << '\n';
        return ExitCode::posting_failed;
    } catch (...) {
        database.roll_back();
        throw;
    }
}

void tell_keys(const std::vector<LedgerKey>& keys) {
    for (const LedgerKey& key : keys) std::cerr << "  " << visible(to_utf8(condition_of(key))) << '\n';
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
    return in_locked_ledger(database, common, [&] {
        const Verification verification = verify(database, common.language);
        const RepairPlan plan = plan_repairs(verification, choice);
        const std::vector<Repair> repairs = repairs_of(plan.chosen);
        if (repairs != shown) return give_up(words::ledger_moved);
        const RepairOutcome outcome = run_repairs(repairs, database, cause_in_journal);
        if (!outcome.spoilt.empty()) {
            const ExitCode exit_code = give_up(words::spoilt_keys);
            tell_keys(outcome.spoilt);
            return exit_code;
        }
        const Verification repaired = verify(database, common.language);
        if (!are_mended(plan, repaired)) {
            const bool is_alone = repaired.timeline.events.size() == verification.timeline.events.size();
            return give_up(is_alone ? words::repair_failed : words::ledger_moved);
        }
        database.commit();
        std::clog << common.say(words::repaired, Count(repairs.size()), outcome.number, outcome.number) << '\n';
        return repaired.findings.empty() ? ExitCode::done : ExitCode::differs;
    });
}

/// Whether the database has the journal of repairs, with all of its columns; tells what to do if not.
bool has_repair_journal(NativeConnection& database, const std::vector<LedgerCondition>& conditions,
                        const CommonOptions& common) {
    if (!has_table(database, "RepairJournal")) {
        std::cerr << "vantlo: " << common.say(words::no_repair_journal) << '\n';
        return false;
    }
    return std::ranges::count(conditions, Condition::older_table, &LedgerCondition::condition) == 0;
}

/// Whether rows can be repaired in the database, and repairs undone; tells all that is worth knowing of it.
bool can_repair(NativeConnection& database, const CommonOptions& common) {
    const std::vector<LedgerCondition> conditions = ledger_conditions(database);
    std::cerr << report_of(conditions, common.language);
    if (std::ranges::any_of(conditions, refuses_repair, &LedgerCondition::condition)) {
        std::cerr << "vantlo: " << common.say(words::cannot_repair) << '\n';
        return false;
    }
    return has_repair_journal(database, conditions, common);
}

ExitCode list_repairs(const CommonOptions& common) {
    const auto database = common.read();
    const std::vector<LedgerCondition> conditions = ledger_conditions(*database);
    if (!has_repair_journal(*database, conditions, common)) {
        std::cerr << report_of(conditions, common.language);
        return ExitCode::refused;
    }
    std::cout << report_of(past_repairs(*database), common.language);
    return ExitCode::done;
}

/// Tells why the repair cannot be undone; nothing if it can.
std::optional<ExitCode> not_undone(std::int64_t number, const UndoPlan& plan, const CommonOptions& common) {
    const RepairRecord& record = plan.record;
    const auto refuse = [&](const std::string& why) {
        std::cerr << "vantlo: " << why << '\n';
        return ExitCode::refused;
    };
    if (!record.is_readable) return refuse(common.say(words::unreadable_repair, number));
    if (record.keys.empty()) return refuse(common.say(words::no_such_repair, number));
    if (plan.moved.empty()) return std::nullopt;
    if (record.undone_by) return refuse(common.say(words::undone_already, number, *record.undone_by));
    const ExitCode exit_code = refuse(common.say(words::moved_since, number));
    std::cerr << report_of(plan.moved, common.language);
    return exit_code;
}

ExitCode undo_repair(const CommonOptions& common, std::int64_t number, bool says_yes) {
    const auto database = common.connect()();
    if (!can_repair(*database, common)) return ExitCode::refused;
    const UndoPlan shown = plan_undo(*database, number);
    if (const auto exit_code = not_undone(number, shown, common)) return *exit_code;
    std::cout << script_of(shown, database->dialect()) << std::flush;
    const std::string what = common.say(words::confirm_undo, Count(shown.record.keys.size()), number);
    if (const auto exit_code = not_confirmed(common, what, says_yes)) return *exit_code;
    return in_locked_ledger(*database, common, [&] {
        const UndoPlan plan = plan_undo(*database, number);
        if (const auto exit_code = not_undone(number, plan, common)) {
            database->roll_back();
            return *exit_code;
        }
        const UndoOutcome outcome = run_undo(*database, number, plan, from_utf8(undo_in_journal(number)));
        if (!outcome.unlike.empty()) {
            database->roll_back();
            std::cerr << "vantlo: " << common.say(words::not_as_before, to_utf8(outcome.unlike.front())) << '\n';
            return ExitCode::posting_failed;
        }
        database->commit();
        std::clog << common.say(words::undone, number, outcome.number) << '\n';
        return ExitCode::done;
    });
}

ExitCode repair_ledger(const CommonOptions& common, const RepairOptions& options, bool says_yes) {
    const auto database = options.applies ? common.connect()() : common.read();
    if (options.applies) {
        if (!can_repair(*database, common)) return ExitCode::refused;
    } else {
        std::cerr << report_of(ledger_conditions(*database), common.language);
    }
    const RepairChoice choice = options.choice();
    const Verification verification = verify(*database, common.language);
    const RepairPlan plan = plan_repairs(verification, choice);
    if (options.applies && choice.causes.empty() && !plan.is_by_journal &&
        !(plan.chosen.empty() && plan.unjudged.empty())) {
        std::cerr << "vantlo: " << common.say(words::name_causes, causes_of(verification.findings)) << '\n';
        return ExitCode::refused;
    }
    const std::vector<Repair> repairs = repairs_of(plan.chosen);
    std::cout << script_of(repairs, database->dialect(), common.language);
    tell_what_is_left(plan, common);
    if (repairs.empty()) {
        std::clog << common.say(words::nothing_to_repair) << '\n';
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
                     {"vantlo repair --apply --only changed-quantity", words::repair_apply_example},
                     {"vantlo repair --undo 3", words::repair_undo_example}});
    const auto options = std::make_shared<RepairOptions>();
    CLI::Option* const apply = command->add_flag("--apply", options->applies, common.say(words::repair_apply));
    CLI::Option* const list = command->add_flag("--list", options->lists, common.say(words::repair_list));
    CLI::Option* const undo =
        command->add_option("--undo", options->undone, common.say(words::repair_undo))->type_name("NUMBER");
    CLI::Option* const only = command->add_option("--only", options->causes, common.say(words::repair_only))
                                  ->check(CLI::IsMember(cause_names()))
                                  ->allow_extra_args(false)
                                  ->type_name("CAUSE");
    CLI::Option* const goods =
        command->add_option("--goods", options->goods, common.say(words::repair_goods))->allow_extra_args(false);
    CLI::Option* const warehouse =
        command->add_option("--warehouse", options->warehouses, common.say(words::repair_warehouse))
            ->allow_extra_args(false);
    for (CLI::Option* const other : {apply, only, goods, warehouse}) other->excludes(list)->excludes(undo);
    list->excludes(undo);
    const auto says_yes = add_yes_option(*command, common);
    command->callback([&call, options, says_yes] {
        call.work = [&common = call.common, options, says_yes] {
            if (options->lists) return list_repairs(common);
            if (options->undone) return undo_repair(common, *options->undone, *says_yes);
            return repair_ledger(common, *options, *says_yes);
        };
    });
}

}  // namespace vantlo
