#include "tool/manual.h"

#include <fmt/ranges.h>

#include <algorithm>

#include "component/member_table.h"

namespace vantlo {

namespace words {

// clang-format off
constexpr Message manual_name    = {"名称", "NAME"};
constexpr Message manual_synopsis = {"概要", "SYNOPSIS"};
constexpr Message manual_options = {"选项", "OPTIONS"};
constexpr Message manual_commands = {"命令", "COMMANDS"};
constexpr Message manual_exit_status = {"退出码", "EXIT STATUS"};
constexpr Message manual_environment = {"环境变量", "ENVIRONMENT"};
constexpr Message environment_db = {"数据库，未给出 --db 时使用", "The database, where --db names none"};
constexpr Message environment_password = {"补入没有密码的 ODBC 连接字符串的密码", "The password for an ODBC connection string without one"};
constexpr Message environment_colour = {"非空时表格不用颜色", "If it is not empty, tables are not coloured"};
constexpr Message environment_language = {"其中第一个有值的以 zh 开头时使用中文", "Chinese, if the first of them that is set begins with zh; else English"};
// clang-format on

}  // namespace words

namespace {

/// Escapes a text for groff.
std::string roff(const std::string& text) {
    std::string result;
    bool begins_line = true;
    for (const char character : text) {
        if (begins_line && (character == '.' || character == '\'')) result += "\\&";
        if (character == '\\')
            result += "\\e";
        else if (character == '-')
            result += "\\-";
        else
            result += character;
        begins_line = character == '\n';
    }
    return result;
}

std::vector<const CLI::Option*> shown_options(const CLI::App& app, bool positional) {
    return app.get_options([&](const CLI::Option* option) {
        return !option->get_group().empty() && option->get_positional() == positional;
    });
}

/// `--format FORMAT`, `--dry-run`, `FILE...`
std::string usage_of(const CLI::Option& option) {
    std::string usage = option.get_name(option.get_positional(), !option.get_positional());
    const std::string type = option.get_type_name();
    if (!option.get_positional() && !type.empty()) usage += " " + type.substr(0, type.find(':'));
    return usage;
}

std::string option_list(const CLI::App& app, bool positional) {
    std::string list;
    for (const CLI::Option* const option : shown_options(app, positional)) {
        list += ".TP\n.B " + roff(usage_of(*option)) + "\n" + roff(option->get_description()) + "\n";
    }
    return list;
}

/// The examples of a command's help, without what follows them.
std::string examples_of(const CLI::App& command) {
    const std::string footer = command.get_footer();
    return ".PP\n.nf\n" + roff(footer.substr(0, footer.find("\n\n"))) + "\n.fi\n";
}

std::string command_section(const CLI::App& command) {
    std::string usage = "vantlo " + command.get_name();
    for (const CLI::Option* const argument : shown_options(command, true)) usage += " " + usage_of(*argument);
    return ".SS " + roff(usage) + "\n" + roff(command.get_description()) + "\n" + option_list(command, true) +
           option_list(command, false) + examples_of(command);
}

/// The values between braces of a type, with blanks between them.
/// Example  `FORMAT:{table,json}` -> `table json`, `ENUM:{gb18030->1,utf-8->0}` -> `gb18030 utf-8`
std::string choices_of(const CLI::Option& option) {
    const std::string type = option.get_type_name();
    const std::size_t open = type.find('{');
    if (open == std::string::npos) return "";
    std::string choices;
    for (const std::string& choice : CLI::detail::split(type.substr(open + 1, type.find('}') - open - 1), ',')) {
        choices += (choices.empty() ? "" : " ") + choice.substr(0, choice.find("->"));
    }
    return choices;
}

/// The arguments of bash's compgen that complete an option's value.
std::string value_of(const CLI::Option& option) {
    const bool is_file = option.get_type_name() == "FILE" || option.get_name() == "--db";
    return is_file ? "-f" : "-W '" + choices_of(option) + "'";
}

std::string option_names(const CLI::App& app) {
    std::string names;
    for (const CLI::Option* const option : shown_options(app, false)) {
        for (const std::string& name : option->get_lnames()) names += (names.empty() ? "--" : " --") + name;
    }
    return names;
}

/// The arguments of bash's compgen that complete a command's first argument; empty if it has none.
std::string first_argument(const CLI::App& command) {
    const std::vector<const CLI::Option*> arguments = shown_options(command, true);
    if (arguments.empty()) return "";
    const std::string name = arguments.front()->get_name(true, false);
    std::string words;
    if (name == "KIND") {
        for (const BillKind& kind : bill_kinds()) words += std::string(kind.name) + " ";
    } else if (name == "MEMBER") {
        for (const Member& member : member_table()) {
            if (member.kind == MemberKind::method) words += to_utf8(member.name) + " ";
        }
    } else {
        return "-f";
    }
    words.pop_back();
    return "-W '" + words + "'";
}

/// The variables of the environment that the program reads.
std::string environment_section(const CommonOptions& common) {
    const std::pair<const char*, const Message*> variables[] = {
        {"VANTLO_DB", &words::environment_db},
        {"VANTLO_PASSWORD", &words::environment_password},
        {"NO_COLOR", &words::environment_colour},
        {"LC_ALL, LC_MESSAGES, LANG", &words::environment_language},
    };
    std::string section;
    for (const auto& [name, meaning] : variables) {
        section += fmt::format(".TP\n.B {}\n{}\n", name, roff(common.say(*meaning)));
    }
    return section;
}

/// The cases of the completion's three questions: what follows an option, which options a command has, and what its
/// first argument can be.
struct CompletionCases {
    std::string values, options, arguments;
};

CompletionCases completion_cases(const CLI::App& app) {
    CompletionCases cases;
    const auto add_values = [&](const CLI::App& of, const std::string& command) {
        for (const CLI::Option* const option : shown_options(of, false)) {
            if (option->get_type_name().empty()) continue;  // a flag
            cases.values += fmt::format("        {}' {}') _vantlo_reply {} \"$current\"; return ;;\n", command,
                                        option->get_name(false, true), value_of(*option));
        }
    };
    add_values(app, "*");
    for (const CLI::App* const command : app.get_subcommands({})) {
        add_values(*command, command->get_name());
        cases.options += fmt::format("        {}) options+=' {}' ;;\n", command->get_name(), option_names(*command));
        const std::string argument = first_argument(*command);
        if (argument.empty()) continue;
        cases.arguments += fmt::format("        {}) _vantlo_reply {} \"$current\" ;;\n", command->get_name(), argument);
    }
    return cases;
}

/// The completion, as fmt::format fills it.
constexpr const char* completion_script =
    R"(# Completes vantlo's commands, options, kinds of bills, members and file names in bash.

_vantlo_reply() {{
    if [[ $1 == -f ]]; then
        compopt -o filenames 2>/dev/null
        mapfile -t COMPREPLY < <(compgen -f -- "$2")
    else
        mapfile -t COMPREPLY < <(compgen "$1" "$2" -- "$3")
    fi
}}

_vantlo() {{
    local current=${{COMP_WORDS[COMP_CWORD]}} previous=${{COMP_WORDS[COMP_CWORD - 1]}} command='' word
    local options='{0}'
    for word in "${{COMP_WORDS[@]:1:COMP_CWORD-1}}"; do
        case $word in {1}) command=$word; break ;; esac
    done
    case "$command $previous" in
{2}    esac
    case $command in
{3}    esac
    if [[ $current == -* ]]; then
        _vantlo_reply -W "$options" "$current"
        return
    fi
    case $command in
        '') _vantlo_reply -W '{4}' "$current" ;;
{5}    esac
}}

complete -F _vantlo vantlo
)";

}  // namespace

std::string manual_page(const CLI::App& app, const CommonOptions& common) {
    const auto heading = [&](const Message& wording) { return ".SH " + common.say(wording) + "\n"; };
    std::string page = ".TH VANTLO 1 \"\" \"vantlo " VANTLO_VERSION "\"\n.ad l\n";
    page += heading(words::manual_name) + "vantlo \\- " + roff(app.get_description()) + "\n";
    page += heading(words::manual_synopsis) + ".B vantlo\n[" + common.say(words::option_badge) + "] " +
            common.say(words::command_badge) + "\n";
    page += heading(words::manual_options) + option_list(app, false);
    page += heading(words::manual_commands);
    for (const CLI::App* const command : app.get_subcommands({})) page += command_section(*command);
    page += heading(words::manual_exit_status) + exit_code_list(common.language, ".TP\n.B ", "\n", "\n");
    page += heading(words::manual_environment) + environment_section(common);
    return page;
}

std::string bash_completion(const CLI::App& app) {
    std::vector<std::string> names;
    for (const CLI::App* const command : app.get_subcommands({})) names.push_back(command->get_name());
    const auto& [values, options, arguments] = completion_cases(app);
    return fmt::format(fmt::runtime(completion_script), option_names(app), fmt::join(names, "|"), values, options,
                       fmt::join(names, " "), arguments);
}

}  // namespace vantlo
