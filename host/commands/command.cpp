#include "host/commands/command.h"

#include <cstdlib>
#include <iostream>

#include "ado/odbc/connection_string.h"
#include "ado/open_connection.h"

namespace vantlo::host {

namespace {

std::string environment(const char* name) {
    const char* const value = std::getenv(name);
    return value == nullptr ? "" : value;
}

/// A name as open_connection reads it, with the password of the environment if it is a connection string without one.
std::string connection_text(std::string database) {
    if (database.starts_with("sqlite:")) return database;
    if (database.find('=') == std::string::npos) return "sqlite:" + database;
    std::string password = environment("VANTLO_PASSWORD");
    if (password.empty() || has_password(database)) return database;
    for (std::size_t at = 0; (at = password.find('}', at)) != std::string::npos; at += 2) password.insert(at, "}");
    return database + (database.ends_with(';') ? "" : ";") + "PWD={" + password + "}";
}

}  // namespace

Connect CommonOptions::connect(bool may_create) const {
    std::vector<std::string> named = databases;
    if (named.empty()) named.push_back(environment("VANTLO_DB"));
    if (named.front().empty()) named.front() = "vantlo.db";
    for (std::string& database : named) database = connection_text(database);
    return connect_in_turn(named, may_create);
}

std::string CommonOptions::engine() const {
    const bool is_named = !databases.empty() || !environment("VANTLO_DB").empty();
    return is_named ? connect()()->engine() : open_connection("sqlite::memory:")->engine();
}

Bookkeeping CommonOptions::bookkeeping() const {
    const auto show = [](TextView statement) { std::cerr << to_utf8(statement) << '\n'; };
    return Bookkeeping(connect(), show_sql ? show : ObservedConnection::Show(), language);
}

CLI::App* add_command(CLI::App& app, const CommonOptions& common, const char* name, const Wording& about,
                      std::initializer_list<Example> examples) {
    CLI::App* const command = app.add_subcommand(name, common.say(about));
    std::string footer = common.say(words::examples) + ":";
    for (const Example& example : examples) {
        footer += std::string("\n  ") + example.command_line + "\n      " + common.say(example.meaning);
    }
    command->footer(footer + "\n\n" + common.say(words::command_footer));
    command->set_help_flag("-h,--help", common.say(words::help_option));
    command->group(common.say(words::commands));
    return command;
}

}  // namespace vantlo::host
