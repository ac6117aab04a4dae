#include <algorithm>
#include <fstream>
#include <iostream>
#include <map>
#include <sstream>

#include "audit/adoption.h"
#include "audit/ledger_conditions.h"
#include "audit/shop_proposal.h"
#include "bookkeeping/journal.h"
#include "bookkeeping/own_tables.h"
#include "bookkeeping/shop_description.h"
#include "output/conditions_report.h"
#include "output/journal_report.h"
#include "tool/commands/own_parts.h"

namespace vantlo {

namespace words {

// clang-format off
constexpr Message adopt_about    = {"接管主机已使用多年的数据库：检查，建立缺少的部分，记录期初数量",
                                    "Take a database under care that a host has used for years: look it over, make what is missing, enter each ledger row's opening quantities"};
constexpr Message adopt_example  = {"先看会建立什么", "See first what would be made"};
constexpr Message adopt_yes_example = {"不询问，直接接管", "Adopt without asking"};
constexpr Message adopt_dry_run  = {"只显示将执行的语句", "Only show the statements"};
constexpr Message adopt_propose  = {"显示对单据表的描述草稿，供填写；不作任何改动", "Show a draft of how the bill tables are read, to be completed; nothing is changed"};
constexpr Message adopt_shop     = {"保存填写好的描述：核对时怎样读取单据表", "Keep a completed description: how an audit reads the bill tables"};
constexpr Message propose_example = {"为主机自己的单据表写一份描述草稿", "Draft a description of the host's own bill tables"};
constexpr Message shop_example   = {"按填写好的描述读取单据表", "Read the bill tables as the completed draft says"};
constexpr Message nothing_like_bills = {"没有像单据明细的表。", "No table looks like one of bill lines."};
constexpr Message cannot_read    = {"不能读取 {}", "{} cannot be read"};
constexpr Message bills_read     = {"{}：{} 张单据", "{}: {:bill|bills}"};
constexpr Message lines_read     = {"明细 {} 行", "{:line|lines} in all"};
constexpr Message the_description = {"对单据表的描述", "the description of the bill tables"};
constexpr Message not_described  = {"提示：不知道怎样读取单据表，单据不参加核对；见 vantlo adopt --propose", "hint: how the bill tables are read is not known, and no bill takes part in an audit; see vantlo adopt --propose"};
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

struct AdoptOptions {
    bool proposes = false;
    std::string shop_file;  ///< empty if none is given
};

std::string content_of(const std::string& path, const CommonOptions& common) {
    std::ifstream file(path, std::ios::binary);
    std::ostringstream content;
    if (!(content << file.rdbuf())) throw TaskError(Reason::bad_input, common.say(words::cannot_read, path));
    return content.str();
}

/// Reads all bills as a description says, in a transaction that is rolled back, and tells how many there are of each kind.
void try_description(NativeConnection& database, const std::string& content, const CommonOptions& common) {
    const std::vector<BillSource> sources = described_bill_sources(content, database.dialect(), common.language);
    std::map<std::string, std::int64_t> bills;
    std::int64_t lines = 0;
    database.begin();
    try {
        for (const BillSource& source : sources) {
            const RecordsetVariable headers = database.execute(source.select_headers);
            for (; !headers->eof(); headers->move_next()) ++bills[to_utf8(to_text(headers->field(u"Kind")))];
            const RecordsetVariable rows = database.execute(source.select_lines);
            for (; !rows->eof(); rows->move_next()) ++lines;
        }
    } catch (...) {
        database.roll_back();
        throw;
    }
    database.roll_back();
    for (const auto& [kind, count] : bills) std::clog << common.say(words::bills_read, kind, Count(count)) << '\n';
    std::clog << common.say(words::lines_read, Count(lines)) << '\n';
}

ExitCode propose(NativeConnection& database, const CommonOptions& common) {
    const std::string proposal = propose_description(database, common.language);
    if (proposal.empty()) std::cerr << common.say(words::nothing_like_bills) << '\n';
    std::cout << proposal;
    return ExitCode::done;
}

/// Tells what stands in the way, or is worth knowing. Returns whether the database can be adopted.
bool can_be_adopted(NativeConnection& database, const CommonOptions& common) {
    const std::vector<LedgerCondition> conditions = ledger_conditions(database);
    std::cerr << report_of(conditions, common.language);
    const std::vector<AdoptionNote> notes = look_before_adopting(database);
    for (const AdoptionNote& note : notes) std::cerr << text_of(note, common) << '\n';
    if (notes.empty() && std::ranges::none_of(conditions, refuses_adoption, &LedgerCondition::condition)) return true;
    std::cerr << "vantlo: " << common.say(words::cannot_adopt) << '\n';
    return false;
}

ExitCode adopt(const CommonOptions& common, const AdoptOptions& options, bool says_yes) {
    const auto database = common.connect()();
    if (options.proposes) return propose(*database, common);
    if (!can_be_adopted(*database, common)) return ExitCode::refused;
    std::optional<std::string> description;
    if (!options.shop_file.empty()) {
        description = content_of(options.shop_file, common);
        try_description(*database, *description, common);
    }
    const std::vector<OwnTable> tables = own_tables_of(*database).missing;
    const std::vector<MissingColumn> columns = missing_own_columns(*database);
    const JournalState journal = journal_state(*database);
    const bool lacks_journal = journal != JournalState::on;
    if (common.dry_run) {
        std::cout << script_of(tables, columns);
        const JournalScripts scripts = journal_scripts_for(database->dialect().name);
        if (journal == JournalState::broken) std::cout << scripts.off;
        if (lacks_journal) std::cout << scripts.on;
        if (description) std::cout << script_keeping(*description);
        return ExitCode::done;
    }
    PartList missing(common);
    missing.add(tables);
    for (const MissingColumn& column : columns) missing.add(common.say(words::own_column, column.table, column.column));
    if (lacks_journal) missing.add(common.say(words::journal_parts));
    if (description) missing.add(common.say(words::the_description));
    if (missing.empty()) {
        std::clog << common.say(words::nothing_missing) << '\n';
    } else {
        if (const auto exit_code = not_confirmed(common, common.say(words::would_make, missing.text()), says_yes))
            return *exit_code;
        database->run_script(script_of(tables, columns));
        if (lacks_journal) switch_journal_on(*database);
        if (description) keep_description(*database, *description);
    }
    if (bill_sources(*database, common.language).empty()) std::clog << common.say(words::not_described) << '\n';
    const JournalStatus status = journal_status(*database);
    std::cout << report_of(status, common.language);
    return status.unexplained.empty() ? ExitCode::done : ExitCode::differs;
}

}  // namespace

void add_adopt(CLI::App& app, CommandCall& call) {
    CommonOptions& common = call.common;
    CLI::App* const command = add_command(app, common, "adopt", words::adopt_about,
                                          {{"vantlo adopt --dry-run", words::adopt_example},
                                           {"vantlo adopt --yes", words::adopt_yes_example},
                                           {"vantlo adopt --propose >shop.json", words::propose_example},
                                           {"vantlo adopt --shop shop.json", words::shop_example}});
    command->add_flag("--dry-run", common.dry_run, common.say(words::adopt_dry_run));
    const auto options = std::make_shared<AdoptOptions>();
    CLI::Option* const shop =
        command->add_option("--shop", options->shop_file, common.say(words::adopt_shop))->type_name("FILE");
    command->add_flag("--propose", options->proposes, common.say(words::adopt_propose))->excludes(shop);
    const auto says_yes = add_yes_option(*command, common);
    command->callback([&call, options, says_yes] {
        call.work = [&common = call.common, options, says_yes] { return adopt(common, *options, *says_yes); };
    });
}

}  // namespace vantlo
