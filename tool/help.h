#pragma once

#include "tool/commands/command.h"

namespace vantlo {

/// Writes the help of program and commands: in the user's language, as wide as the terminal, without the parser's own types.
class HelpFormatter final : public CLI::Formatter {
public:
    explicit HelpFormatter(const CommonOptions& common) : common_(common) {}

    std::string make_help(const CLI::App* app, std::string name, CLI::AppFormatMode mode) const override;

private:
    const CommonOptions& common_;
};

/// `-h, --help`, `--format FORMAT`, `FILE...`. What follows an option is its type name, or its own name in capitals.
std::string usage_of(const CLI::Option& option);

/// What an option does, its choices if that does not name them, and the options beside which it cannot stand.
std::string description_of(const CLI::Option& option, const CommonOptions& common);

/// The options or the arguments that help and manual show.
std::vector<const CLI::Option*> shown_options(const CLI::App& app, bool positional);

/// The commands that help and manual show.
std::vector<const CLI::App*> shown_commands(const CLI::App& app);

/// The values that an option takes; empty if it takes any.
std::vector<std::string> choices_of(const CLI::Option& option);

/// Adds `help`, which shows the help of the program or of a command, and ends it. The list of commands does not have it.
void add_help_command(CLI::App& app, const CommonOptions& common);

}  // namespace vantlo
