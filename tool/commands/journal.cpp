#include "bookkeeping/journal.h"

#include <iostream>
#include <memory>

#include "output/journal_report.h"
#include "tool/commands/command.h"

namespace vantlo {

namespace words {

// clang-format off
constexpr Message journal_about   = {"开启、关闭或查看数据库自己记录的库存流水", "Switch the database's own journal of stock movements on or off, or look at it"};
constexpr Message journal_action  = {"on 开启，off 关闭（保留流水），status 查看", "on, off (its movements stay), or status"};
constexpr Message journal_example = {"流水是否开启，台账是否等于各次变动之和", "Whether it is on, and the ledger the sum of its movements"};
constexpr Message journal_on_example = {"从现在起记录台账的每一次变动", "From now on every change of the ledger is written down"};
// clang-format on

}  // namespace words

namespace {

ExitCode report_status(NativeConnection& database, const CommonOptions& common) {
    const JournalStatus status = journal_status(database);
    std::cout << report_of(status, common.language);
    const bool is_whole = status.unexplained.empty() && status.state != JournalState::broken;
    return is_whole ? ExitCode::done : ExitCode::differs;
}

ExitCode journal(const CommonOptions& common, const std::string& action) {
    if (action == "status") return report_status(*common.read(), common);
    const auto database = common.connect()();
    const JournalState before = journal_state(*database);
    if (before == JournalState::unsupported) {
        std::cerr << "vantlo: " << common.say(words::no_journal_here, database->engine()) << '\n';
        return ExitCode::refused;
    }
    if (action == "on") {
        switch_journal_on(*database);
    } else if (before != JournalState::absent) {
        switch_journal_off(*database);
    }
    return report_status(*database, common);
}

}  // namespace

void add_journal(CLI::App& app, CommandCall& call) {
    const CommonOptions& common = call.common;
    CLI::App* const command = add_command(
        app, common, "journal", words::journal_about,
        {{"vantlo journal status", words::journal_example}, {"vantlo journal on", words::journal_on_example}});
    const auto action = std::make_shared<std::string>();
    command->add_option("ACTION", *action, common.say(words::journal_action))
        ->required()
        ->check(CLI::IsMember({"on", "off", "status"}))
        ->type_name("");
    command->callback(
        [&call, action] { call.work = [&common = call.common, action] { return journal(common, *action); }; });
}

}  // namespace vantlo
