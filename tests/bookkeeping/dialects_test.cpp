#include <doctest/doctest.h>

#include <algorithm>
#include <cctype>
#include <map>
#include <set>
#include <sstream>

#include "ado/native/statement_text.h"
#include "bills/schema.h"
#include "bookkeeping/bookkeeping.h"
#include "support/stock_bills.h"
#include "tests/support/scenario_check.h"

// The five kinds of database side by side: their schemas, and the component's statements, as texts. What no engine here can
// run, SQL Server's and Access's, is held against the rules of their dialects.

namespace vantlo::test {
namespace {

using namespace vantlo;

const char* const dialects[] = {"sqlite", "postgresql", "mariadb", "sqlserver", "access"};

struct Column {
    std::string table;
    std::string name;
    std::string type;  ///< what stands behind the name
};

std::string lower(std::string text) {
    std::ranges::transform(text, text.begin(), [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return text;
}

/// The words, numbers, names and single signs of a statement, without its literals.
std::vector<std::string> tokens_of(const std::string& statement) {
    const auto is_word = [](char c) { return std::isalnum(static_cast<unsigned char>(c)) != 0 || c == '_'; };
    std::vector<std::string> tokens;
    for (std::size_t at = 0; at < statement.size();) {
        const char c = statement[at];
        std::size_t end = at + 1;
        if (c == '\'' || c == '#') {
            end = statement.find(c, end);  // a doubled one ends one literal and begins the next
            REQUIRE_MESSAGE(end != std::string::npos, statement);
            ++end;
        } else if (is_word(c)) {
            while (end < statement.size() && is_word(statement[end])) ++end;
            tokens.push_back(statement.substr(at, end - at));
        } else if (c != ' ' && c != '\n') {
            tokens.emplace_back(1, c);
        }
        at = end;
    }
    return tokens;
}

/// The columns of all tables of a schema, as they stand: one a line, in lines of their own.
std::vector<Column> columns_of(const std::string& dialect) {
    std::vector<Column> columns;
    for (const Text& statement : statements_of(schema_for(dialect))) {
        std::istringstream lines(to_utf8(statement));
        std::string line;
        std::getline(lines, line);
        const std::size_t create = line.find("create table ");
        if (create == std::string::npos) continue;
        const std::vector<std::string> words = tokens_of(line);
        const std::string table = words.at(words.size() - 2);  // before the bracket
        while (std::getline(lines, line) && line.starts_with("    ")) {
            if (line.ends_with(',')) line.pop_back();
            const std::size_t name = line.find_first_not_of(' ');
            const std::size_t name_end = line.find(' ', name);
            const std::size_t type = line.find_first_not_of(' ', name_end);
            const std::string first = line.substr(name, name_end - name);
            if (first != "primary" && first != "unique") columns.push_back({table, first, line.substr(type)});
        }
    }
    return columns;
}

std::string column_list(const std::vector<Column>& columns) {
    std::string list;
    for (const Column& column : columns) list += column.table + "." + column.name + "\n";
    return list;
}

TEST_CASE("Every kind of database has a dialect") {
    std::vector<std::string_view> names(std::begin(dialects), std::end(dialects));
    names.emplace_back("unknown");
    CHECK(std::ranges::equal(names, vantlo::dialects(), {}, {}, &Dialect::name));
    for (const std::string_view name : names) CHECK(dialect_named(name).name == name);
    CHECK(dialect_named("").name == "unknown");
    CHECK(dialect_named("SQLite").name == "unknown");
}

TEST_CASE("Every kind of database has the same tables with the same columns in the same order") {
    const std::string of_sqlite = column_list(columns_of("sqlite"));
    CHECK(std::ranges::count(of_sqlite, '\n') == 139);
    for (const char* dialect : dialects) {
        INFO(dialect);
        CHECK(column_list(columns_of(dialect)) == of_sqlite);
    }
}

TEST_CASE("Every kind of database has the type that stands for SQLite's") {
    struct Row {
        const char* types[5];  // in the order of the dialects
    };
    // clang-format off
    const Row rows[] = {
        {{"nvarchar(40)",   "varchar(40)",      "varchar(40)",   "nvarchar(40)",   "text(40)"}},
        {{"nvarchar(64)",   "varchar(64)",      "varchar(64)",   "nvarchar(64)",   "text(64)"}},
        {{"nvarchar(100)",  "varchar(100)",     "varchar(100)",  "nvarchar(100)",  "text(100)"}},
        {{"nvarchar(200)",  "varchar(200)",     "varchar(200)",  "nvarchar(200)",  "text(200)"}},
        {{"nvarchar(1000)", "varchar(1000)",    "varchar(1000)", "nvarchar(1000)", "memo"}},  // text() ends at 255
        {{"nvarchar(1000000)", "text",          "longtext",      "nvarchar(max)",  "memo"}},
        {{"money",          "numeric(19,4)",    "decimal(19,4)", "money",          "currency"}},
        {{"real",           "real",             "float",         "real",           "single"}},
        {{"float",          "double precision", "double",        "float",          "double"}},
        {{"int",            "integer",          "integer",       "int",            "long"}},
        {{"integer",        "integer",          "integer",       "int",            "long"}},
        {{"smallint",       "smallint",         "smallint",      "smallint",       "short"}},
        {{"date",           "timestamp(0)",     "datetime",      "datetime",       "datetime"}},
    };
    // clang-format on
    const std::set<std::string> own_to_each_engine = {"SavedAt",  "DoneAt",      "RepairedAt",
                                                      "PostedAt", "DescribedAt", "EntryNo"};  // with their own defaults
    const std::vector<Column> of_sqlite = columns_of("sqlite");
    const auto begins_with_type = [](const std::string& text, const std::string& type) {
        return text == type || text.starts_with(type + " ");
    };
    for (std::size_t dialect = 0; dialect < std::size(dialects); ++dialect) {
        const std::vector<Column> columns = columns_of(dialects[dialect]);
        REQUIRE(columns.size() == of_sqlite.size());
        for (std::size_t i = 0; i < columns.size(); ++i) {
            INFO(std::string(dialects[dialect])
                 << " " << columns[i].table << "." << columns[i].name << " " << columns[i].type);
            if (own_to_each_engine.contains(columns[i].name)) continue;
            const Row* const row = std::ranges::find_if(
                rows, [&](const Row& known) { return begins_with_type(of_sqlite[i].type, known.types[0]); });
            REQUIRE(row != std::end(rows));
            CHECK(begins_with_type(columns[i].type, row->types[dialect]));
        }
    }
}

TEST_CASE("Every kind of database has the ledger's index, and the unique key as an option") {
    const std::string on = " on Inventory (WID, GId, Model1, Model2, Status)";
    for (const char* dialect : dialects) {
        INFO(dialect);
        const std::string script = schema_for(dialect);
        CHECK(script.find("InventoryKey" + on) != std::string::npos);
        CHECK(script.find("unique index") == std::string::npos);
        CHECK(unique_key_for(dialect).find("InventoryUniqueKey" + on) != std::string::npos);
    }
}

/// Words that Transact-SQL reserves and that a statement's author might take for a name.
const std::set<std::string> reserved_by_sql_server = {
    "add",     "all",    "alter",  "any",      "as",       "backup", "begin",    "browse", "bulk", "by",     "case",
    "check",   "close",  "column", "commit",   "current",  "cursor", "default",  "deny",   "desc", "disk",   "double",
    "drop",    "dump",   "end",    "escape",   "except",   "exit",   "external", "file",   "for",  "full",   "goto",
    "grant",   "group",  "having", "identity", "if",       "in",     "index",    "inner",  "is",   "key",    "kill",
    "like",    "lineno", "load",   "merge",    "national", "not",    "of",       "off",    "on",   "open",   "option",
    "or",      "order",  "outer",  "over",     "percent",  "plan",   "primary",  "print",  "proc", "public", "read",
    "restore", "return", "revert", "right",    "rowcount", "rule",   "save",     "schema", "some", "table",  "then",
    "to",      "top",    "tran",   "trigger",  "truncate", "union",  "unique",   "use",    "user", "view",   "when",
    "where",   "while",  "with",   "bit",      "select",   "insert", "update",   "delete", "from", "into",   "values",
    "set",     "and",    "null",   "join",     "left"};

TEST_CASE("No table and no column has a name that Transact-SQL reserves") {
    for (const Column& column : columns_of("sqlserver")) {
        INFO(column.table << "." << column.name);
        CHECK(!reserved_by_sql_server.contains(lower(column.table)));
        CHECK(!reserved_by_sql_server.contains(lower(column.name)));
    }
}

TEST_CASE("SQL Server compares every text that postings look rows up by exactly") {
    // Whether a column of that name is one that a statement compares.
    const std::set<std::string> compared = {"WID",      "GId",    "Model1",    "Model2",     "Unit",   "Class",
                                            "Receiver", "ID",     "id",        "Id",         "BillId", "Gid",
                                            "Supplier", "Marker", "StatusWID", "WareHouseID"};
    for (const Column& column : columns_of("sqlserver")) {
        if (!compared.contains(column.name)) continue;
        INFO(column.table << "." << column.name);
        CHECK(column.type.find(" collate Chinese_PRC_BIN2") != std::string::npos);
    }
}

TEST_CASE("Access's schema keeps to what Access knows: no condition, no default, no batch") {
    for (const Text& statement : statements_of(schema_for("access"))) {
        INFO(to_utf8(statement));
        const std::vector<std::string> words = tokens_of(to_utf8(statement));
        CHECK(words.at(0) == "create");
        CHECK((words.at(1) == "table" || words.at(1) == "index"));
        for (const char* unknown : {"if", "exists", "default", "check", "collate", "go"}) {
            CHECK(std::ranges::find(words, unknown) == words.end());
        }
    }
}

TEST_CASE("Every statement of every scenario is made of words and signs that SQL Server and Access share") {
    std::set<std::string> known = {"select", "insert", "update", "into", "values", "set", "from",  "where",
                                   "and",    "null",   "left",   "join", "on",     "as",  "count", "tempqty"};
    for (const Column& column : columns_of("sqlserver")) {
        known.insert(lower(column.table));
        known.insert(lower(column.name));
    }
    const std::set<std::string> signs = {"(", ")", ",", "=", "*", "+", "-", ".", "<", ">"};
    std::size_t statements = 0;
    for (const Scenario& scenario : all_scenarios()) {
        for (const std::string& line : scenario.trace) {
            const bool is_open = line.starts_with("open ");
            if (!is_open && !line.starts_with("execute ")) continue;
            ++statements;
            const std::string statement = line.substr(line.find(' ') + 1);
            for (const std::string& token : tokens_of(statement)) {
                const bool is_number = std::isdigit(static_cast<unsigned char>(token.front())) != 0;
                INFO(scenario.where() << ": " << statement << ": " << token);
                CHECK((is_number || signs.contains(token) || known.contains(lower(token))));
            }
        }
    }
    CHECK(statements > 1000);
}

/// A database of a dialect that is empty, and stays so whatever it is told.
class EmptyDatabase final : public NativeConnection {
public:
    EmptyDatabase(const Dialect& dialect, std::string& statements) : dialect_(dialect), statements_(statements) {}

    ResultTable run(TextView statement) override {
        statements_ += to_utf8(statement) + "\n";
        return {{}, {}, statement.starts_with(u"select")};
    }
    void begin() override {}
    void commit() override {}
    void roll_back() override {}
    [[nodiscard]] Remedy remedy() const override { return Remedy::none; }
    [[nodiscard]] const Dialect& dialect() const override { return dialect_; }
    [[nodiscard]] std::string engine() const override { return std::string(dialect_.name); }

private:
    const Dialect& dialect_;
    std::string& statements_;
};

TEST_CASE("A bill's date is written in the syntax of the engine that it is saved in") {
    for (const Dialect& dialect : vantlo::dialects()) {
        INFO(dialect.name);
        std::string statements;
        const Connect connect = [&] { return Owned<NativeConnection>(new EmptyDatabase(dialect, statements)); };
        Bookkeeping(connect).save(stock_bill(u"B1", u"G1", 2, u"W1", u"W2"));
        const char* const date = dialect.name == "access" ? "#2024-03-05 00:00:00#" : "'2024-03-05 00:00:00'";
        CHECK_MESSAGE(statements.find(std::string("values('B1','stock',") + date + ",0,'')") != std::string::npos,
                      statements);
    }
}

}  // namespace
}  // namespace vantlo::test
