#include <doctest/doctest.h>

#include <algorithm>
#include <regex>
#include <sstream>

#include "bills/bill_kinds.h"
#include "tests/support/shell.h"

// What vantlo says of a command line: help, mistakes, and both in the user's language.

namespace vantlo::test {
namespace {

TEST_CASE("vantlo without a command shows its help and ends as a wrong command line") {
    const Shell shell;
    const Finished bare = shell.vantlo("");
    CHECK(bare.exit_code == 2);
    CHECK(bare.output == shell.vantlo("--help").output);
    CHECK(shell.vantlo("2>/dev/null").output.empty());
    CHECK(shell.vantlo("--show-sql").has("vantlo: a command is missing; vantlo --help lists them\n"));
}

TEST_CASE("vantlo help shows the help of the program or of a command") {
    const Shell shell;
    const Finished help = shell.vantlo("help");
    CHECK(help.exit_code == 0);
    CHECK(help.output == shell.vantlo("--help").output);
    CHECK(shell.vantlo("help ledger").output == shell.vantlo("ledger --help").output);
    CHECK(shell.vantlo("--lang zh help ledger").has("用法：vantlo ledger [选项]\n"));
    const Finished unknown = shell.vantlo("help ledgr");
    CHECK(unknown.exit_code == 2);
    CHECK(unknown.output ==
          "vantlo: there is no command \"ledgr\". Did you mean \"ledger\"?\nRun vantlo --help for more.\n");
}

TEST_CASE("The help says what an option takes, which options exclude it, and how the program is called") {
    const Shell shell;
    const Finished repair = shell.vantlo("repair --help");
    CHECK(repair.has("Usage: vantlo repair [OPTIONS]\n"));
    CHECK(shell.vantlo("adopt --help").has(" (not with --shop)\n"));
    CHECK(repair.has("  --goods GOODS "));
    CHECK(shell.vantlo("save --help").has("Usage: vantlo save [OPTIONS] FILE...\n"));
    CHECK(shell.vantlo("report --help").has("  --by GROUP "));
    CHECK(shell.vantlo("-V").output == shell.vantlo("--version").output);
}

struct Mistake {
    std::string command_line;
    std::string english;
    std::string chinese;
};

// clang-format off
const Mistake mistakes[] = {
    {"frob",                          "there is no command \"frob\".", "没有命令“frob”。"},
    {"frob --help",                   "there is no command \"frob\".", "没有命令“frob”。"},
    {"--help frob",                   "there is no command \"frob\".", "没有命令“frob”。"},
    {"leger",                         "there is no command \"leger\". Did you mean \"ledger\"?", "没有命令“leger”。 是否想写“ledger”？"},
    {"ledger --frob",                 "vantlo ledger has no option --frob.", "vantlo ledger 没有选项 --frob。"},
    {"ledger --formt=csv",            "vantlo ledger has no option --formt. Did you mean \"--format\"?", "vantlo ledger 没有选项 --formt。 是否想写“--format”？"},
    {"--frob ledger",                 "vantlo ledger has no option --frob.", "vantlo ledger 没有选项 --frob。"},
    {"verify x",                      "vantlo verify: the argument \"x\" is one too many.", "vantlo verify：多余的参数“x”。"},
    {"ledger --format csw",           "--format: \"csw\" is none of table, json, jsonl, csv. Did you mean \"csv\"?", "--format：“csw”不在可选值之中：table、json、jsonl、csv。 是否想写“csv”？"},
    {"report --by yeer",              "--by: \"yeer\" is none of class, day, goods, kind, month, warehouse.", "--by：“yeer”不在可选值之中：class、day、goods、kind、month、warehouse。"},
    {"--lang fr ledger",              "--lang: \"fr\" is none of zh, en.", ""},
    {"journal frob",                  "ACTION: \"frob\" is none of on, off, status.", "ACTION：“frob”不在可选值之中：on、off、status。"},
    {"repair --undo x",               "--undo: \"x\" is not a number as it is needed here.", "--undo：“x”不是所需的数。"},
    {"bills --limit -3",              "--limit: \"-3\" is not a number as it is needed here.", "--limit：“-3”不是所需的数。"},
    {"bills --limit x",               "--limit: \"x\" is not a number as it is needed here.", "--limit：“x”不是所需的数。"},
    {"repair --list --undo 3",        "--list and --undo cannot stand together.", "--list 与 --undo 不能同用。"},
    {"ledger --format csv --format json", "--format may be given once only.", "--format 只能给出一次。"},
    {"ledger --db",                   "--db needs a value.", "--db 后面缺少值。"},
    {"save",                          "FILE is missing.", "缺少 FILE。"},
    {"card",                          "GOODS is missing.", "缺少 GOODS。"},
    {"report --from 2024-13",         "\"2024-13\" is no date; write 2026-03-31, 2026-03 or 2026", "“2024-13”不是日期；请写 2026-03-31、2026-03 或 2026"},
    {"--db '' ledger",                "--db names nothing", "--db 为空"},
};
// clang-format on

TEST_CASE("vantlo tells what is wrong with a command line in the user's language, and ends with 2") {
    const Shell shell;
    for (const Mistake& mistake : mistakes) {
        CAPTURE(mistake.command_line);
        const Finished english = shell.vantlo(mistake.command_line);
        CHECK(english.exit_code == 2);
        CHECK_MESSAGE(english.output.starts_with("vantlo: " + mistake.english + "\n"), english.output);
        if (mistake.chinese.empty()) continue;
        const Finished chinese = shell.vantlo("--lang zh " + mistake.command_line);
        CHECK(chinese.exit_code == 2);
        CHECK_MESSAGE(chinese.output.starts_with("vantlo: " + mistake.chinese + "\n"), chinese.output);
    }
}

/// The Latin words of a text that are no names: of the program, options, commands, kinds, fields, files, formats or SQL.
/// What stands between Chinese quotes was typed by the user.
std::vector<std::string> english_words(const std::string& line, const std::vector<std::string>& names) {
    const std::string text = std::regex_replace(line, std::regex("“[^”]*”"), "");
    static const std::regex word("-{0,2}[A-Za-z][A-Za-z0-9_.:/-]*");
    std::vector<std::string> found;
    for (auto it = std::sregex_iterator(text.begin(), text.end(), word); it != std::sregex_iterator(); ++it) {
        std::string name = it->str();
        while (name.ends_with(':')) name.pop_back();
        const bool is_placeholder = std::ranges::all_of(name, [](char letter) {
            return letter == '_' || (letter >= 'A' && letter <= 'Z') || (letter >= '0' && letter <= '9');
        });
        const bool is_file = name.find('.') != std::string::npos;
        if (!name.starts_with('-') && !is_placeholder && !is_file && std::ranges::count(names, name) == 0)
            found.push_back(name);
    }
    return found;
}

/// What may stand in a Chinese text: names that are typed, or that stand in the database.
std::vector<std::string> known_names(const Shell& shell) {
    std::vector<std::string> names = {"vantlo",     "zh",
                                      "en",         "SQLite",
                                      "sqlite",     "ODBC",
                                      "json",       "jsonl",
                                      "csv",        "table",
                                      "utf-8",      "gb18030",
                                      "on",         "off",
                                      "status",     "warehouses",
                                      "goods",      "units",
                                      "warehouse",  "class",
                                      "kind",       "day",
                                      "month",      "Ctrl-C",
                                      "vantlo.db",  "text",
                                      "Inventory",  "StockMovement",
                                      "StockBill",  "RepairJournal",
                                      "R1",         "G1",
                                      "W1",         "X1",
                                      "frob",       "stock-in",
                                      "bad",        "Driver",
                                      "PostgreSQL", "Unicode",
                                      "Server",     "localhost",
                                      "Database",   "shop",
                                      "null",       "header",
                                      "main"};
    for (const char* const table :
         {"SavedBill", "BillHistory", "PostingJournal", "ShopDescription", "CurrentPosting", "StockMinimum"})
        names.emplace_back(table);
    for (const char* const example :
         {"G001", "G0", "W01", "R1001", "GB18030", "html", "tsv", "txt", "xlsx", "none", "lines", "Warehouse"})
        names.emplace_back(example);
    for (const BillKind& kind : bill_kinds()) {
        names.emplace_back(kind.name);
        for (const BillTable* const table : {kind.header, kind.lines}) {
            for (const BillColumn& column : table->columns) names.emplace_back(column.field);
        }
    }
    // Commands, and the values that options take.
    const std::string completion = shell.vantlo("--print bash-completion").output;
    static const std::regex list("-W '([^']*)'");
    for (auto it = std::sregex_iterator(completion.begin(), completion.end(), list); it != std::sregex_iterator();
         ++it) {
        std::istringstream words((*it)[1]);
        for (std::string word; words >> word;) names.push_back(word);
    }
    return names;
}

TEST_CASE("With --lang zh nothing that vantlo says is English, whatever goes wrong") {
    const Shell shell;
    const std::vector<std::string> names = known_names(shell);
    REQUIRE(names.size() > 60);
    shell.file("bill.json", R"({"bills": [{"kind": "stock-in", "id": "R1", "date": "2024-03-05",
        "lines": [{"goods": "G1", "quantity": 3, "receiver": "W1"}]}]})");
    shell.file("bad.json", R"({"bills": [{"kind": "frob", "id": "R1"}]})");
    shell.run("echo this is nothing >bad.db; : >empty.db");
    REQUIRE(shell.vantlo("init").exit_code == 0);
    REQUIRE(shell.vantlo("save bill.json").exit_code == 0);
    std::vector<std::string> command_lines = {"",
                                              "init",
                                              "save bill.json",
                                              "save none.json",
                                              "save bad.json",
                                              "import bad.json",
                                              "delete stock-in X1",
                                              "bill stock-in X1",
                                              "bill stock-in R1",
                                              "bill frob X1",
                                              "ledger",
                                              "bills",
                                              "goods",
                                              "card G1",
                                              "card X1",
                                              "report --by goods",
                                              "verify",
                                              "repair",
                                              "repair --apply --yes",
                                              "repair --list",
                                              "repair --undo 7",
                                              "journal status",
                                              "explain frob",
                                              "new frob",
                                              "fields stock-in",
                                              "bills --sort frob",
                                              "--db empty.db ledger",
                                              "--db bad.db ledger",
                                              "--db bad.db verify",
                                              "--db none.db ledger",
                                              "--db empty.db verify",
                                              "--db . ledger",
                                              "backup bad.db",
                                              "backup --replace bad.json",
                                              "--db a://b ledger",
                                              "--db 'Driver=x;PWD=y' ledger",
                                              "--db none/x.db init",
                                              "adopt --propose >none.txt",
                                              "delete stock-in R1 --dry-run >none.txt",
                                              "save bill.json --frob",
                                              "leave --dry-run >none.txt",
                                              "ledger >/dev/full"};
    for (const Mistake& mistake : mistakes) command_lines.push_back(mistake.command_line);
    for (const std::string& name : names) {
        if (shell.vantlo("help " + name).exit_code != 0) continue;
        for (const char* const arguments : {"", " --frob", " frob frob frob", " --db none.db", " --help"})
            command_lines.push_back(name + arguments);
    }
    std::size_t seen = 0;
    for (const std::string& command_line : command_lines) {
        const Finished finished =
            shell.vantlo((command_line == "--lang fr ledger" ? "" : "--lang zh ") + command_line + " </dev/null");
        if (command_line.starts_with("--lang fr")) continue;
        std::istringstream lines(finished.output);
        for (std::string line; std::getline(lines, line);) {
            // Command lines and SQL, which are the same in every language.
            if (line.starts_with("  vantlo ") || line.starts_with("update ") || line.starts_with("-- ")) continue;
            ++seen;
            const std::vector<std::string> english = english_words(line, names);
            CHECK_MESSAGE(english.empty(), command_line, ": ", line, " <- ", english.empty() ? "" : english.front());
        }
    }
    CHECK(seen > 500);
}

}  // namespace
}  // namespace vantlo::test
