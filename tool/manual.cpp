#include "tool/manual.h"

#include <fmt/ranges.h>

#include <algorithm>
#include <cctype>

#include "component/member_table.h"
#include "tool/help.h"

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

std::string option_list(const CLI::App& app, bool positional, const CommonOptions& common) {
    std::string list;
    for (const CLI::Option* const option : shown_options(app, positional)) {
        list += ".TP\n.B " + roff(usage_of(*option)) + "\n" + roff(description_of(*option, common)) + "\n";
    }
    return list;
}

/// The examples of a command's help, without what follows them.
std::string examples_of(const CLI::App& command) {
    const std::string footer = command.get_footer();
    return ".PP\n.nf\n" + roff(footer.substr(0, footer.find("\n\n"))) + "\n.fi\n";
}

std::string command_section(const CLI::App& command, const CommonOptions& common) {
    std::string usage = "vantlo " + command.get_name();
    for (const CLI::Option* const argument : shown_options(command, true)) usage += " " + usage_of(*argument);
    return ".SS " + roff(usage) + "\n" + roff(command.get_description()) + "\n" + option_list(command, true, common) +
           option_list(command, false, common) + examples_of(command);
}

std::string names_of_kinds() {
    std::vector<std::string_view> names;
    for (const BillKind& kind : bill_kinds()) names.push_back(kind.name);
    return fmt::format("{}", fmt::join(names, " "));
}

/// The names of commands that the completion offers.
std::vector<std::string> command_names(const CLI::App& app) {
    std::vector<std::string> names;
    for (const CLI::App* const command : app.get_subcommands({})) {
        if (command->get_name() != "complete") names.push_back(command->get_name());
    }
    return names;
}

/// What of the database an option or argument names, as `vantlo complete` knows it; empty if it is nothing of the kind.
std::string_view names_of_database(std::string name) {
    std::ranges::transform(name, name.begin(), [](unsigned char letter) { return std::tolower(letter); });
    for (const std::string_view known : {"warehouse", "goods", "class"}) {
        if (name == known) return known;
    }
    return "";
}

/// The call of the script that completes an option's value.
std::string value_of(const CLI::Option& option) {
    const std::string name = option.get_lnames().front();
    if (const std::string_view what = names_of_database(name); !what.empty())
        return fmt::format("_vantlo_names {}", what);
    if (option.get_type_name() == "FILE" || name == "db") return "_vantlo_reply -f";
    return fmt::format("_vantlo_reply -W '{}'",
                       name == "kind" ? names_of_kinds() : fmt::format("{}", fmt::join(choices_of(option), " ")));
}

std::string option_names(const CLI::App& app) {
    std::string names;
    for (const CLI::Option* const option : shown_options(app, false)) {
        for (const std::string& name : option->get_lnames()) names += (names.empty() ? "--" : " --") + name;
    }
    return names;
}

/// The call of the script that completes a command's arguments; empty if it has none.
std::string arguments_of(const CLI::App& command, const CLI::App& app) {
    const std::vector<const CLI::Option*> arguments = shown_options(command, true);
    if (arguments.empty()) return "";
    const std::string name = arguments.front()->get_name(true, false);
    if (name == "KIND") return arguments.size() > 1 ? "_vantlo_bill" : "_vantlo_reply -W \"$kinds\"";
    if (const std::string_view what = names_of_database(name); !what.empty())
        return fmt::format("_vantlo_names {}", what);
    std::vector<std::string> words = choices_of(*arguments.front());
    if (name == "COMMAND") words = command_names(app);
    if (name == "MEMBER") {
        for (const Member& member : member_table()) {
            if (member.kind == MemberKind::method) words.push_back(to_utf8(member.name));
        }
    }
    return words.empty() ? "_vantlo_reply -f" : fmt::format("_vantlo_reply -W '{}'", fmt::join(words, " "));
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
            cases.values += fmt::format("        {}' {}') {}; return ;;\n", command,
                                        "--" + option->get_lnames().front(), value_of(*option));
        }
    };
    add_values(app, "*");
    for (const CLI::App* const command : app.get_subcommands({})) {
        if (command->get_name() == "complete") continue;
        add_values(*command, command->get_name());
        cases.options += fmt::format("        {}) options+=' {}' ;;\n", command->get_name(), option_names(*command));
        const std::string arguments = arguments_of(*command, app);
        if (!arguments.empty()) cases.arguments += fmt::format("        {}) {} ;;\n", command->get_name(), arguments);
    }
    return cases;
}

/// The completion, as fmt::format fills it.
constexpr const char* completion_script =
    R"bash(# Completes vantlo's commands, options, kinds of bills, members, file names and the database's names in bash.

_vantlo_reply() {{
    if [[ $1 == -f ]]; then
        compopt -o filenames 2>/dev/null
        mapfile -t COMPREPLY < <(compgen -f -- "$current")
    else
        mapfile -t COMPREPLY < <(compgen "$1" "$2" -- "$current")
    fi
}}

# A word of the command line without its quotes; nothing in it is carried out.
_vantlo_plain() {{
    local word=$1
    case $word in
        \'*) word=${{word#\'}} word=${{word%\'}} ;;
        \"*) word=${{word#\"}} word=${{word%\"}} ;;
        *) word=${{word//\\/}} ;;
    esac
    [[ $word == \~/* ]] && word=$HOME/${{word:2}}
    printf '%s' "$word"
}}

# Names that the database has, `_vantlo_names goods`, quoted as the shell needs them.
_vantlo_names() {{
    local typed quote='' name word before=''
    local -a database=()
    for word in "${{COMP_WORDS[@]:1:COMP_CWORD-1}}"; do
        [[ $before == --db ]] && database+=(--db "$(_vantlo_plain "$word")")
        before=$word
    done
    typed=$(_vantlo_plain "$current")
    [[ $current == [\'\"]* ]] && quote=${{current:0:1}}
    while IFS= read -r name; do
        case $quote in
            \') [[ $name == *\'* ]] || COMPREPLY+=("$name") ;;
            \") [[ $name == *[\"\$\`\\!]* ]] || COMPREPLY+=("$name") ;;
            *) printf -v name %q "$name" && COMPREPLY+=("$name") ;;
        esac
    done < <("${{COMP_WORDS[0]}}" "${{database[@]}}" complete -- "$@" "$typed" 2>/dev/null)
}}

# A kind of bill, and behind it an id of that kind.
_vantlo_bill() {{
    if [[ " $kinds " == *" $previous "* ]]; then
        _vantlo_names bill "$previous"
    else
        _vantlo_reply -W "$kinds"
    fi
}}

_vantlo() {{
    local current=${{COMP_WORDS[COMP_CWORD]}} previous=${{COMP_WORDS[COMP_CWORD - 1]}} command='' word
    local options='{0}' kinds='{6}'
    COMPREPLY=()
    for word in "${{COMP_WORDS[@]:1:COMP_CWORD-1}}"; do
        case $word in {1}) command=$word; break ;; esac
    done
    # bash makes a word of the sign in `--goods=G1`.
    if [[ $current == '=' ]]; then
        current=''
    elif [[ $previous == '=' ]]; then
        previous=${{COMP_WORDS[COMP_CWORD - 2]}}
    fi
    case "$command $previous" in
{2}    esac
    case $command in
{3}    esac
    if [[ $current == -* ]]; then
        _vantlo_reply -W "$options"
        return
    fi
    case $command in
        '') _vantlo_reply -W '{4}' ;;
{5}    esac
}}

complete -F _vantlo vantlo
)bash";

}  // namespace

std::string manual_page(const CLI::App& app, const CommonOptions& common) {
    const auto heading = [&](const Message& wording) { return ".SH " + common.say(wording) + "\n"; };
    std::string page = ".TH VANTLO 1 \"\" \"vantlo " VANTLO_VERSION "\"\n.ad l\n";
    page += heading(words::manual_name) + "vantlo \\- " + roff(app.get_description()) + "\n";
    page += heading(words::manual_synopsis) + ".B vantlo\n[" + common.say(words::option_badge) + "] " +
            common.say(words::command_badge) + "\n";
    page += heading(words::manual_options) + option_list(app, false, common);
    page += heading(words::manual_commands);
    for (const CLI::App* const command : shown_commands(app)) page += command_section(*command, common);
    page += heading(words::manual_exit_status) + exit_code_list(common.language, ".TP\n.B ", "\n", "\n");
    page += heading(words::manual_environment) + environment_section(common);
    return page;
}

std::string bash_completion(const CLI::App& app) {
    const std::vector<std::string> names = command_names(app);
    const auto& [values, options, arguments] = completion_cases(app);
    return fmt::format(fmt::runtime(completion_script), option_names(app), fmt::join(names, "|"), values, options,
                       fmt::join(names, " "), arguments, names_of_kinds());
}

}  // namespace vantlo
