#pragma once

#include <CLI/CLI.hpp>
#include <functional>
#include <string>
#include <vector>

#include "automation/error_text.h"
#include "host/bookkeeping.h"
#include "host/exit_code.h"

namespace vantlo::host {

/// The options that every command takes, before its name or after it.
struct CommonOptions {
    std::vector<std::string> databases = {"vantlo.db"};
    bool show_sql = false;
    Language language = Language::chinese;

    /// Opens the databases in turn; a bare file name stands for an SQLite file.
    [[nodiscard]] Connect connect() const;

    /// The bookkeeping of every command that posts or takes back, told all that these options say.
    [[nodiscard]] Bookkeeping bookkeeping() const;
};

/// One call of the program: what it was told, and the work of the command that it named.
struct Invocation {
    CommonOptions common;
    std::function<ExitCode()> work;
};

// Each command adds its subcommand with its options, and puts its work into the invocation when it is named.
// Errors   BadInput, PostingFailed and Failure may leave the work; the program turns them into words and an exit code.

void add_init(CLI::App& app, Invocation& invocation);
void add_save(CLI::App& app, Invocation& invocation);
void add_delete(CLI::App& app, Invocation& invocation);
void add_ledger(CLI::App& app, Invocation& invocation);

/// The commands in the order in which the help lists them.
inline constexpr void (*add_commands[])(CLI::App&, Invocation&) = {add_init, add_save, add_delete, add_ledger};

}  // namespace vantlo::host
