#include <iostream>
#include <map>

#include "bookkeeping/import_journal.h"
#include "bookkeeping/interrupt.h"
#include "import/shop_reader.h"
#include "tool/commands/command.h"
#include "tool/commands/file_checks.h"
#include "tool/output/progress_bar.h"

namespace vantlo {

namespace words {

// clang-format off
constexpr Message import_about   = {"从文件导入基础资料和单据，先全部检查", "Take over master data and bills from files, all checked first"};
constexpr Message import_files   = {"含基础资料和单据的文件：.csv、.jsonl 或 .json", "Files of master data and bills: .csv, .jsonl or .json"};
constexpr Message import_example = {"导入商品、单位和单据", "Import goods, units and bills"};
constexpr Message import_gb_example = {"导入电子表格以 GB18030 编码保存的单据", "Import bills that a spreadsheet has written in GB18030"};
constexpr Message encoding_option = {"文件的编码：utf-8 或 gb18030", "Encoding of the files: utf-8 or gb18030"};
constexpr Message table_option   = {"CSV 文件的行是什么（文件不以此命名时）：warehouses、goods 或 units", "What the rows of a CSV file are that is not named after it: warehouses, goods or units"};
constexpr Message would_import   = {"将导入 {} 行基础资料和 {} 张单据，共 {} 行；另有 {} 张单据已保存过；未写入任何数据。",
                                           "Would import {:row|rows} of master data and {:bill|bills} with {:line|lines}; {:bill was|bills were} there already. Nothing was written."};
constexpr Message imported       = {"已导入 {} 行基础资料和 {} 张单据，共 {} 行；另有 {} 张单据已保存过。",
                                           "Imported {:row|rows} of master data and {:bill|bills} with {:line|lines}; {:bill was|bills were} there already."};
constexpr Message import_interrupted = {"已中断：已导入 {} 张单据，共 {} 行，还剩 {} 张；正在处理的已回滚。再次运行同一命令即可继续。",
                                           "Interrupted: imported {:bill|bills} with {:line|lines}, {:is|are} left, and what was begun is rolled back. The same command goes on from there."};
constexpr Message import_stopped = {"已导入 {} 张单据，共 {} 行，还剩 {} 张。改正后再次运行同一命令即可继续。",
                                           "Imported {:bill|bills} with {:line|lines}, {:is|are} left. Once this is put right, the same command goes on from there."};
// clang-format on

}  // namespace words

namespace {

/// A commit costs as much as some dozen lines; what an interrupt rolls back is imported again within a moment.
constexpr std::size_t lines_a_transaction = 500;

struct ImportOptions {
    std::vector<std::string> paths;
    FileOptions files;
};

/// The bills that are not stored yet.
/// Errors   bills that the database knows otherwise are told.
std::vector<const Bill*> bills_to_import(NativeConnection& database, ShopReader& reader) {
    const std::vector<Bill>& bills = reader.shop().bills;
    const std::vector<BillState> states = states_of(database, bills);
    std::vector<const Bill*> absent;
    for (std::size_t index = 0; index < bills.size(); ++index) {
        if (states[index] == BillState::absent) absent.push_back(&bills[index]);
        tell_state(reader, bills[index], states[index]);
    }
    return absent;
}

/// The first of the bills that go into one transaction: one at least, however long it is.
std::span<const Bill* const> next_batch(std::span<const Bill* const> bills) {
    std::size_t count = 0;
    for (std::size_t lines = 0; count < bills.size() && lines < lines_a_transaction; ++count) {
        lines += bills[count]->lines.size();
    }
    return bills.first(count);
}

std::size_t lines_of(std::span<const Bill* const> bills) {
    std::size_t lines = 0;
    for (const Bill* const bill : bills) lines += bill->lines.size();
    return lines;
}

/// Posts what the files hold, and knows how far it has come.
class Import {
public:
    Import(const CommonOptions& common, ShopReader& reader, std::span<const Bill* const> bills)
        : common_(common),
          reader_(reader),
          shop_(reader.shop()),
          bills_(bills),
          bookkeeping_(common.bookkeeping(bills)),
          progress_(shop_.master.size() + lines_of(bills), common.language) {}

    /// Errors   those of Bookkeeping, with what was imported before.
    void run() {
        try {
            save_master();
            import_bills();
        } catch (const TaskError& error) {
            throw TaskError(error.reason(), error.reason() == Reason::interrupted ? interruption() : stop(error));
        } catch (const Failure& failure) {
            throw Failure(failure.number(), stop(failure));
        }
    }

    [[nodiscard]] std::string summary() const {
        return common_.say(common_.dry_run ? words::would_import : words::imported, Count(shop_.master.size()),
                           Count(done_bills_), Count(done_lines_),
                           Count(shop_.bills.size() - bills_.size() + passed_over_));
    }

private:
    void save_master() {
        for (std::span<const MasterRow> left = shop_.master; !left.empty();) {
            const auto batch = left.first(std::min(left.size(), lines_a_transaction));
            bookkeeping_.save_master(batch);
            left = left.subspan(batch.size());
            progress_.show(shop_.master.size() - left.size());
        }
    }

    void import_bills() {
        for (std::span<const Bill* const> left = bills_; !left.empty();) {
            const auto batch = common_.dry_run ? left.first(1) : next_batch(left);
            import_batch(batch);
            left = left.subspan(batch.size());
            progress_.show(shop_.master.size() + lines_of(bills_) - lines_of(left));
        }
    }

    /// Imports the bills in one transaction, without those that another host stores meanwhile.
    void import_batch(std::span<const Bill* const> batch) {
        std::vector<const Bill*> absent;
        try {
            bookkeeping_.import(batch);
            done_bills_ += batch.size();
            done_lines_ += lines_of(batch);
            return;
        } catch (const TaskError& error) {
            if (error.reason() == Reason::interrupted || !leaves_some_out(batch, absent)) throw;
        } catch (const Failure&) {
            if (!leaves_some_out(batch, absent)) throw;
        }
        passed_over_ += batch.size() - absent.size();
        if (!absent.empty()) import_batch(absent);
    }

    /// Leaves out what another host has stored meanwhile; `absent` is the rest.
    /// Returns  false if nothing is left out. Errors: TaskError, where a bill is stored with other content.
    bool leaves_some_out(std::span<const Bill* const> batch, std::vector<const Bill*>& absent) {
        const auto states = stored_meanwhile(batch, common_);
        if (!states) return false;
        for (std::size_t i = 0; i < batch.size(); ++i) {
            if ((*states)[i] == BillState::absent) absent.push_back(batch[i]);
            tell_state(reader_, *batch[i], (*states)[i]);
        }
        reader_.errors().raise();
        return true;
    }

    [[nodiscard]] std::string interruption() const {
        if (common_.dry_run) return common_.say(words::interrupted_rehearsal);
        return common_.say(words::import_interrupted, Count(done_bills_), Count(done_lines_),
                           Count(bills_.size() - done_bills_ - passed_over_));
    }

    [[nodiscard]] std::string stop(const std::exception& failure) const {
        if (common_.dry_run) return failure.what();
        return failure.what() + ("\n" + common_.say(words::import_stopped, Count(done_bills_), Count(done_lines_),
                                                    Count(bills_.size() - done_bills_ - passed_over_)));
    }

    const CommonOptions& common_;
    ShopReader& reader_;
    const ShopFile& shop_;
    std::span<const Bill* const> bills_;
    Bookkeeping bookkeeping_;
    ProgressBar progress_;
    std::size_t done_bills_ = 0;
    std::size_t done_lines_ = 0;
    std::size_t passed_over_ = 0;  ///< stored by another host since it was looked
};

ExitCode import(const CommonOptions& common, const ImportOptions& options, const FileCheckOptions& checks) {
    ShopReader reader(common.language);
    for (const std::string& path : options.paths) reader.read(path, options.files);
    reader.errors().raise();
    std::vector<const Bill*> bills;
    {
        const auto database = common.read();
        bills = bills_to_import(*database, reader);
        reader.errors().raise();
        const std::vector<MasterRow>& master = reader.shop().master;
        check_names(*database, master, bills, checks, common);
        if (const auto exit_code = master_not_confirmed(*database, master, checks, common)) return *exit_code;
    }

    std::string summary;
    {
        Import import(common, reader, bills);  // its progress bar goes before anything else is written
        import.run();
        summary = import.summary();
    }
    std::cerr << summary << '\n';
    return ExitCode::done;
}

}  // namespace

void add_import(CLI::App& app, CommandCall& call) {
    CommonOptions& common = call.common;
    CLI::App* const command = add_command(app, common, "import", words::import_about,
                                          {{"vantlo import goods.csv units.csv bills.csv", words::import_example},
                                           {"vantlo import --encoding gb18030 bills.csv", words::import_gb_example}});
    const auto options = std::make_shared<ImportOptions>();
    command->add_option("FILE", options->paths, common.say(words::import_files))->required();
    command->add_option("--encoding", options->files.encoding, common.say(words::encoding_option))
        ->transform(
            CLI::Transformer(std::map<std::string, Encoding>{{"utf-8", Encoding::utf8}, {"gb18030", Encoding::gb18030}},
                             CLI::ignore_case))
        ->default_str("utf-8");
    command->add_option("--table", options->files.table, common.say(words::table_option));
    add_posting_options(*command, common);
    const auto checks = add_file_check_options(*command, common);
    command->callback([&call, options, checks] {
        call.work = [&common = call.common, options, checks] { return import(common, *options, *checks); };
    });
}

}  // namespace vantlo
