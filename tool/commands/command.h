#pragma once

#include <CLI/CLI.hpp>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "bookkeeping/bookkeeping.h"
#include "output/words.h"
#include "tool/commands/exit_code.h"

namespace vantlo {

/// The options that every command takes, before its name or after it.
struct CommonOptions {
    std::vector<std::string> databases;
    bool show_sql = false;
    Language language = language_of_locale();
    GuardRules guard;
    bool dry_run = false;
    bool is_quiet = false;            ///< `--quiet`: std::clog is silent
    bool shows_all_warnings = false;  ///< `--all-warnings`: else only the first ones of each sort

    /// A text of the program in the user's language, its places filled.
    template <typename... Values>
    [[nodiscard]] std::string say(const Message& wording, const Values&... values) const {
        return vantlo::say(language, wording, values...);
    }

    /// The question whether the closest of these names was meant, a blank before it; empty if none is close.
    [[nodiscard]] std::string did_you_mean(const std::string& typed, const std::vector<std::string>& names) const;

    /// What is wrong with the names of the databases; null if nothing is.
    [[nodiscard]] const Message* fault_of_databases() const;

    /// Opens the databases in turn, for a rehearsal in a dry run; a bare file name stands for an SQLite file. Without any, VANTLO_DB names it.
    /// `may_create` says whether an SQLite file that does not exist is made.
    [[nodiscard]] Connect connect(bool may_create = false) const;

    /// Opens the database for a command that only reads: a file, a folder or an account without the right to write will do.
    [[nodiscard]] Owned<NativeConnection> read() const;

    /// The database's kind of SQL; a file of the embedded engine need not be there for it.
    [[nodiscard]] const Dialect& dialect() const;

    /// Engine and driver of the database, with their versions; without a database, those of the embedded engine.
    [[nodiscard]] std::string engine() const;

    /// The names of the databases as open_connection reads them.
    [[nodiscard]] std::vector<std::string> connection_texts() const;

    /// The bookkeeping of every command that posts or takes back, told all that these options say: it warns on stderr, shows
    /// statements there, and in a dry run writes them to stdout with the rows that they change. A dry run on a database that
    /// may only be read goes on in memory, on a copy of what it needs for `bills` and for those that are `stored`.
    [[nodiscard]] Bookkeeping bookkeeping(std::span<const Bill* const> bills,
                                          std::span<const Bill* const> stored = {}) const;
};

/// One call of the program: what it was told, and the work of the command that it named.
struct CommandCall {
    CommonOptions common;
    std::function<ExitCode()> work;
};

/// The kind of that name. If there is none, tells the user which there are and returns null.
const BillKind* known_kind(const CommonOptions& common, const std::string& name);

/// A command line that the help shows, and what it does.
struct Example {
    const char* command_line;
    const Message& meaning;
};

/// Adds the options of every command that posts or takes back: --dry-run, --force, --fail-on-negative.
void add_posting_options(CLI::App& command, CommonOptions& common);

/// Adds --yes. Returns whether it was given, once the command line is read.
std::shared_ptr<bool> add_yes_option(CLI::App& command, const CommonOptions& common);

/// Says what is about to happen, and asks on a terminal whether the user agrees, unless he has said --yes.
/// Returns  nothing if he agrees; else the exit code, that of a wrong command line where nobody can be asked.
std::optional<ExitCode> not_confirmed(const CommonOptions& common, const std::string& what, bool says_yes);

/// Adds a subcommand whose help ends with examples.
CLI::App* add_command(CLI::App& app, const CommonOptions& common, const char* name, const Message& about,
                      std::initializer_list<Example> examples);

// Each command adds its subcommand with its options, and puts its work into the call when it is named.
// Errors   whatever the work raises; the program turns it into words and an exit code.

void add_init(CLI::App& app, CommandCall& call);
void add_save(CLI::App& app, CommandCall& call);
void add_import(CLI::App& app, CommandCall& call);
void add_delete(CLI::App& app, CommandCall& call);
void add_bill(CLI::App& app, CommandCall& call);
void add_explain(CLI::App& app, CommandCall& call);
void add_new(CLI::App& app, CommandCall& call);
void add_fields(CLI::App& app, CommandCall& call);
void add_ledger(CLI::App& app, CommandCall& call);
void add_card(CLI::App& app, CommandCall& call);
void add_report(CLI::App& app, CommandCall& call);
void add_page(CLI::App& app, CommandCall& call);
void add_low(CLI::App& app, CommandCall& call);
void add_minimum(CLI::App& app, CommandCall& call);
void add_idle(CLI::App& app, CommandCall& call);
void add_count(CLI::App& app, CommandCall& call);
void add_bills(CLI::App& app, CommandCall& call);
void add_goods(CLI::App& app, CommandCall& call);
void add_warehouses(CLI::App& app, CommandCall& call);
void add_units(CLI::App& app, CommandCall& call);
void add_verify(CLI::App& app, CommandCall& call);
void add_repair(CLI::App& app, CommandCall& call);
void add_backup(CLI::App& app, CommandCall& call);
void add_adopt(CLI::App& app, CommandCall& call);
void add_journal(CLI::App& app, CommandCall& call);
void add_leave(CLI::App& app, CommandCall& call);

/// The commands in the order in which the help lists them.
inline constexpr void (*add_commands[])(CLI::App&, CommandCall&) = {
    add_init,       add_new,    add_fields, add_save,   add_import,  add_delete,  add_bill,  add_bills,  add_ledger,
    add_card,       add_report, add_page,   add_low,    add_minimum, add_idle,    add_count, add_goods,  add_units,
    add_warehouses, add_verify, add_repair, add_backup, add_adopt,   add_journal, add_leave, add_explain};

}  // namespace vantlo
