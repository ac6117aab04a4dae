#include <iostream>

#include "bookkeeping/interrupt.h"
#include "import/shop_file.h"
#include "tool/commands/command.h"

namespace vantlo {

namespace words {

// clang-format off
constexpr Message save_about     = {"保存单据并过账", "Store bills and post them"};
constexpr Message save_files     = {"含基础资料和单据的 JSON 文件", "JSON files of master data and bills"};
constexpr Message save_example   = {"保存文件中的单据，每张单据一个事务", "Save the bills of a file, each in a transaction of its own"};
constexpr Message save_sql_example = {"同时显示发出的每条语句", "Show every statement beside it"};
constexpr Message save_dry_example = {"只显示会发生什么", "Show what would happen"};
constexpr Message saved          = {"已保存 {} 张单据，共 {} 行。", "Saved {:bill|bills} with {:line|lines}."};
constexpr Message interrupted_at = {"已中断：已保存 {} 张单据，共 {} 行；{} {} 已回滚，其后的单据未处理。",
                                           "Interrupted: saved {:bill|bills} with {:line|lines}; {} {} was rolled back, and none after it begun."};
constexpr Message would_save     = {"将保存 {} 张单据，共 {} 行；未写入任何数据。", "Would save {:bill|bills} with {:line|lines}; nothing was written."};
// clang-format on

}  // namespace words

namespace {

/// What was saved so far.
struct Saved {
    std::size_t bills = 0;
    std::size_t lines = 0;
};

void save_bill(Bookkeeping& bookkeeping, const Bill& bill, Saved& saved, const CommonOptions& common) {
    try {
        bookkeeping.save(bill);
    } catch (const TaskError& error) {
        if (error.reason() != Reason::interrupted) throw;
        if (common.dry_run) throw TaskError(Reason::interrupted, common.say(words::interrupted_rehearsal));
        throw TaskError(Reason::interrupted, common.say(words::interrupted_at, Count(saved.bills), Count(saved.lines),
                                                        bill.kind->name, to_utf8(bill.id)));
    }
    ++saved.bills;
    saved.lines += bill.lines.size();
}

ExitCode save(const CommonOptions& common, const std::vector<std::string>& paths) {
    std::vector<ShopFile> files;
    for (const std::string& path : paths) files.push_back(read_shop_file(path, common.language));
    Bookkeeping bookkeeping = common.bookkeeping();
    Saved saved;
    const auto report = [&](const Message& wording) {
        std::cerr << common.say(wording, Count(saved.bills), Count(saved.lines)) << '\n';
    };
    try {
        for (const ShopFile& file : files) {
            if (!file.master.empty()) bookkeeping.save_master(file.master);
            for (const Bill& bill : file.bills) save_bill(bookkeeping, bill, saved, common);
        }
    } catch (...) {
        if (!common.dry_run && !is_interrupted()) report(words::saved);
        throw;
    }
    report(common.dry_run ? words::would_save : words::saved);
    return ExitCode::done;
}

}  // namespace

void add_save(CLI::App& app, CommandCall& call) {
    CommonOptions& common = call.common;
    CLI::App* const command = add_command(app, common, "save", words::save_about,
                                          {{"vantlo save bills.json", words::save_example},
                                           {"vantlo save --dry-run bills.json", words::save_dry_example},
                                           {"vantlo --show-sql save bills.json", words::save_sql_example}});
    const auto paths = std::make_shared<std::vector<std::string>>();
    command->add_option("FILE", *paths, common.say(words::save_files))->required();
    add_posting_options(*command, common);
    command->callback([&call, paths] { call.work = [&common = call.common, paths] { return save(common, *paths); }; });
}

}  // namespace vantlo
