#include "tool/commands/command.h"

#include <unistd.h>

#include <cstdlib>
#include <iostream>

#include "ado/native/open_connection.h"
#include "ado/odbc/connection_string.h"
#include "bookkeeping/rehearsal.h"

namespace vantlo {

namespace words {

// clang-format off
constexpr Message confirmation   = {"{} 是否继续？[y/N] ", "{} Go on? [y/N] "};
constexpr Message commands       = {"命令", "Commands"};
constexpr Message examples       = {"示例", "Examples"};
constexpr Message command_footer   = {
    "对所有命令都有效的选项见 vantlo --help。",
    "The options of every command: vantlo --help."};
constexpr Message unknown_kind   = {"没有“{}”这种单据；单据种类有", "there is no kind of bill \"{}\"; the kinds are"};
constexpr Message warning        = {"警告：{}：{}", "warning: {}: {}"};
constexpr Message force_option   = {"即使语句会改变每一行台账也执行", "Send even a statement that changes every row of the ledger"};
constexpr Message negative_option = {"拒绝使结存变为负数的单据", "Refuse bills that take stock below zero"};
constexpr Message dry_run_option = {"只显示将发出的语句以及台账的前后变化，不写入任何数据", "Show the statements and what they change in the ledger, and write nothing"};
constexpr Message change_of_row  = {"{}：收入 {} → {}，发出 {} → {}，结存 {} → {}", "{}: received {} → {}, issued {} → {}, on hand {} → {}"};
constexpr Message nothing        = {"无", "none"};
// clang-format on

}  // namespace words

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

std::string change_text(const LedgerChange& change, const CommonOptions& common) {
    const auto quantity = [&](const std::optional<LedgerRow>& row, Currency LedgerRow::*counter) {
        return row ? quantity_text((*row).*counter) : common.say(words::nothing);
    };
    const auto& [before, after] = change;
    return common.say(words::change_of_row, key_text(after ? *after : *before, common.language),
                      quantity(before, &LedgerRow::received), quantity(after, &LedgerRow::received),
                      quantity(before, &LedgerRow::issued), quantity(after, &LedgerRow::issued),
                      quantity(before, &LedgerRow::on_hand), quantity(after, &LedgerRow::on_hand));
}

/// Tells the user what is posted. What a dry run writes to stdout is SQL with comments.
class PostingReport final : public BookkeepingObserver {
public:
    explicit PostingReport(const CommonOptions& common) : common_(common) {}

    void begins(const std::string& bill) override {
        if (common_.dry_run) std::cout << "-- " << bill << '\n';
    }
    void sends(TextView statement) override {
        if (common_.dry_run)
            std::cout << to_utf8(statement) << ";\n";
        else if (common_.show_sql)
            std::cerr << to_utf8(statement) << '\n';
    }
    void warns(const std::string& bill, const std::string& what) override {
        std::cerr << "vantlo: " << common_.say(words::warning, bill, what) << '\n';
    }
    void ends(const std::vector<LedgerChange>& changes) override {
        if (!common_.dry_run) return;
        for (const LedgerChange& change : changes) std::cout << "-- " << change_text(change, common_) << '\n';
    }

private:
    const CommonOptions& common_;
};

}  // namespace

std::vector<std::string> CommonOptions::connection_texts() const {
    std::vector<std::string> named = databases;
    if (named.empty()) named.push_back(environment("VANTLO_DB"));
    if (named.front().empty()) named.front() = "vantlo.db";
    for (std::string& database : named) database = connection_text(database);
    return named;
}

Connect CommonOptions::connect(bool may_create) const {
    const Connect connect = connect_in_turn(connection_texts(), may_create);
    return dry_run ? rehearsing(connect) : connect;
}

std::string CommonOptions::dialect() const {
    return connection_texts().front().starts_with("sqlite:") ? "sqlite" : connect()()->dialect();
}

std::string CommonOptions::engine() const {
    const bool is_named = !databases.empty() || !environment("VANTLO_DB").empty();
    return is_named ? connect()()->engine() : open_connection("sqlite::memory:")->engine();
}

Bookkeeping CommonOptions::bookkeeping() const {
    return Bookkeeping(connect(), std::make_shared<PostingReport>(*this), language, guard);
}

std::optional<bool> ask_to_confirm(const CommonOptions& common, const std::string& question) {
    if (::isatty(STDIN_FILENO) == 0) return std::nullopt;
    std::cerr << common.say(words::confirmation, question) << std::flush;
    std::string answer;
    std::getline(std::cin, answer);
    return answer == "y" || answer == "yes" || answer == "是";
}

void add_posting_options(CLI::App& command, CommonOptions& common) {
    command.add_flag("--dry-run", common.dry_run, common.say(words::dry_run_option));
    command.add_flag("--force", common.guard.lets_comments_pass, common.say(words::force_option));
    command.add_flag("--fail-on-negative", common.guard.refuses_negative, common.say(words::negative_option));
}

const BillKind* known_kind(const CommonOptions& common, const std::string& name) {
    const BillKind* const kind = find_bill_kind(name);
    if (kind != nullptr) return kind;
    std::cerr << "vantlo: " << common.say(words::unknown_kind, name) << '\n';
    for (const BillKind& known : bill_kinds()) std::cerr << fmt::format("  {:20} {}\n", known.name, known.chinese_name);
    return nullptr;
}

CLI::App* add_command(CLI::App& app, const CommonOptions& common, const char* name, const Message& about,
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

}  // namespace vantlo
