#include <doctest/doctest.h>

#include <cctype>
#include <map>
#include <regex>
#include <set>
#include <sstream>

#include "tests/support/empty_shop.h"
#include "tests/support/shell.h"
#include "tests/support/transcript.h"

// The rights that each command needs, found out by giving an account none, and then one after the other what it lacks: every
// right in the table of docs/databases.md is one without which the command fails.

namespace vantlo::test {
namespace {

constexpr const char* rights[] = {"select", "insert", "update", "delete"};

/// For each right, the tables in small letters.
using Rights = std::map<std::string, std::set<std::string>>;

std::string in_small_letters(std::string text) {
    for (char& c : text) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return text;
}

std::vector<std::string> parts_of(const std::string& text, const std::regex& separator) {
    return {std::sregex_token_iterator(text.begin(), text.end(), separator, -1), {}};
}

/// A row of the table of least rights.
struct Row {
    std::string arguments;
    Rights needed;
};

std::vector<Row> documented_rows() {
    std::vector<Row> rows;
    const std::string page = text_of(std::string(VANTLO_SOURCE_DIR) + "/docs/databases.md");
    std::istringstream lines(page.substr(page.find("\n## Least rights\n")));
    for (std::string line; std::getline(lines, line);) {
        if (!line.starts_with("| `")) continue;
        const std::vector<std::string> cells = parts_of(line, std::regex(" *\\| *"));
        REQUIRE(cells.size() == 6);
        Row row{cells[1].substr(1, cells[1].size() - 2), {}};
        for (std::size_t i = 0; i < std::size(rights); ++i) {
            for (const std::string& table : parts_of(in_small_letters(cells[i + 2]), std::regex(", ")))
                if (!table.empty()) row.needed[rights[i]].insert(table);
        }
        rows.push_back(row);
    }
    return rows;
}

/// An account of a server that has no rights but those that it is given, and one without which MariaDB lets it not even in.
class Account {
public:
    explicit Account(const Server& server) : server_(server), owner_(server.connect()) {
        owner_->run_script(
            is_mariadb() ? "create table if not exists Nothing (a integer); create user clerk identified by 'vantlo';"
                           "grant select on Nothing to clerk"
                         : "create role clerk login");
    }
    Account(const Account&) = delete;
    Account& operator=(const Account&) = delete;
    ~Account() { owner_->run_script(is_mariadb() ? "drop user clerk" : "drop owned by clerk; drop role clerk"); }

    [[nodiscard]] std::string connection_string() const {
        return std::regex_replace(server_.connection_string, std::regex("UID=vantlo"), "UID=clerk");
    }

    /// Gives it the right that a failure says is lacking. Returns whether one was.
    bool gives_what_lacks(const std::string& output) {
        std::smatch found;
        // MariaDB's two ways, `UPDATE command denied to user … for table` and `… for column 'a' in table`.
        if (std::regex_search(output, found, std::regex("(\\w+) command denied .* table .(?:vantlo.\\..)?(\\w+)")))
            return gives(in_small_letters(found[1]), found[2]);
        if (std::regex_search(output, found, std::regex("permission denied for \\w+ (\\w+);")))
            return gives(right_of(output, found[1]), found[1]);
        return false;
    }

    Rights given;

private:
    [[nodiscard]] bool is_mariadb() const { return server_.dialect == "mariadb"; }

    /// PostgreSQL does not say which right: first the statement's own, then that to read what it looks for.
    std::string right_of(const std::string& output, const std::string& table) {
        std::smatch statement;
        REQUIRE(std::regex_search(output, statement, std::regex("query\\): (\\w+)")));
        const std::string verb = statement[1];
        return given[verb].contains(table) ? "select" : verb;
    }

    bool gives(const std::string& right, const std::string& table) {
        const bool is_new = given[right].insert(in_small_letters(table)).second;
        owner_->run(from_utf8("grant " + right + " on " + table + " to clerk"));
        return is_new;
    }

    const Server& server_;
    Owned<OdbcConnection> owner_;
};

TEST_CASE("Each command runs with the rights that docs/databases.md names, and with none of them less") {
    const std::vector<Row> rows = documented_rows();
    REQUIRE(rows.size() > 10);
    for (const Server& server : servers()) {
        const EmptyShop emptied(server, false);
        const Shell shell;
        const auto vantlo = [&](const std::string& database, const std::string& arguments) {
            return shell.run("VANTLO_DB='" + database + "' " + Shell::program() + " " + arguments);
        };
        const std::string examples = std::string(VANTLO_SOURCE_DIR) + "/examples/";
        REQUIRE(vantlo(server.connection_string, "init").exit_code == 0);
        REQUIRE(vantlo(server.connection_string, "journal on").exit_code == 0);
        REQUIRE(vantlo(server.connection_string, "save " + examples + "box.json").exit_code == 0);
        for (const Row& row : rows) {
            INFO(server.dialect << ": " << row.arguments);
            if (row.arguments.starts_with("import"))
                REQUIRE(vantlo(server.connection_string, "delete stock JC240305-01").exit_code == 0);
            Account account(server);
            const std::string arguments = std::regex_replace(row.arguments, std::regex("examples/"), examples);
            Finished last = vantlo(account.connection_string(), arguments);
            while (account.gives_what_lacks(last.output)) last = vantlo(account.connection_string(), arguments);
            INFO(last.output);
            CHECK(last.exit_code == 0);
            std::erase_if(account.given, [](const auto& right) { return right.second.empty(); });
            for (const char* const right : rights) {
                std::string names;
                for (const std::string& table : account.given[right]) names += table + " ";
                INFO(right << ": " << names);
                const auto documented = row.needed.find(right);
                CHECK(account.given[right] ==
                      (documented == row.needed.end() ? std::set<std::string>{} : documented->second));
            }
        }
    }
}

}  // namespace
}  // namespace vantlo::test
