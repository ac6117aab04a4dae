#include <iostream>

#include "bookkeeping/journal.h"
#include "tool/commands/own_parts.h"

namespace vantlo {

namespace words {

// clang-format off
constexpr Message leave_about    = {"移除 vantlo 自己的部分：库存流水和它的各表；主机的表不变",
                                    "Remove what is vantlo's own: the journal of movements and its tables; the host's stay as they are"};
constexpr Message leave_example  = {"先询问，再移除", "Asks, then removes all of it"};
constexpr Message would_remove   = {"将移除：{}。其中的内容不能恢复。", "To be removed: {}. What they hold cannot be brought back."};
constexpr Message whole_journal  = {"库存流水（{} 条）", "the journal with {} movements"};
constexpr Message nothing_there  = {"没有可移除的部分。", "There is nothing to remove."};
constexpr Message all_removed    = {"已移除。", "Removed."};
// clang-format on

}  // namespace words

namespace {

ExitCode leave(const CommonOptions& common, bool says_yes) {
    const auto database = common.connect()();
    const std::vector<OwnTable> tables = own_tables_of(*database).present;
    const JournalStatus status = journal_status(*database);
    const bool has_journal = status.state != JournalState::unsupported && status.state != JournalState::absent;
    PartList parts(common);
    if (has_journal) parts.add(common.say(words::whole_journal, status.movements));
    parts.add(tables);
    if (parts.empty()) {
        std::clog << common.say(words::nothing_there) << '\n';
        return ExitCode::done;
    }
    if (const auto exit_code = not_confirmed(common, common.say(words::would_remove, parts.text()), says_yes))
        return *exit_code;
    if (has_journal) remove_journal(*database);
    for (const OwnTable& table : tables) database->run(u"drop table " + from_utf8(table.name));
    std::clog << common.say(words::all_removed) << '\n';
    return ExitCode::done;
}

}  // namespace

void add_leave(CLI::App& app, CommandCall& call) {
    const CommonOptions& common = call.common;
    CLI::App* const command =
        add_command(app, common, "leave", words::leave_about, {{"vantlo leave", words::leave_example}});
    const auto says_yes = add_yes_option(*command, common);
    command->callback(
        [&call, says_yes] { call.work = [&common = call.common, says_yes] { return leave(common, *says_yes); }; });
}

}  // namespace vantlo
