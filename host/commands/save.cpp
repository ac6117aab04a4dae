#include <iostream>

#include "host/bill_file.h"
#include "host/commands/command.h"
#include "host/interrupt.h"

namespace vantlo::host {

namespace {

ExitCode save(const CommonOptions& common, const std::vector<std::string>& paths) {
    std::vector<ShopFile> files;
    for (const std::string& path : paths) files.push_back(read_shop_file(path, common.language));
    Bookkeeping bookkeeping = common.bookkeeping();
    std::size_t bills = 0, lines = 0;
    for (const ShopFile& file : files) {
        if (!file.master.empty()) bookkeeping.save_master(file.master);
        for (const Bill& bill : file.bills) {
            try {
                bookkeeping.save(bill);
            } catch (const Interrupted&) {
                if (common.dry_run) throw Interrupted(common.say(words::interrupted_rehearsal));
                throw Interrupted(common.say(words::interrupted_at, bills, lines, bill.kind->name, to_utf8(bill.id)));
            } catch (...) {
                if (!common.dry_run) std::cerr << common.say(words::saved, bills, lines) << '\n';
                throw;
            }
            ++bills;
            lines += bill.lines.size();
        }
    }
    std::cerr << common.say(common.dry_run ? words::would_save : words::saved, bills, lines) << '\n';
    return ExitCode::done;
}

}  // namespace

void add_save(CLI::App& app, Invocation& invocation) {
    CommonOptions& common = invocation.common;
    CLI::App* const command = add_command(app, common, "save", words::save_about,
                                          {{"vantlo save bills.json", words::save_example},
                                           {"vantlo save --dry-run bills.json", words::save_dry_example},
                                           {"vantlo --show-sql save bills.json", words::save_sql_example}});
    const auto paths = std::make_shared<std::vector<std::string>>();
    command->add_option("FILE", *paths, common.say(words::save_files))->required();
    add_posting_options(*command, common);
    command->callback([&invocation, paths] {
        invocation.work = [&common = invocation.common, paths] { return save(common, *paths); };
    });
}

}  // namespace vantlo::host
