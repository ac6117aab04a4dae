#include "tests/support/scenario.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <optional>
#include <sstream>
#include <stdexcept>

#include "automation/calendar.h"
#include "automation/number_text.h"
#include "dataaccess/sql_literals.h"

namespace vantlo::test {

namespace {

constexpr const char* ledger_columns[] = {"WID", "GId", "Model1", "Model2", "Status"};

/// A word of a scenario's line: `quoted` tells '' and "null" from the bare words.
struct Word {
    std::string text;
    bool quoted = false;
};

/// Takes words apart at blanks; a quote character, also behind a `=`, holds everything up to its twin together.
std::vector<Word> words_of(const std::string& rest) {
    std::vector<Word> words;
    std::size_t i = 0;
    while (i < rest.size()) {
        if (rest[i] == ' ') {
            ++i;
            continue;
        }
        Word word;
        while (i < rest.size() && rest[i] != ' ') {
            if (rest[i] == '"' || rest[i] == '\'') {
                const std::size_t end = rest.find(rest[i], i + 1);
                if (end == std::string::npos) throw std::runtime_error("a quote without its twin");
                word.text += rest.substr(i + 1, end - i - 1);
                word.quoted = true;
                i = end + 1;
            } else {
                word.text += rest[i++];
            }
        }
        words.push_back(word);
    }
    return words;
}

Variant text_value(const Word& word) {
    if (!word.quoted && word.text == "null") return Null{};
    return from_utf8(word.text);
}

/// A value written TYPE(TEXT); nothing for any other word.
std::optional<Variant> typed_value(const std::string& word) {
    struct Type {
        std::string_view name;
        Variant (*value)(const Variant& text);
    };
    static constexpr Type types[] = {
        {"Date", [](const Variant& text) { return Variant(date_from_text(to_text(text)).value()); }},
        {"Decimal", [](const Variant& text) { return Variant(Other{to_text(text)}); }},
        {"Boolean", [](const Variant& text) { return Variant(to_text(text) == u"True"); }},
        {"Integer", [](const Variant& text) { return Variant(to_integer(text)); }},
        {"Long", [](const Variant& text) { return Variant(to_long(text)); }},
        {"Double", [](const Variant& text) { return Variant(to_double(text)); }},
    };
    const std::size_t parenthesis = word.find('(');
    if (parenthesis == std::string::npos || word.back() != ')') return std::nullopt;
    const auto* const type = std::ranges::find(types, std::string_view(word).substr(0, parenthesis), &Type::name);
    if (type == std::end(types)) return std::nullopt;
    return type->value(from_utf8(word.substr(parenthesis + 1, word.size() - parenthesis - 2)));
}

/// A property of the line object in its declared type.
Variant property_value(const std::string& name, const Word& word) {
    if (const std::optional<Variant> value = typed_value(word.text)) return *value;
    const Variant text = text_value(word);
    if (text.is<Null>() || word.quoted) return text;
    if (name == "Actualqty" || name == "Qty" || name == "UQty") return static_cast<float>(to_double(text));
    if (name == "Goodstutas" || name == "GoodsStatus") return to_long(text);
    return text;
}

std::pair<std::string, Word> assignment(const Word& word) {
    const std::size_t sign = word.text.find('=');
    if (sign == std::string::npos) throw std::runtime_error("NAME=VALUE expected, not " + word.text);
    return {word.text.substr(0, sign), {word.text.substr(sign + 1), word.quoted}};
}

std::string quoted_word(const Variant& value) {
    if (value.is<Null>()) return "null";
    const std::string text = to_utf8(to_text(value));
    return text.empty() || text.find(' ') != std::string::npos ? "'" + text + "'" : text;
}

TableRow row_with(std::string table, std::vector<const char*> names, const std::vector<Word>& words) {
    if (words.size() != names.size()) throw std::runtime_error("wrong number of words");
    TableRow row{std::move(table), {}};
    for (std::size_t i = 0; i < names.size(); ++i) row.columns.emplace_back(names[i], text_value(words[i]));
    return row;
}

/// `W1 G1 red L 0 | in 10 out 0 current 10 | C1 box ''` as a row of the ledger.
TableRow ledger_row(const std::string& rest) {
    const std::vector<Word> words = words_of(rest);
    if (words.size() < 12 || words[5].text != "|" || words[6].text != "in" || words[8].text != "out" ||
        words[10].text != "current") {
        throw std::runtime_error("WID GID M1 M2 STATUS | in X out Y current Z expected");
    }
    TableRow row{"Inventory", {}};
    for (std::size_t i = 0; i < std::size(ledger_columns); ++i) {
        row.columns.emplace_back(ledger_columns[i], text_value(words[i]));
    }
    row.columns.emplace_back("InQty", text_value(words[7]));
    row.columns.emplace_back("OutQty", text_value(words[9]));
    row.columns.emplace_back("CurrentQty", text_value(words[11]));
    const bool described = words.size() == 16 && words[12].text == "|";
    row.columns.emplace_back("Class", described ? text_value(words[13]) : Variant(u""));
    row.columns.emplace_back("Unit", described ? text_value(words[14]) : Variant(u""));
    row.columns.emplace_back("Remarks", described ? text_value(words[15]) : Variant(u""));
    return row;
}

/// The canonical form of an expected row, so that quoting and spacing do not matter.
std::string canonical(const std::string& rest) {
    std::string text;
    for (const Word& word : words_of(rest)) {
        if (!text.empty()) text += ' ';
        const bool needs_quotes = word.text.empty() || word.text.find(' ') != std::string::npos;
        text += needs_quotes ? "'" + word.text + "'" : word.text;
    }
    return text;
}

class Reader {
public:
    explicit Reader(const std::string& path) : path_(path), name_(std::filesystem::path(path).filename().string()) {}

    std::vector<Scenario> read() {
        std::ifstream file(path_);
        if (!file) throw std::runtime_error(path_ + " cannot be read");
        std::string line;
        for (line_number_ = 1; std::getline(file, line); ++line_number_) {
            try {
                take(line);
            } catch (const std::exception& failure) {
                throw std::runtime_error(name_ + ":" + std::to_string(line_number_) + ": " + failure.what());
            }
        }
        return std::move(scenarios_);
    }

private:
    void take(const std::string& line) {
        if (line.empty() || line[0] == '#') return;
        const std::size_t end = line.find(' ');
        const std::string keyword = line.substr(0, end);
        const std::string rest = end == std::string::npos ? "" : line.substr(line.find_first_not_of(' ', end));
        if (keyword == "scenario") {
            scenarios_.emplace_back();
            scenarios_.back().file = name_;
            scenarios_.back().line_number = line_number_;
            scenarios_.back().title = rest;
            return;
        }
        if (scenarios_.empty()) throw std::runtime_error("`scenario` expected first");
        take(scenarios_.back(), keyword, rest, line);
    }

    static void take(Scenario& scenario, const std::string& keyword, const std::string& rest, const std::string& line) {
        const bool called = !scenario.member.empty();
        if (keyword == "kind") {
            scenario.data_type = rest;
        } else if (keyword == "ledger" && called) {
            scenario.ledger.push_back(canonical(rest));
        } else if (const auto row = given_row(keyword, rest)) {
            scenario.given.push_back(*row);
        } else if (keyword == "project") {
            take_project(scenario, rest, line);
        } else if (keyword == "column") {
            take_column(scenario, rest);
        } else if (keyword == "empty") {
            scenario.without_rows = rest;
        } else if (keyword == "line") {
            take_line(scenario, rest);
        } else if (keyword == "call") {
            take_call(scenario, rest);
        } else if (keyword == "trace") {
            if (rest != "recordsets" && rest != "reads") throw std::runtime_error("trace recordsets or reads expected");
            scenario.detail = rest == "reads" ? Detail::reads : Detail::recordsets;
        } else if (is_event(keyword)) {
            if (!called) throw std::runtime_error("an event before the call");
            scenario.trace.push_back(line.substr(0, keyword.size()) + (rest.empty() ? "" : " " + rest));
        } else {
            throw std::runtime_error("unknown keyword " + keyword);
        }
    }

    static bool is_event(const std::string& keyword) {
        static constexpr const char* events[] = {"open",  "execute", "message", "prepare",
                                                 "close", "next",    "release", "read"};
        return std::ranges::find(events, keyword) != std::end(events);
    }

    /// The row that a line gives to a database; nothing for a line of another kind.
    static std::optional<TableRow> given_row(const std::string& keyword, const std::string& rest) {
        if (keyword == "unit") return row_with("GoodsUnit", {"id", "Unit", "UnitConverter"}, words_of(rest));
        if (keyword == "goods") return row_with("Goods", {"ID", "Class", "GCZYCPFlag"}, words_of(rest));
        if (keyword == "ledger") return ledger_row(rest);
        if (keyword != "row") return std::nullopt;
        const std::vector<Word> words = words_of(rest);
        if (words.empty()) throw std::runtime_error("row TABLE COLUMN=VALUE … expected");
        TableRow row{words[0].text, {}};
        for (std::size_t i = 1; i < words.size(); ++i) {
            const auto [name, value] = assignment(words[i]);
            row.columns.emplace_back(name, text_value(value));
        }
        return row;
    }

    /// A row or an event of the project-wide connection.
    static void take_project(Scenario& scenario, const std::string& rest, const std::string& line) {
        scenario.has_project = true;
        const std::size_t end = rest.find(' ');
        const std::string keyword = rest.substr(0, end);
        const std::string behind = end == std::string::npos ? "" : rest.substr(rest.find_first_not_of(' ', end));
        const bool called = !scenario.member.empty();
        if (called && keyword == "ledger") {
            scenario.project_ledger.push_back(canonical(behind));
        } else if (called && is_event(keyword)) {
            scenario.trace.push_back("project " + keyword + (behind.empty() ? "" : " " + behind));
        } else if (const auto row = given_row(keyword, behind); row && !called) {
            scenario.given_to_project.push_back(*row);
        } else {
            throw std::runtime_error("a row or an event expected in " + line);
        }
    }

    static void take_column(Scenario& scenario, const std::string& rest) {
        const std::vector<Word> words = words_of(rest);
        if (words.size() != 3) throw std::runtime_error("column TABLE NAME TYPE expected");
        scenario.columns.push_back({words[0].text, words[1].text, words[2].text});
    }

    static void take_line(Scenario& scenario, const std::string& rest) {
        scenario.has_line = true;
        for (const Word& word : words_of(rest)) {
            const auto [name, value] = assignment(word);
            scenario.line[name] = property_value(name, value);
        }
    }

    static void take_call(Scenario& scenario, const std::string& rest) {
        const std::vector<Word> words = words_of(rest);
        if (words.size() < 3 || words[words.size() - 2].text != "->") {
            throw std::runtime_error("call MEMBER [ARGUMENT …] -> RESULT expected");
        }
        scenario.member = words[0].text;
        for (std::size_t i = 1; i + 2 < words.size(); ++i) scenario.arguments.push_back(words[i].text);
        scenario.result = std::stoi(words.back().text);
    }

    std::string path_;
    std::string name_;
    int line_number_ = 0;
    std::vector<Scenario> scenarios_;
};

/// A given value as it stands in the insert: numbers bare where the column is numeric, so that no engine need convert.
Text literal_of(const std::string& column, const Variant& value) {
    static constexpr const char* numeric[] = {"UnitConverter", "GCZYCPFlag", "Status",      "InQty",
                                              "OutQty",        "CurrentQty", "Actualqty",   "Qty",
                                              "UQty",          "Goodstutas", "GoodsStatus", "ReferFlag"};
    if (std::ranges::find(numeric, column) == std::end(numeric) || value.is<Null>()) return GetSqlVal(value);
    return double_from_text(to_text(value)) ? to_text(value) : GetSqlVal(value);
}

}  // namespace

std::string Scenario::where() const { return file + ":" + std::to_string(line_number) + " " + title; }

std::vector<Scenario> read_scenarios(const std::string& path) { return Reader(path).read(); }

std::vector<Scenario> read_scenario_folder(const std::string& path) {
    std::vector<std::string> files;
    for (const auto& entry : std::filesystem::directory_iterator(path)) {
        if (entry.path().extension() == ".txt") files.push_back(entry.path().string());
    }
    std::ranges::sort(files);
    std::vector<Scenario> all;
    for (const std::string& file : files) std::ranges::move(read_scenarios(file), std::back_inserter(all));
    return all;
}

Text insert_text(const TableRow& row) {
    Text names;
    Text values;
    for (const auto& [column, value] : row.columns) {
        if (!names.empty()) names += u",", values += u",";
        names += from_utf8(column);
        values += literal_of(column, value);
    }
    return u"insert into " + from_utf8(row.table) + u"(" + names + u") values(" + values + u")";
}

std::string ledger_row_text(Recordset& ledger) {
    const auto word = [&](const char16_t* column) { return quoted_word(ledger.field(column)); };
    std::string text;
    for (const char* column : ledger_columns) text += word(from_utf8(column).c_str()) + " ";
    text += "| in " + word(u"InQty") + " out " + word(u"OutQty") + " current " + word(u"CurrentQty");
    return text + " | " + word(u"Class") + " " + word(u"Unit") + " " + word(u"Remarks");
}

std::vector<std::string> read_ledger(Connection& connection) {
    std::vector<std::string> rows;
    const RecordsetVariable ledger = connection.execute(u"select * from Inventory");
    for (; !ledger->eof(); ledger->move_next()) rows.push_back(ledger_row_text(*ledger));
    std::ranges::sort(rows);
    return rows;
}

std::string joined(const std::vector<std::string>& lines) {
    std::string text;
    for (const std::string& line : lines) text += "\n  " + line;
    return text;
}

bool matches(const std::string& expected_row, const std::string& actual_row) {
    const bool described = std::ranges::count(expected_row, '|') == 2;
    return described ? expected_row == actual_row : actual_row.starts_with(expected_row + " |");
}

}  // namespace vantlo::test
