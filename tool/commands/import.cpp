#include <iostream>
#include <map>

#include "bookkeeping/import_journal.h"
#include "bookkeeping/interrupt.h"
#include "import/shop_reader.h"
#include "output/progress_bar.h"
#include "tool/commands/command.h"
#include "tool/commands/file_checks.h"

namespace vantlo {

namespace words {

// clang-format off
constexpr Message import_about   = {"从文件导入基础资料和单据，先全部检查", "Take over master data and bills from files, all checked first"};
constexpr Message import_files   = {"含基础资料和单据的文件：.csv、.tsv、.txt、.xlsx、.jsonl 或 .json；- 为标准输入", "Files of master data and bills: .csv, .tsv, .txt, .xlsx, .jsonl or .json; - is standard input"};
constexpr Message import_example = {"导入商品、单位和单据", "Import goods, units and bills"};
constexpr Message import_gb_example = {"导入电子表格以 GB18030 编码保存的单据", "Import bills that a spreadsheet has written in GB18030"};
constexpr Message format_option  = {"文件的格式（文件名未说明时，例如标准输入 -）：csv、json、jsonl 或 xlsx", "Format of files whose names do not say it, such as - for standard input: csv, json, jsonl or xlsx"};
constexpr Message encoding_option = {"文件的编码（不指定时自动识别）", "Encoding of the files; detected where it is left out"};
constexpr Message delimiter_option = {"CSV 文件中分隔值的字符（不指定时自动识别）", "What separates the values of a CSV file; detected where it is left out"};
constexpr Message quote_option   = {"CSV 文件中括起值的引号", "The quotes around values of a CSV file"};
constexpr Message decimal_option = {"表格中的小数点：point（1,234.5）或 comma（1.234,5）", "The mark of decimals in tables: point (1,234.5) or comma (1.234,5)"};
constexpr Message date_format_option = {"03/04/2024 这样的日期：dmy（日在前）或 mdy（月在前）", "What 03/04/2024 means: dmy, the day first, or mdy, the month first"};
constexpr Message sheet_option   = {"工作簿中要读取的工作表（不指定时读取有单据或以数据表命名的）", "The sheet of a workbook to read; without it, the one with bills and those named after a table"};
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
    for (const std::string& line : reader.detected()) std::cerr << line << '\n';
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
    std::clog << summary << '\n';
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
    const auto add_choice = [&](const char* name, auto& value, const Message& about, const auto& choices) {
        std::vector<std::string> names;
        for (const auto& [choice, meaning] : choices) names.push_back(choice);
        return command
            ->add_option_function<std::string>(
                name, [options, &value, choices](const std::string& said) { value = choices.at(said); },
                common.say(about))
            ->transform(CLI::IsMember(names, CLI::ignore_case));
    };
    add_choice("--format", options->files.format, words::format_option,
               std::map<std::string, FileFormat>{{"csv", FileFormat::csv},
                                                 {"json", FileFormat::json},
                                                 {"jsonl", FileFormat::json_lines},
                                                 {"xlsx", FileFormat::workbook}});
    std::map<std::string, Encoding> encodings;
    for (const EncodingName& each : encoding_names()) encodings.emplace(each.name, each.encoding);
    add_choice("--encoding", options->files.encoding, words::encoding_option, encodings);
    add_choice("--delimiter", options->files.csv.delimiter, words::delimiter_option,
               std::map<std::string, char>{{"comma", ','}, {"semicolon", ';'}, {"tab", '\t'}, {"bar", '|'}});
    add_choice("--quote", options->files.csv.quote, words::quote_option,
               std::map<std::string, char>{{"double", '"'}, {"single", '\''}});
    add_choice("--decimal", options->files.decimal, words::decimal_option,
               std::map<std::string, char>{{"point", '.'}, {"comma", ','}});
    add_choice("--date-format", options->files.date_order, words::date_format_option,
               std::map<std::string, DateOrder>{{"dmy", DateOrder::day_first}, {"mdy", DateOrder::month_first}});
    command->add_option("--table", options->files.table, common.say(words::table_option));
    command->add_option("--sheet", options->files.sheet, common.say(words::sheet_option));
    add_posting_options(*command, common);
    const auto checks = add_file_check_options(*command, common);
    command->callback([&call, options, checks] {
        call.work = [&common = call.common, options, checks] { return import(common, *options, *checks); };
    });
}

}  // namespace vantlo
