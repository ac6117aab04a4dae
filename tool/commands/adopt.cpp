#include <algorithm>
#include <iostream>

#include "audit/adoption.h"
#include "audit/ledger_conditions.h"
#include "bookkeeping/journal.h"
#include "bookkeeping/own_tables.h"
#include "tool/commands/own_parts.h"
#include "tool/output/conditions_report.h"
#include "tool/output/journal_report.h"

namespace vantlo {

namespace words {

// clang-format off
constexpr Message adopt_about    = {"接管主机已使用多年的数据库：检查，建立缺少的部分，记录期初数量",
                                    "Take a database under care that a host has used for years: look it over, make what is missing, enter each ledger row's opening quantities"};
constexpr Message adopt_example  = {"先看会建立什么", "See first what would be made"};
constexpr Message adopt_yes_example = {"不询问，直接接管", "Adopt without asking"};
constexpr Message adopt_dry_run  = {"只显示将执行的语句", "Only show the statements"};
constexpr Message would_make     = {"将建立：{}。主机的表不作任何改动。", "To be made: {}. Nothing of the host's own tables is altered."};
constexpr Message journal_parts  = {"库存流水（表 StockMovement、视图 LedgerWithoutMovement 及 Inventory 上的触发器）",
                                    "the journal of movements (table StockMovement, view LedgerWithoutMovement, triggers on Inventory)"};
constexpr Message own_column     = {"列 {}.{}", "column {}.{}"};
constexpr Message nothing_missing = {"没有缺少的部分。", "Nothing is missing."};
constexpr Message cannot_adopt   = {"不能接管这个数据库", "this database cannot be adopted"};

constexpr Message found_no_triggers     = {"数据库没有触发器", "the database has no triggers"};
constexpr Message found_quantity_type   = {"{}：流水只能准确记录四位以内小数的数量", "{}: movements hold quantities of at most four decimals exactly"};
constexpr Message found_key_type        = {"{}：流水的键是 255 个字符以内的文字，状态是整数", "{}: movements have keys of at most 255 characters, and a whole number as the status"};
// clang-format on

}  // namespace words

namespace {

std::string text_of(const AdoptionNote& note, const CommonOptions& common) {
    struct Row {
        AdoptionFinding finding;
        const Message& text;
    };
    static constexpr Row rows[] = {
        {AdoptionFinding::no_triggers, words::found_no_triggers},
        {AdoptionFinding::quantity_type, words::found_quantity_type},
        {AdoptionFinding::key_type, words::found_key_type},
    };
    for (const Row& row : rows) {
        if (row.finding == note.finding) return common.say(row.text, note.subject);
    }
    return note.subject;
}

/// The script that makes the tables and columns, without the journal.
std::string script_of(const std::vector<OwnTable>& tables, const std::vector<MissingColumn>& columns) {
    std::string script;
    for (const OwnTable& table : tables) script += table.statement + ";\n";
    for (const MissingColumn& column : columns) script += column.statement + ";\n";
    return script;
}

ExitCode adopt(const CommonOptions& common, bool says_yes) {
    const auto database = common.connect()();
    const std::vector<LedgerCondition> conditions = ledger_conditions(*database);
    std::cerr << report_of(conditions, common.language);
    const std::vector<AdoptionNote> notes = look_before_adopting(*database);
    for (const AdoptionNote& note : notes) std::cerr << text_of(note, common) << '\n';
    if (!notes.empty() || std::ranges::any_of(conditions, refuses_adoption, &LedgerCondition::condition)) {
        std::cerr << "vantlo: " << common.say(words::cannot_adopt) << '\n';
        return ExitCode::refused;
    }
    const std::vector<OwnTable> tables = own_tables_of(*database).missing;
    const std::vector<MissingColumn> columns = missing_own_columns(*database);
    const bool lacks_journal = journal_state(*database) != JournalState::on;
    if (common.dry_run) {
        std::cout << script_of(tables, columns);
        if (lacks_journal) std::cout << journal_scripts_for(database->dialect().name).on;
        return ExitCode::done;
    }
    PartList missing(common);
    missing.add(tables);
    for (const MissingColumn& column : columns) missing.add(common.say(words::own_column, column.table, column.column));
    if (lacks_journal) missing.add(common.say(words::journal_parts));
    if (missing.empty()) {
        std::cerr << common.say(words::nothing_missing) << '\n';
    } else {
        if (const auto exit_code = not_confirmed(common, common.say(words::would_make, missing.text()), says_yes))
            return *exit_code;
        database->run_script(script_of(tables, columns));
        if (lacks_journal) switch_journal_on(*database);
    }
    const JournalStatus status = journal_status(*database);
    std::cout << report_of(status, common.language);
    return status.unexplained.empty() ? ExitCode::done : ExitCode::differs;
}

}  // namespace

void add_adopt(CLI::App& app, CommandCall& call) {
    CommonOptions& common = call.common;
    CLI::App* const command = add_command(
        app, common, "adopt", words::adopt_about,
        {{"vantlo adopt --dry-run", words::adopt_example}, {"vantlo adopt --yes", words::adopt_yes_example}});
    command->add_flag("--dry-run", common.dry_run, common.say(words::adopt_dry_run));
    const auto says_yes = add_yes_option(*command, common);
    command->callback(
        [&call, says_yes] { call.work = [&common = call.common, says_yes] { return adopt(common, *says_yes); }; });
}

}  // namespace vantlo
