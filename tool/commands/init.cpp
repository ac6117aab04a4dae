#include <iostream>

#include "audit/ledger_conditions.h"
#include "bills/schema.h"
#include "bookkeeping/journal.h"
#include "bookkeeping/own_tables.h"
#include "output/conditions_report.h"
#include "output/journal_report.h"
#include "tool/commands/own_parts.h"

namespace vantlo {

namespace words {

// clang-format off
constexpr Message init_about     = {"建立缺少的数据表，补上较早版本的表缺少的列", "Make the tables that are missing, and columns that tables of an earlier version lack"};
constexpr Message unique_key_option = {"禁止同一键有两行台账；多个主机同时记账时使用", "Forbid two ledger rows of one key; for several hosts at once"};
constexpr Message init_example   = {"在 shop.db 中建立数据表", "Make the tables in shop.db"};
constexpr Message init_dry_run_option = {"只显示将执行的语句", "Only show the statements"};
constexpr Message no_journal_option = {"不建立库存流水", "Make no journal of movements"};
constexpr Message adopt_instead  = {"台账已有数据，未建立库存流水；vantlo adopt 检查后建立。", "The ledger has rows already: no journal of movements was begun; vantlo adopt looks it over and begins one."};
constexpr Message the_database   = {"数据库", "the database"};
constexpr Message all_made       = {"已在 {} 中建立 {} 个数据表{}（{}）。", "Made {1:table|tables}{2} in {0} ({3})."};
constexpr Message and_journal    = {"和库存流水", " and the journal of movements"};
constexpr Message some_made      = {"已在 {} 中建立：{}；原有 {} 个数据表（{}）。", "Made in {}: {}; {:table was|tables were} there ({})."};
constexpr Message nothing_made   = {"{} 中原有全部 {} 个数据表，未建立任何内容（{}）。", "Nothing was made: {} has all {:table|tables} ({})."};
constexpr Message made_column    = {"列 {}.{}", "column {}.{}"};
constexpr Message made_table     = {"表 {}", "table {}"};
constexpr Message made_journal   = {"库存流水", "the journal of movements"};
// clang-format on

}  // namespace words

namespace {

/// Begins the journal of a ledger that is empty. One that is off stays so: its owner has switched it off.
/// Returns whether it has begun now.
bool begin_journal(NativeConnection& database, const CommonOptions& common) {
    const JournalState before = journal_state(database);
    if (before == JournalState::broken) std::cerr << report_of({before, 0, {}}, common.language);
    if (before != JournalState::absent) return false;
    if (!database.execute(u"select * from Inventory")->eof()) {
        std::cerr << common.say(words::adopt_instead) << '\n';
        return false;
    }
    switch_journal_on(database);
    return true;
}

/// What a database had, and what was made in it.
struct Made {
    std::vector<std::string> tables_before;
    std::vector<std::string> tables;
    std::vector<MissingColumn> columns;
    bool journal = false;
};

std::string name_of_database(const CommonOptions& common) {
    constexpr std::string_view sqlite = "sqlite:";
    const std::string name = common.connection_texts().front();
    return name.starts_with(sqlite) ? name.substr(sqlite.size()) : common.say(words::the_database);
}

std::string report_of(const Made& made, const std::string& engine, const CommonOptions& common) {
    const std::string database = name_of_database(common);
    if (made.tables_before.empty() && made.columns.empty()) {
        const std::string journal = made.journal ? common.say(words::and_journal) : "";
        return common.say(words::all_made, database, Count(made.tables.size()), journal, engine);
    }
    PartList parts(common);
    for (const std::string& table : made.tables) parts.add(common.say(words::made_table, table));
    for (const MissingColumn& column : made.columns)
        parts.add(common.say(words::made_column, column.table, column.column));
    if (made.journal) parts.add(common.say(words::made_journal));
    const Count before(made.tables_before.size());
    return parts.empty() ? common.say(words::nothing_made, database, before, engine)
                         : common.say(words::some_made, database, parts.text(), before, engine);
}

struct Wanted {
    bool unique_key = false;
    bool no_journal = false;
};

ExitCode init(const CommonOptions& common, const Wanted& wanted) {
    if (common.dry_run) {
        const std::string_view dialect = common.dialect().name;
        std::cout << schema_for(dialect);
        if (wanted.unique_key) std::cout << unique_key_for(dialect);
        if (!wanted.no_journal) std::cout << journal_scripts_for(dialect).on;
        return ExitCode::done;
    }
    const auto database = common.connect(true)();
    Made made;
    for (const std::string& table : system_tables(database->dialect().name))
        (has_table(*database, table) ? made.tables_before : made.tables).push_back(table);
    try {
        database->run_script(schema_for(database->dialect().name));
    } catch (const Failure& failure) {
        // Who may make nothing needs nothing made.
        if (failure.number() != error::permission_denied || !made.tables.empty()) throw;
    }
    if (wanted.unique_key) database->run_script(unique_key_for(database->dialect().name));
    made.columns = missing_own_columns(*database);
    for (const MissingColumn& missing : made.columns) database->run(from_utf8(missing.statement));
    std::cerr << report_of(ledger_conditions(*database), common.language);
    made.journal = !wanted.no_journal && begin_journal(*database, common);
    std::clog << report_of(made, database->engine(), common) << '\n';
    return ExitCode::done;
}

}  // namespace

void add_init(CLI::App& app, CommandCall& call) {
    CommonOptions& common = call.common;
    CLI::App* const command =
        add_command(app, common, "init", words::init_about, {{"vantlo --db shop.db init", words::init_example}});
    command->add_flag("--dry-run", common.dry_run, common.say(words::init_dry_run_option));
    const auto wanted = std::make_shared<Wanted>();
    command->add_flag("--unique-key", wanted->unique_key, common.say(words::unique_key_option));
    command->add_flag("--no-journal", wanted->no_journal, common.say(words::no_journal_option));
    command->callback(
        [&call, wanted] { call.work = [&common = call.common, wanted] { return init(common, *wanted); }; });
}

}  // namespace vantlo
