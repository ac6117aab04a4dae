// vantlo: the native reference host. It stores bills and posts them through the component.

#include <fcntl.h>
#include <unistd.h>

#include <iostream>
#include <span>

#include "automation/error.h"
#include "bookkeeping/interrupt.h"
#include "output/table_output.h"
#include "output/visible.h"
#include "tool/command_line_fault.h"
#include "tool/complete.h"
#include "tool/failure_text.h"
#include "tool/help.h"
#include "tool/manual.h"

namespace vantlo::words {

// clang-format off
constexpr Message about          = {"使商店的库存台账与单据保持一致。", "Keeps a shop's stock ledger in step with its bills."};
constexpr Message version_option = {"显示版本、数据库引擎和驱动程序并退出", "Show the versions of the program, the engine and its driver, and exit"};
constexpr Message db_option      = {"数据库：SQLite 文件、sqlite:文件，或 ODBC 连接字符串；集群的每个节点写一次。缺省为环境变量 VANTLO_DB，再缺省为 vantlo.db",
                                           "Database: an SQLite file, sqlite:FILE, or an ODBC connection string; once for each node of a cluster. By default the environment's VANTLO_DB, else vantlo.db"};
constexpr Message show_sql_option = {"在标准错误上显示每条发出的语句", "Show every statement on stderr as it is sent"};
constexpr Message lang_option    = {"语言：zh 或 en；缺省取自区域设置", "Language: zh or en; by default that of the locale"};
constexpr Message quiet_option   = {"只显示错误、警告和询问，不显示进度和结果", "Show errors, warnings and questions only: no progress, and not what was done"};
constexpr Message main_footer    = {"每个命令都有自己的帮助和示例：vantlo help save", "Every command has help and examples of its own: vantlo help save"};
constexpr Message see_help       = {"运行 {} --help 查看用法。", "Run {} --help for more."};
constexpr Message exit_codes     = {"退出码：", "Exit codes:"};
constexpr Message no_stdout      = {"标准输出无法写入", "stdout cannot be written"};
constexpr Message interrupted_wait = {"已中断；不再等待数据库", "interrupted; no longer waiting for the database"};
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
    app.formatter(std::make_shared<HelpFormatter>(common));
    app.set_help_flag("-h,--help", common.say(words::help_option));
    app.footer(common.say(words::main_footer) + "\n\n" + common.say(words::exit_codes) + "\n" +
               exit_code_list(common.language, "  ", "  ", "\n"));
}

void add_common_options(CLI::App& app, CommonOptions& common) {
    app.add_option("--db", common.databases, common.say(words::db_option))
        ->allow_extra_args(false)
        ->type_name("DATABASE");
    app.add_flag("--show-sql", common.show_sql, common.say(words::show_sql_option));
    app.add_flag("-q,--quiet", common.is_quiet, common.say(words::quiet_option));
    const std::string about_language = common.say(words::lang_option);  // language_of has read its value
    app.add_option("--lang", about_language)->check(CLI::IsMember({"zh", "en"}))->type_name("LANGUAGE");
    // Its work comes after the options above, so that it knows the database.
    app.set_version_flag(
        "-V,--version", [&common] { return "vantlo " VANTLO_VERSION "\n" + common.engine(); },
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

/// Tells the user about the exception that is being handled. Returns the exit code that says the same.
ExitCode report_current_exception(const CommonOptions& common, bool creates) {
    try {
        throw;
    } catch (const TaskError& error) {
        // What is wrong with files is a line for each fault, which begins with its place.
        std::cerr << (error.reason() == Reason::bad_input ? "" : "vantlo: ") << error.what() << '\n';
        return exit_code_of(error.reason());
    } catch (const Failure& failure) {
        if (is_interrupted()) {  // which cancels what runs on a server
            std::cerr << "vantlo: " << common.say(words::interrupted_wait) << '\n';
            return ExitCode::interrupted;
        }
        std::cerr << "vantlo: " << failure_text(failure, common, creates) << '\n';
        return ExitCode::no_database;
    } catch (const std::exception& defect) {
        std::cerr << "vantlo: " << common.say(words::internal_error, defect.what()) << '\n';
        return ExitCode::internal_error;
    }
}

ExitCode finish_stdout(const CommonOptions& common) {
    if (std::cout.flush()) return ExitCode::done;
    std::cerr << "vantlo: " << common.say(words::no_stdout) << '\n';
    return ExitCode::cannot_write;
}

ExitCode run(const CommandCall& call, bool creates) {
    collect_messages();
    ask_before_interrupting();
    try {
        const ExitCode code = call.work();
        const ExitCode written = finish_stdout(call.common);
        return written == ExitCode::done ? code : written;
    } catch (...) {
        return report_current_exception(call.common, creates);
    }
}

/// Help, version or another text that ends the program; or what is wrong with the command line.
ExitCode end_of_parsing(const CLI::App& app, const CLI::ParseError& failure, const CommonOptions& common) {
    const bool is_help = failure.get_name() == "CallForHelp";
    const bool names_nothing_known = app.get_subcommands().empty() && !app.remaining(true).empty();
    if (failure.get_exit_code() == 0 && !(is_help && names_nothing_known)) {
        app.exit(failure);
        return finish_stdout(common);
    }
    std::cerr << "vantlo: " << command_line_fault(app, failure, common) << '\n'
              << common.say(words::see_help, app.got_subcommand("help") ? "vantlo" : called_as(app)) << '\n';
    return ExitCode::usage;
}

/// Opens stdin, stdout and stderr where they are closed, so that each use of them fails: otherwise the next file or
/// connection gets their number, and what is meant for the user would be written into it.
void occupy_closed_streams() {
    for (const int descriptor : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
        const bool is_closed = ::fcntl(descriptor, F_GETFD) == -1;
        if (is_closed) ::open("/dev/null", descriptor == STDIN_FILENO ? O_WRONLY : O_RDONLY);
    }
}

}  // namespace

int main(int count, char** arguments) {
    occupy_closed_streams();
    const VisibleStreams visible_streams;
    fit_tables_to(terminal_width(STDOUT_FILENO));
    CommandCall call;
    CommonOptions& common = call.common;
    common.language = language_of({arguments, static_cast<std::size_t>(count)});
    CLI::App app(common.say(words::about), "vantlo");
    app.require_subcommand(1);
    app.fallthrough();
    add_help(app, common);
    add_common_options(app, common);
    add_printing(app, common);
    for (const auto add_command : add_commands) add_command(app, call);
    add_help_command(app, common);
    add_complete_command(app, call);
    if (count <= 1) {
        std::cerr << app.help();
        return static_cast<int>(ExitCode::usage);
    }
    try {
        app.parse(count, arguments);
    } catch (const CLI::ParseError& failure) {
        return static_cast<int>(end_of_parsing(app, failure, common));
    } catch (const std::exception&) {
        return static_cast<int>(report_current_exception(common, false));
    }
    if (const Message* const fault = common.fault_of_databases()) {
        std::cerr << "vantlo: " << common.say(*fault) << '\n';
        return static_cast<int>(ExitCode::usage);
    }
    if (common.is_quiet) std::clog.rdbuf(nullptr);
    return static_cast<int>(run(call, app.got_subcommand("init")));
}
