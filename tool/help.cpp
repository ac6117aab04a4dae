#include "tool/help.h"

#include <fmt/ranges.h>
#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <iostream>
#include <sstream>

#include "output/table_output.h"
#include "output/wrapped_text.h"
#include "tool/command_line_fault.h"

namespace vantlo {

namespace words {

// clang-format off
constexpr Message usage          = {"用法：vantlo", "Usage: vantlo"};
constexpr Message arguments      = {"参数：", "Arguments:"};
constexpr Message options        = {"选项：", "Options:"};
constexpr Message commands       = {"命令：", "Commands:"};
constexpr Message required       = {"（必填）", " (required)"};
constexpr Message one_of         = {"（{}）", " ({})"};
constexpr Message or_word        = {", ", ", "};
constexpr Message not_with       = {"（不能与 {} 同用）", " (not with {})"};
constexpr Message help_about     = {"显示一个命令的帮助", "Show the help of a command"};
constexpr Message help_of        = {"命令", "A command"};
// clang-format on

}  // namespace words

namespace {

constexpr std::size_t usual_width = 100;
constexpr std::size_t narrow = 70;

std::size_t help_width() { return std::min(terminal_width(STDOUT_FILENO).value_or(usual_width), usual_width); }

/// A name, and behind it or below it what it means.
std::string entry(const std::string& name, const std::string& meaning, std::size_t width) {
    const std::size_t indent = width < narrow ? 6 : 26;
    std::string text = "  " + name;
    if (cell_width(text) + 2 > indent)
        text += "\n" + std::string(indent, ' ');
    else
        text += std::string(indent - cell_width(text), ' ');
    return text + wrapped_text(meaning, width, indent) + "\n";
}

std::string list_of_options(const std::vector<const CLI::Option*>& options, const Message& heading,
                            const CommonOptions& common, std::size_t width) {
    if (options.empty()) return "";
    std::string text = "\n" + common.say(heading) + "\n";
    for (const CLI::Option* const option : options)
        text += entry(usage_of(*option), description_of(*option, common), width);
    return text;
}

std::string usage_line(const CLI::App& app, const CommonOptions& common) {
    std::string usage = common.say(words::usage);
    if (app.get_parent() != nullptr) usage += " " + app.get_name();
    usage += " [" + common.say(words::option_badge) + "]";
    for (const CLI::Option* const argument : shown_options(app, true))
        usage += argument->get_required() ? " " + usage_of(*argument) : " [" + usage_of(*argument) + "]";
    if (app.get_parent() == nullptr) usage += " " + common.say(words::command_badge);
    return usage;
}

/// Wraps what stands below the options. A line goes on below its own words; a command line is never broken.
std::string wrapped_footer(const std::string& footer, std::size_t width) {
    std::istringstream lines(footer);
    std::string text;
    for (std::string line; std::getline(lines, line);) {
        const std::size_t start = std::min(line.find_first_not_of(' '), line.size());
        const std::string words = line.substr(start);
        const bool is_row = start > 0 && words.find_first_not_of("0123456789") == words.find(' ');
        const std::size_t indent = is_row ? start + words.find_first_not_of("0123456789 ") : start;
        text += words.starts_with("vantlo") ? line : std::string(start, ' ') + wrapped_text(words, width, indent);
        text += "\n";
    }
    return text;
}

}  // namespace

std::string HelpFormatter::make_help(const CLI::App* app, std::string /*name*/, CLI::AppFormatMode /*mode*/) const {
    const std::size_t width = help_width();
    std::string text = wrapped_text(app->get_description(), width, 0) + "\n";
    text += wrapped_text(usage_line(*app, common_), width, 4) + "\n";
    text += list_of_options(shown_options(*app, true), words::arguments, common_, width);
    text += list_of_options(shown_options(*app, false), words::options, common_, width);
    const std::vector<const CLI::App*> commands = shown_commands(*app);
    if (!commands.empty()) text += "\n" + common_.say(words::commands) + "\n";
    for (const CLI::App* const command : commands)
        text += entry(command->get_name(), command->get_description(), width);
    return text + "\n" + wrapped_footer(app->get_footer(), width);
}

std::vector<const CLI::Option*> shown_options(const CLI::App& app, bool positional) {
    return app.get_options([&](const CLI::Option* option) {
        return !option->get_group().empty() && option->get_positional() == positional;
    });
}

std::vector<const CLI::App*> shown_commands(const CLI::App& app) {
    return app.get_subcommands([](const CLI::App* command) { return !command->get_group().empty(); });
}

std::string usage_of(const CLI::Option& option) {
    if (option.get_positional()) {
        const bool is_list = option.get_expected_max() >= CLI::detail::expected_max_vector_size;
        return option.get_name(true, false) + (is_list ? "..." : "");
    }
    std::string usage;
    for (const std::string& name : option.get_snames()) usage += "-" + name + ", ";
    for (const std::string& name : option.get_lnames()) usage += "--" + name + ", ";
    usage.resize(usage.size() - 2);
    std::string type = option.get_type_name();
    if (type.empty()) return usage;  // a flag
    type = type.substr(0, type.find(':'));
    constexpr const char* types_of_parser[] = {"", "TEXT", "INT", "UINT", "FLOAT", "ENUM", "BOOLEAN"};
    if (std::ranges::count(types_of_parser, type) == 0) return usage + " " + type;
    type = option.get_lnames().front();
    std::ranges::transform(type, type.begin(),
                           [](unsigned char letter) { return letter == '-' ? '_' : std::toupper(letter); });
    return usage + " " + type;
}

std::vector<std::string> choices_of(const CLI::Option& option) {
    const std::string type = option.get_type_name();
    const std::size_t open = type.find('{');
    if (open == std::string::npos) return {};
    std::vector<std::string> choices;
    for (const std::string& choice : CLI::detail::split(type.substr(open + 1, type.find('}') - open - 1), ','))
        choices.push_back(choice.substr(0, choice.find("->")));
    return choices;
}

std::string description_of(const CLI::Option& option, const CommonOptions& common) {
    std::string description = option.get_description();
    const std::vector<std::string> choices = choices_of(option);
    const auto is_missing = [&](const std::string& choice) { return description.find(choice) == std::string::npos; };
    if (std::ranges::any_of(choices, is_missing))
        description += common.say(words::one_of, fmt::join(choices, common.say(words::or_word)));
    if (option.get_required() && !option.get_positional()) description += common.say(words::required);
    std::vector<std::string> others;
    for (const CLI::Option* const other : option.get_excludes()) others.push_back(other->get_name());
    std::ranges::sort(others);  // the parser keeps them by address
    if (!others.empty()) description += common.say(words::not_with, fmt::join(others, common.say(words::or_word)));
    return description;
}

void add_help_command(CLI::App& app, const CommonOptions& common) {
    CLI::App* const command = app.add_subcommand("help", common.say(words::help_about));
    command->group("");
    const auto name = std::make_shared<std::string>();
    command->add_option("COMMAND", *name, common.say(words::help_of));
    command->callback([&app, &common, name] {
        const CLI::App* wanted = name->empty() ? &app : nullptr;
        for (const CLI::App* const known : app.get_subcommands({})) {
            if (known->get_name() == *name) wanted = known;
        }
        if (wanted == nullptr) throw CLI::ValidationError(unknown_command(app, *name, common));
        std::cout << app.get_formatter()->make_help(wanted, "", CLI::AppFormatMode::Normal);
        throw CLI::Success();
    });
}

}  // namespace vantlo
