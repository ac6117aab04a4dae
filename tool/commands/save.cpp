#include <algorithm>
#include <iostream>
#include <iterator>
#include <list>
#include <map>

#include "bookkeeping/import_journal.h"
#include "bookkeeping/interrupt.h"
#include "bookkeeping/stored_bill.h"
#include "import/shop_reader.h"
#include "tool/commands/command.h"
#include "tool/commands/file_checks.h"

namespace vantlo {

namespace words {

// clang-format off
constexpr Message save_about     = {"保存单据并过账", "Store bills and post them"};
constexpr Message save_files     = {"含基础资料和单据的 JSON 文件", "JSON files of master data and bills"};
constexpr Message save_example   = {"保存文件中的单据，每张单据一个事务", "Save the bills of a file, each in a transaction of its own"};
constexpr Message save_sql_example = {"同时显示发出的每条语句", "Show every statement beside it"};
constexpr Message save_dry_example = {"只显示会发生什么", "Show what would happen"};
constexpr Message saved          = {"已保存 {} 张单据，共 {} 行。", "Saved {:bill|bills} with {:line|lines}."};
constexpr Message interrupted_at = {"已中断：已保存 {} 张单据，共 {} 行；{} {} 已回滚，其后的单据未处理。再次运行同一命令即可继续。",
                                           "Interrupted: saved {:bill|bills} with {:line|lines}; {} {} was rolled back, and none after it begun. The same command goes on from there."};
constexpr Message passed_over    = {"另有 {} 张单据已保存过。", " {:bill was|bills were} there already."};
constexpr Message would_save     = {"将保存 {} 张单据，共 {} 行；未写入任何数据。", "Would save {:bill|bills} with {:line|lines}; nothing was written."};
// clang-format on

}  // namespace words

namespace {

/// What was saved so far.
struct Saved {
    std::size_t bills = 0;
    std::size_t lines = 0;
    std::size_t passed_over = 0;  ///< stored already
};

/// One file, and those of its bills that are not stored yet.
struct FileToSave {
    explicit FileToSave(Language language) : reader(language) {}

    ShopReader reader;
    std::vector<const Bill*> bills;
};

/// Leaves out bills that are stored already. `chosen` has those of all files so far, by table and id.
/// Returns  how many were left out.
/// Errors   bills that are stored otherwise are added to the file's errors.
std::size_t choose_bills(NativeConnection& database, FileToSave& file, std::map<std::string, const Bill*>& chosen) {
    const std::vector<Bill>& bills = file.reader.shop().bills;
    const std::vector<BillState> states = states_of(database, bills);
    std::size_t passed_over = 0;
    for (std::size_t index = 0; index < bills.size(); ++index) {
        const Bill& bill = bills[index];
        const std::string key = to_utf8(bill.kind->header->name) + "\n" + to_utf8(bill.id);
        const auto [before, is_first] = chosen.try_emplace(key, &bill);
        if (!is_first) {  // of another file of this call
            if (before->second->kind != bill.kind)
                tell_state(file.reader, bill, BillState::other_kind);
            else if (!is_stored_as(*before->second, bill))
                tell_state(file.reader, bill, BillState::stored_otherwise);
            else
                ++passed_over;
            continue;
        }
        if (states[index] == BillState::absent) file.bills.push_back(&bill);
        if (states[index] == BillState::imported || states[index] == BillState::stored) ++passed_over;
        tell_state(file.reader, bill, states[index]);
    }
    return passed_over;
}

/// Whether another host has saved the bill meanwhile. Errors: TaskError, if with other content.
bool is_stored_meanwhile(FileToSave& file, const Bill& bill, const CommonOptions& common) {
    const Bill* const bills[] = {&bill};
    const auto states = stored_meanwhile(bills, common);
    if (!states) return false;
    tell_state(file.reader, bill, states->front());
    file.reader.errors().raise();
    return true;
}

/// Saves a bill, or passes it over where another host has done so.
void save_bill(Bookkeeping& bookkeeping, FileToSave& file, const Bill& bill, Saved& saved,
               const CommonOptions& common) {
    try {
        bookkeeping.save(bill);
        ++saved.bills;
        saved.lines += bill.lines.size();
        return;
    } catch (const TaskError& error) {
        if (error.reason() == Reason::interrupted) {
            if (common.dry_run) throw TaskError(Reason::interrupted, common.say(words::interrupted_rehearsal));
            throw TaskError(Reason::interrupted, common.say(words::interrupted_at, Count(saved.bills),
                                                            Count(saved.lines), bill.kind->name, to_utf8(bill.id)));
        }
        if (!is_stored_meanwhile(file, bill, common)) throw;
    } catch (const Failure&) {
        if (!is_stored_meanwhile(file, bill, common)) throw;
    }
    ++saved.passed_over;
}

ExitCode save(const CommonOptions& common, const std::vector<std::string>& paths, const FileCheckOptions& options) {
    std::list<FileToSave> files;
    for (const std::string& path : paths) {
        FileToSave& file = files.emplace_back(common.language);
        file.reader.read(path);
        for (const std::string& line : file.reader.detected()) std::cerr << line << '\n';
        file.reader.errors().raise();
    }
    Saved saved;
    std::vector<const Bill*> bills;
    {
        const auto database = common.read();
        std::map<std::string, const Bill*> chosen;
        std::vector<MasterRow> master;
        for (FileToSave& file : files) {
            saved.passed_over += choose_bills(*database, file, chosen);
            file.reader.errors().raise();
            std::ranges::copy(file.reader.shop().master, std::back_inserter(master));
            std::ranges::copy(file.bills, std::back_inserter(bills));
        }
        check_names(*database, master, bills, options, common);
        if (const auto exit_code = master_not_confirmed(*database, master, options, common)) return *exit_code;
    }
    Bookkeeping bookkeeping = common.bookkeeping(bills);
    const auto report = [&](const Message& wording) {
        std::clog << common.say(wording, Count(saved.bills), Count(saved.lines))
                  << (saved.passed_over == 0 ? "" : common.say(words::passed_over, Count(saved.passed_over))) << '\n';
    };
    try {
        for (FileToSave& file : files) {
            const std::vector<MasterRow>& master = file.reader.shop().master;
            if (!master.empty()) bookkeeping.save_master(master);
            for (const Bill* const bill : file.bills) save_bill(bookkeeping, file, *bill, saved, common);
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
    const auto options = add_file_check_options(*command, common);
    command->callback([&call, paths, options] {
        call.work = [&common = call.common, paths, options] { return save(common, *paths, *options); };
    });
}

}  // namespace vantlo
