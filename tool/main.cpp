// vantlo: the native reference host. It stores bills and posts them through the component.

#include <fmt/ranges.h>

#include <algorithm>
#include <iostream>
#include <span>

#include "automation/error.h"
#include "bookkeeping/interrupt.h"
#include "output/visible.h"
#include "tool/commands/command.h"
#include "tool/manual.h"

namespace vantlo::words {

// clang-format off
constexpr Message about          = {"使商店的库存台账与单据保持一致。", "Keeps a shop's stock ledger in step with its bills."};
constexpr Message usage          = {"用法", "Usage"};
constexpr Message arguments      = {"参数", "Arguments"};
constexpr Message options        = {"选项", "Options"};
constexpr Message required       = {"（必填）", "(required)"};
constexpr Message version_option = {"显示版本、数据库引擎和驱动程序并退出", "Show the versions of the program, the engine and its driver, and exit"};
constexpr Message db_option      = {"数据库：SQLite 文件、sqlite:文件，或 ODBC 连接字符串；集群的每个节点写一次。缺省为环境变量 VANTLO_DB，再缺省为 vantlo.db",
                                           "Database: an SQLite file, sqlite:FILE, or an ODBC connection string; once for each node of a cluster. By default the environment's VANTLO_DB, else vantlo.db"};
constexpr Message show_sql_option = {"在标准错误上显示每条发出的语句", "Show every statement on stderr as it is sent"};
constexpr Message lang_option    = {"语言：zh 或 en；缺省取自区域设置", "Language: zh or en; by default that of the locale"};
constexpr Message main_footer     = {
    "每个命令都有自己的帮助和示例：vantlo save --help",
    "Every command has help and examples of its own: vantlo save --help"};
constexpr Message something_missing = {"缺少参数或命令（{}）", "something is missing ({})"};
constexpr Message something_unknown = {"不认识的参数或命令（{}）", "something is unknown ({})"};
constexpr Message bad_value      = {"值无效（{}）", "a value is wrong ({})"};
constexpr Message see_help       = {"运行 {} --help 查看用法。", "Run {} --help for more."};
constexpr Message exit_codes     = {"退出码：", "Exit codes:"};
constexpr Message no_stdout      = {"标准输出无法写入", "stdout cannot be written"};
constexpr Message see_init       = {"vantlo init 建立缺少的数据表。", "vantlo init makes the tables that are missing."};
constexpr Message internal_error = {"内部错误（{}）；数据库中只有已完整保存的单据。请连同所用命令一并报告。",
                                           "internal error ({}); the database holds whole bills only. Please report it with the command line."};
// clang-format on

}  // namespace vantlo::words

namespace {

using namespace vantlo;

/// The language that the arguments ask for: the help is written in it, before anything else is read.
Language language_of(std::span<char* const> arguments) {
    Language language = language_of_locale();
    for (std::size_t i = 0; i < arguments.size(); ++i) {
        std::string_view argument = arguments[i];
        if (argument == "--") break;
        if (argument == "--lang" && i + 1 < arguments.size())
            argument = arguments[i + 1];
        else if (argument.starts_with("--lang="))
            argument.remove_prefix(7);
        else
            continue;
        language = argument == "zh" ? Language::chinese : Language::english;
    }
    return language;
}

void add_help(CLI::App& app, const CommonOptions& common) {
    const auto formatter = app.get_formatter();
    formatter->label("Usage", common.say(words::usage));
    formatter->label("Positionals", common.say(words::arguments));
    formatter->label("OPTIONS", common.say(words::option_badge));
    formatter->label("SUBCOMMAND", common.say(words::command_badge));
    formatter->label("REQUIRED", common.say(words::required));
    app.set_help_flag("-h,--help", common.say(words::help_option));
    app.footer(common.say(words::main_footer) + "\n\n" + common.say(words::exit_codes) + "\n" +
               exit_code_list(common.language, "  ", "  ", "\n"));
}

void add_common_options(CLI::App& app, CommonOptions& common) {
    app.add_option("--db", common.databases, common.say(words::db_option))->allow_extra_args(false);
    app.add_flag("--show-sql", common.show_sql, common.say(words::show_sql_option));
    const std::string about_language = common.say(words::lang_option);  // language_of has read its value
    app.add_option("--lang", about_language)->check(CLI::IsMember({"zh", "en"}))->type_name("LANGUAGE");
    // Its work comes after the options above, so that it knows the database.
    app.set_version_flag(
        "--version", [&common] { return "vantlo " VANTLO_VERSION "\n" + common.engine(); },
        common.say(words::version_option));
}

/// A hidden option, for packages and documents: `--print man`, `--print bash-completion`, `--print exit-codes`.
void add_printing(CLI::App& app, const CommonOptions& common) {
    const auto print = [&app, &common](const std::string& what) {
        std::cout << (what == "man"               ? manual_page(app, common)
                      : what == "bash-completion" ? bash_completion(app)
                                                  : exit_code_list(common.language, "| ", " | ", " |\n"));
        throw CLI::Success();
    };
    app.add_option_function<std::string>("--print", print)
        ->check(CLI::IsMember({"man", "bash-completion", "exit-codes"}))
        ->group("");
}

/// What is wrong with a command line, in the user's language before the parser's own words.
std::string explanation(const CLI::ParseError& failure, const CommonOptions& common) {
    struct Row {
        const char* name;
        const Message& wording;
    };
    static constexpr Row rows[] = {
        {"RequiredError", words::something_missing}, {"ArgumentMismatch", words::something_missing},
        {"ExtrasError", words::something_unknown},   {"ConversionError", words::bad_value},
        {"ValidationError", words::bad_value},
    };
    for (const Row& row : rows) {
        if (failure.get_name() == row.name) return common.say(row.wording, failure.what());
    }
    return failure.what();
}

int usage_error(const std::string& what) {
    std::cerr << "vantlo: " << what << '\n';
    return static_cast<int>(ExitCode::usage);
}

/// Tells the user about the exception that is being handled. Returns the exit code that says the same.
ExitCode report_current_exception(const CommonOptions& common) {
    try {
        throw;
    } catch (const TaskError& error) {
        // What is wrong with files is a line for each fault, which begins with its place.
        std::cerr << (error.reason() == Reason::bad_input ? "" : "vantlo: ") << error.what() << '\n';
        return exit_code_of(error.reason());
    } catch (const Failure& failure) {
        std::cerr << "vantlo: " << account_of(failure, common.language) << '\n';
        if (failure.number() == error::no_such_table) std::cerr << common.say(words::see_init) << '\n';
        return ExitCode::no_database;
    } catch (const std::exception& defect) {
        std::cerr << "vantlo: " << common.say(words::internal_error, defect.what()) << '\n';
        return ExitCode::internal_error;
    }
}

ExitCode run(const CommandCall& call) {
    collect_messages();
    ask_before_interrupting();
    try {
        const ExitCode code = call.work();
        if (!std::cout.flush()) throw TaskError(Reason::cannot_write, call.common.say(words::no_stdout));
        return code;
    } catch (...) {
        return report_current_exception(call.common);
    }
}

}  // namespace

int main(int count, char** arguments) {
    const VisibleStreams visible_streams;
    CommandCall call;
    CommonOptions& common = call.common;
    common.language = language_of({arguments, static_cast<std::size_t>(count)});
    CLI::App app(common.say(words::about), "vantlo");
    app.require_subcommand(1);
    app.fallthrough();
    app.option_defaults()->group(common.say(words::options));
    add_help(app, common);
    add_common_options(app, common);
    add_printing(app, common);
    for (const auto add_command : add_commands) add_command(app, call);
    try {
        app.parse(count, arguments);
    } catch (const CLI::ParseError& failure) {
        if (failure.get_exit_code() == 0) return app.exit(failure);
        const std::vector<std::string> unknown = app.remaining(true);
        const std::string what = unknown.empty() ? explanation(failure, common)
                                                 : common.say(words::something_unknown, fmt::join(unknown, " "));
        return usage_error(what + "\n" + common.say(words::see_help, "vantlo"));
    } catch (const std::exception&) {
        return static_cast<int>(report_current_exception(common));
    }
    if (const Message* const fault = common.fault_of_databases()) return usage_error(common.say(*fault));
    return static_cast<int>(run(call));
}
