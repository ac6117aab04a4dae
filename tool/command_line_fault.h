#pragma once

#include "tool/commands/command.h"

namespace vantlo {

/// What is wrong with the command line that the parser refused, in the user's language.
/// Example  `ledger --format csw` -> `--format: "csw" is none of table, json, jsonl, csv. Did you mean "csv"?`
std::string command_line_fault(const CLI::App& app, const CLI::ParseError& failure, const CommonOptions& common);

/// Says that there is no such command, and which was perhaps meant.
std::string unknown_command(const CLI::App& app, const std::string& name, const CommonOptions& common);

/// The command that the command line names, as the user typed it behind the program's name: `vantlo ledger`.
std::string called_as(const CLI::App& app);

}  // namespace vantlo
