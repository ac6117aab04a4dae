// vantlo: the native reference host. It stores bills and posts them through the component.

#include <iostream>
#include <map>

#include "automation/error.h"
#include "host/commands/command.h"

namespace {

using namespace vantlo;
using namespace vantlo::host;

void add_common_options(CLI::App& app, CommonOptions& common) {
    app.add_option(
           "--db", common.databases,
           "Database: an SQLite file, sqlite:FILE, or an ODBC connection string; once for each node of a cluster")
        ->allow_extra_args(false)
        ->default_str("vantlo.db");
    app.add_flag("--show-sql", common.show_sql, "Show every statement on stderr as it is sent");
    app.add_option("--lang", common.language, "Language of error texts: zh or en")
        ->transform(
            CLI::Transformer(std::map<std::string, Language>{{"zh", Language::chinese}, {"en", Language::english}}))
        ->default_str("zh");
}

ExitCode run(const std::function<ExitCode()>& work) {
    collect_messages();
    try {
        return work();
    } catch (const BadInput& failure) {
        std::cerr << "vantlo: " << failure.what() << '\n';
        return ExitCode::bad_input;
    } catch (const PostingFailed& failure) {
        std::cerr << "vantlo: " << failure.what() << '\n';
        return ExitCode::posting_failed;
    } catch (const Failure& failure) {
        std::cerr << "vantlo: " << failure.what() << '\n';
        return ExitCode::no_database;
    }
}

}  // namespace

int main(int count, char** arguments) {
    Invocation invocation;
    CLI::App app("Keeps a shop's stock ledger in step with its bills.", "vantlo");
    app.require_subcommand(1);
    app.fallthrough();
    add_common_options(app, invocation.common);
    for (const auto add_command : add_commands) add_command(app, invocation);
    try {
        app.parse(count, arguments);
    } catch (const CLI::ParseError& failure) {
        return static_cast<int>(app.exit(failure) == 0 ? ExitCode::done : ExitCode::usage);
    }
    return static_cast<int>(run(invocation.work));
}
