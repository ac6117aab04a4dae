#include "tool/command_line_fault.h"

#include <fmt/ranges.h>

#include <algorithm>
#include <optional>

#include "tool/help.h"

namespace vantlo {

namespace words {

// clang-format off
constexpr Message no_command       = {"缺少命令；vantlo --help 列出所有命令", "a command is missing; vantlo --help lists them"};
constexpr Message unknown_command  = {"没有命令“{}”。", "there is no command \"{}\"."};
constexpr Message unknown_option   = {"{} 没有选项 {}。", "{} has no option {}."};
constexpr Message extra_argument   = {"{}：多余的参数“{}”。", "{}: the argument \"{}\" is one too many."};
constexpr Message is_missing       = {"缺少 {}。", "{} is missing."};
constexpr Message needs_a_value    = {"{} 后面缺少值。", "{} needs a value."};
constexpr Message given_twice      = {"{} 只能给出一次。", "{} may be given once only."};
constexpr Message takes_no_value   = {"{} 不带值。", "{} takes no value."};
constexpr Message value_for_flag   = {"{1} 不带值（给出了“{0}”）。", "{1} takes no value, but was given \"{0}\"."};
constexpr Message bad_number       = {"{}：“{}”不是所需的数。", "{}: \"{}\" is not a number as it is needed here."};
constexpr Message none_of          = {"{}：“{}”不在可选值之中：{}。", "{}: \"{}\" is none of {}."};
constexpr Message excludes         = {"{} 与 {} 不能同用。", "{} and {} cannot stand together."};
constexpr Message needs_another    = {"{} 须与 {} 同用。", "{} needs {} beside it."};
constexpr Message wrong_value      = {"{}：{}", "{}: {}"};
constexpr Message other_fault      = {"命令行有误。", "the command line is wrong."};
constexpr Message between_names    = {"、", ", "};
// clang-format on

}  // namespace words

namespace {

/// A text of the parser, with up to two places, and the program's own.
struct Wording {
    std::string_view before, between, after;
    const Message& own;
};

// Source   CLI11 2.1 and later, Error.hpp: an error has no data but its text.
constexpr Wording wordings[] = {
    {"A subcommand", "", " is required", words::no_command},
    {"", "", " is required", words::is_missing},
    {"", ": 1 required ", " missing", words::needs_a_value},
    {"", ": At Most 1 required but received ", "", words::given_twice},
    {"", ": too many inputs for a flag", "", words::given_twice},
    {"", "", " was given a disallowed flag override", words::takes_no_value},
    {"", ": Should be true/false or a number", "", words::takes_no_value},
    {"The value ", " is not an allowed value for ", "", words::value_for_flag},
    {"Could not convert: ", " = ", "", words::bad_number},
    {"", " excludes ", "", words::excludes},
    {"", " requires ", "", words::needs_another},
};

/// What stands at the two places of a text; nothing if the text is another one.
std::optional<std::pair<std::string, std::string>> places_of(const Wording& wording, std::string_view text) {
    if (!text.starts_with(wording.before)) return std::nullopt;
    text.remove_prefix(wording.before.size());
    if (!text.ends_with(wording.after)) return std::nullopt;
    text.remove_suffix(wording.after.size());
    if (wording.between.empty()) return std::pair(std::string(text), std::string());
    const std::size_t between = text.find(wording.between);
    if (between == std::string_view::npos) return std::nullopt;
    return std::pair(std::string(text.substr(0, between)), std::string(text.substr(between + wording.between.size())));
}

/// The command that was named; the program itself if none was.
const CLI::App& named_command(const CLI::App& app) {
    const std::vector<CLI::App*> named = static_cast<const CLI::App&>(app).get_subcommands();
    return named.empty() ? app : *named.front();
}

/// A wrong value: one that is none of an option's choices, that is out of range, or that the program's own check refused.
std::string wrong_value(const CLI::App& app, std::string_view what, const CommonOptions& common) {
    const std::size_t colon = what.find(": ");
    if (colon == std::string_view::npos) return std::string(what);
    const std::string name(what.substr(0, colon));
    const std::string_view fault = what.substr(colon + 2);
    const auto between = [&](std::string_view before, std::string_view after) -> std::optional<std::string> {
        const std::size_t end = fault.rfind(after);
        if (!fault.starts_with(before) || end == std::string_view::npos || end < before.size()) return std::nullopt;
        return std::string(fault.substr(before.size(), end - before.size()));
    };
    if (const auto value = between("Value ", " not in range ")) return common.say(words::bad_number, name, *value);
    std::optional<std::string> value = between("Check ", " value in {");
    if (!value) value = between("", " not in {");
    const CLI::Option* option = named_command(app).get_option_no_throw(name);
    if (option == nullptr) option = app.get_option_no_throw(name);
    if (!value || option == nullptr) return common.say(words::wrong_value, name, fault);
    const std::vector<std::string> choices = choices_of(*option);
    return common.say(words::none_of, name, *value, fmt::join(choices, common.say(words::between_names))) +
           common.did_you_mean(*value, choices);
}

/// An argument or option that nobody takes.
std::string extra(const CLI::App& app, const std::string& name, const CommonOptions& common) {
    const CLI::App& command = named_command(app);
    if (!name.starts_with('-') || name == "-")
        return &command == &app ? unknown_command(app, name, common)
                                : common.say(words::extra_argument, called_as(app), name);
    std::vector<std::string> known;
    for (const CLI::App* const of : {&command, &app}) {
        for (const CLI::Option* const option : shown_options(*of, false)) {
            for (const std::string& option_name : option->get_lnames()) known.push_back("--" + option_name);
        }
    }
    const std::string typed = name.substr(0, name.find('='));
    return common.say(words::unknown_option, called_as(app), typed) + common.did_you_mean(typed, known);
}

}  // namespace

std::string command_line_fault(const CLI::App& app, const CLI::ParseError& failure, const CommonOptions& common) {
    const std::vector<std::string> extras = app.remaining(true);
    const std::string_view what = failure.what();
    if (!extras.empty()) return extra(app, extras.front(), common);
    if (failure.get_name() == "ValidationError") return wrong_value(app, what, common);
    for (const Wording& wording : wordings) {
        if (const auto places = places_of(wording, what)) return common.say(wording.own, places->first, places->second);
    }
    return common.say(words::other_fault);
}

std::string unknown_command(const CLI::App& app, const std::string& name, const CommonOptions& common) {
    std::vector<std::string> known;
    for (const CLI::App* const command : app.get_subcommands({})) known.push_back(command->get_name());
    return common.say(words::unknown_command, name) + common.did_you_mean(name, known);
}

std::string called_as(const CLI::App& app) {
    const CLI::App& command = named_command(app);
    return command.get_parent() == nullptr ? "vantlo" : "vantlo " + command.get_name();
}

}  // namespace vantlo
