#include "bookkeeping/shop_description.h"

#include <algorithm>
#include <nlohmann/json.hpp>
#include <set>

#include "automation/message.h"
#include "bills/bill.h"
#include "bills/task_error.h"
#include "bookkeeping/find_table.h"
#include "bookkeeping/identifiers.h"
#include "dataaccess/sql_literals.h"

namespace vantlo {

namespace words {

// clang-format off
constexpr Message not_json          = {"不是有效的 JSON：{}", "this is no valid JSON: {}"};
constexpr Message not_described     = {"{} 缺少 {}", "{} lacks {}"};
constexpr Message not_of_form       = {"{} 应为{}", "{} has to be {}"};
constexpr Message a_list            = {"非空的列表", "a list that is not empty"};
constexpr Message a_text            = {"文字", "a text"};
constexpr Message a_column          = {"列名、null 或 {\"value\": 常数}", "the name of a column, null, or {\"value\": CONSTANT}"};
constexpr Message to_fill_in        = {"{} 还是 \"?\"，须填写", "{} is still \"?\" and has to be filled in"};
constexpr Message unknown_name      = {"{} 没有 {} 这一项", "{} does not take {}"};
constexpr Message no_such_kind      = {"{}：没有单据种类 {}", "{}: there is no kind of bill called {}"};
constexpr Message kind_elsewhere    = {"{}：单据种类 {} 与前面的种类不用同样的列，须另列一组", "{}: {} has other columns than the kinds before it, and needs a group of its own"};
constexpr Message kind_twice        = {"{}：单据种类 {} 已描述过", "{}: {} is described already"};
constexpr Message no_condition      = {"{} 不是单个条件：不可有注释、分号、反斜杠和 $，引号和括号须成对", "{} is not one condition: no comment, semicolon, backslash or $, and quotes and parentheses in pairs"};
// clang-format on

}  // namespace words

namespace {

using nlohmann::json;

constexpr auto to_be_filled_in = "?";

Text literal_of(const json& value) {
    if (value.is_string()) return GetSqlVal(from_utf8(value.get_ref<const std::string&>()));
    return from_utf8(value.dump());
}

/// Reads a description, and collects what is wrong with it.
class Reader {
public:
    Reader(const Dialect& dialect, Language language) : dialect_(dialect), language_(language) {}

    std::vector<BillSource> read(const std::string& content) {
        std::vector<BillSource> sources;
        try {
            const json document = json::parse(content);
            look_for_unknown(document, "", {"bills"});
            for (const auto& [place, group] : list_in(document, "", "bills")) {
                if (std::optional<BillSource> source = read_group(group, place)) sources.push_back(*std::move(source));
            }
        } catch (const json::exception& failure) {
            note(words::not_json, failure.what());
        }
        if (!faults_.empty()) throw TaskError(Reason::bad_input, faults_);
        return sources;
    }

private:
    struct Element {
        std::string place;
        const json& value;
    };

    struct Kinds {
        const BillKind* first = nullptr;
        Text condition;  ///< of any of them
        Text name;       ///< an expression
    };

    template <typename... Values>
    void note(const Message& wording, const Values&... values) {
        if (!faults_.empty()) faults_ += '\n';
        faults_ += say(language_, wording, values...);
    }

    void look_for_unknown(const json& object, const std::string& place, const std::set<std::string>& known) {
        if (!object.is_object()) return;
        for (const auto& [name, value] : object.items()) {
            if (!known.contains(name) && name != "note") note(words::unknown_name, place.empty() ? "/" : place, name);
        }
    }

    const json* member_of(const json& object, const std::string& place, const char* name) {
        if (object.is_object() && object.contains(name)) return &object.at(name);
        note(words::not_described, place.empty() ? "/" : place, name);
        return nullptr;
    }

    std::vector<Element> list_in(const json& object, const std::string& place, const char* name) {
        std::vector<Element> elements;
        const json* const list = member_of(object, place, name);
        if (list == nullptr) return elements;
        const std::string place_of_list = place + "/" + name;
        if (!list->is_array() || list->empty()) {
            note(words::not_of_form, place_of_list, words::a_list.in(language_));
            return elements;
        }
        for (const json& element : *list) {
            elements.push_back({place_of_list + "/" + std::to_string(elements.size() + 1), element});
        }
        return elements;
    }

    /// A text that is there, filled in.
    std::optional<std::string> text_in(const json& object, const std::string& place, const char* name) {
        const json* const value = member_of(object, place, name);
        if (value == nullptr) return std::nullopt;
        if (*value == to_be_filled_in) {
            note(words::to_fill_in, place + "/" + name);
        } else if (!value->is_string() || value->get_ref<const std::string&>().empty()) {
            note(words::not_of_form, place + "/" + name, words::a_text.in(language_));
        } else {
            return value->get<std::string>();
        }
        return std::nullopt;
    }

    std::optional<BillSource> read_group(const json& group, const std::string& place) {
        look_for_unknown(group, place, {"kinds", "header", "lines"});
        const Kinds kinds = read_kinds(group, place);
        const json* const header = member_of(group, place, "header");
        const json* const lines = member_of(group, place, "lines");
        if (kinds.first == nullptr || header == nullptr || lines == nullptr) return std::nullopt;
        const BillTable& header_table = *kinds.first->header;
        const BillTable& lines_table = *kinds.first->lines;
        const Text header_name = table_in(*header, place + "/header");
        const Text lines_name = table_in(*lines, place + "/lines");
        const Text id = key_in(*header, place + "/header", header_table.id_column);
        const Text line_id = key_in(*lines, place + "/lines", lines_table.id_column);
        const Text number = has_no_number(*lines) ? Text(u"0") : key_in(*lines, place + "/lines", u"ItemNo");
        const Text header_columns = columns_in(*header, place + "/header", header_table, {});
        const Text line_columns = columns_in(*lines, place + "/lines", lines_table, "ItemNo");
        const Text from = u" from " + header_name + u" where " + kinds.condition;
        return BillSource{&header_table, &lines_table,
                          u"select " + id + u" as " + header_table.id_column + u"," + kinds.name + u" as Kind" +
                              header_columns + from,
                          u"select " + line_id + u" as " + lines_table.id_column + u"," + number + u" as ItemNo" +
                              line_columns + u" from " + lines_name + u" where " + line_id + u" in (select " + id +
                              from + u") order by 2"};
    }

    Kinds read_kinds(const json& group, const std::string& place) {
        Kinds kinds;
        for (const auto& [place_of_kind, description] : list_in(group, place, "kinds")) {
            look_for_unknown(description, place_of_kind, {"kind", "where"});
            const std::optional<std::string> name = text_in(description, place_of_kind, "kind");
            const std::optional<std::string> where = text_in(description, place_of_kind, "where");
            if (where && !is_one_condition(*where)) note(words::no_condition, place_of_kind + "/where");
            if (!name || !where) continue;
            const BillKind* const kind = find_bill_kind(*name);
            if (kind == nullptr) {
                note(words::no_such_kind, place_of_kind, *name);
                continue;
            }
            if (kinds.first == nullptr) kinds.first = kind;
            if (kind->header != kinds.first->header) note(words::kind_elsewhere, place_of_kind, *name);
            if (!described_.insert(kind).second) note(words::kind_twice, place_of_kind, *name);
            const Text condition = u"(" + from_utf8(*where) + u")";
            kinds.condition += (kinds.condition.empty() ? u"" : u" or ") + condition;
            kinds.name += u" when " + condition + u" then " + GetSqlVal(from_utf8(*name));
        }
        kinds.condition = u"(" + kinds.condition + u")";
        kinds.name = u"case" + kinds.name + u" end";
        return kinds;
    }

    Text table_in(const json& description, const std::string& place) {
        look_for_unknown(description, place, {"table", "columns"});
        const std::optional<std::string> name = text_in(description, place, "table");
        return name ? quoted_identifier(*name, dialect_) : Text();
    }

    /// A column that a row is told by.
    Text key_in(const json& description, const std::string& place, const char16_t* column) {
        const json* const columns = member_of(description, place, "columns");
        if (columns == nullptr) return {};
        const std::optional<std::string> name = text_in(*columns, place + "/columns", to_utf8(column).c_str());
        return name ? quoted_identifier(*name, dialect_) : Text();
    }

    /// Whether the description says that lines are not numbered.
    static bool has_no_number(const json& lines) {
        return lines.is_object() && lines.contains("columns") && lines.at("columns").is_object() &&
               lines.at("columns").contains("ItemNo") && lines.at("columns").at("ItemNo").is_null();
    }

    /// The columns of a table, each behind a comma. `number` is that of its line number.
    Text columns_in(const json& description, const std::string& place, const BillTable& table,
                    const std::string& number) {
        if (!description.is_object() || !description.contains("columns")) return {};
        const json& columns = description.at("columns");
        const std::string place_of_columns = place + "/columns";
        std::set<std::string> known{to_utf8(table.id_column), number};
        Text text;
        for (const BillColumn& column : table.columns) {
            const std::string name = to_utf8(column.column);
            known.insert(name);
            const json* const described = member_of(columns, place_of_columns, name.c_str());
            if (described == nullptr) continue;
            text += u"," + expression_for(*described, place_of_columns + "/" + name, column) + u" as " + column.column;
        }
        look_for_unknown(columns, place_of_columns, known);
        return text;
    }

    Text expression_for(const json& described, const std::string& place, const BillColumn& column) {
        if (described.is_null()) return GetSqlVal(empty_value(column.type));
        if (described == to_be_filled_in) {
            note(words::to_fill_in, place);
        } else if (described.is_string() && !described.get_ref<const std::string&>().empty()) {
            return quoted_identifier(described.get_ref<const std::string&>(), dialect_);
        } else if (described.is_object() && described.size() == 1 && described.contains("value") &&
                   (described.at("value").is_string() || described.at("value").is_number())) {
            return literal_of(described.at("value"));
        } else {
            note(words::not_of_form, place, words::a_column.in(language_));
        }
        return {};
    }

    const Dialect& dialect_;
    Language language_;
    std::string faults_;
    std::set<const BillKind*> described_;
};

/// The tables and columns of a database, of which an engine without a catalog tells nothing.
class Catalog {
public:
    explicit Catalog(NativeConnection& database) : query_(database.dialect().columns_query) {
        if (query_ == nullptr) return;
        const RecordsetVariable rows = database.execute(query_);
        for (; !rows->eof(); rows->move_next()) {
            columns_.emplace_back(to_text(rows->field(u"T")), to_text(rows->field(u"C")));
        }
    }

    [[nodiscard]] bool is_known() const { return query_ != nullptr; }

    /// Names are compared without regard to case.
    [[nodiscard]] bool has(TextView table, TextView column) const {
        return std::ranges::any_of(columns_, [&](const std::pair<Text, Text>& there) {
            return equal_ignoring_case(there.first, table) && equal_ignoring_case(there.second, column);
        });
    }

private:
    const char16_t* query_;
    std::vector<std::pair<Text, Text>> columns_;
};

std::optional<std::string> description_in(NativeConnection& database, const Catalog& catalog) {
    if (!catalog.has(u"ShopDescription", u"Content")) return std::nullopt;
    const RecordsetVariable rows = database.execute(u"select Content from ShopDescription");
    if (rows->eof()) return std::nullopt;
    return to_utf8(to_text(rows->field(u"Content")));
}

constexpr TextView forgetting = u"delete from ShopDescription";

Text keeping(const std::string& content) {
    return u"insert into ShopDescription(Content) values(" + GetSqlVal(from_utf8(content)) + u")";
}

}  // namespace

bool is_one_condition(std::string_view text) {
    int depth = 0;
    char quote = 0;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const char character = text[i];
        if (character == '\\' || (static_cast<unsigned char>(character) < ' ')) return false;
        if (quote != 0) {
            if (character == quote) quote = 0;
            continue;
        }
        if (character == '\'' || character == '"' || character == '`') quote = character;
        const std::string_view pair = text.substr(i, 2);
        if (pair == "--" || pair == "/*" || character == ';' || character == '#' || character == '$') return false;
        if (character == '(') ++depth;
        if (character == ')' && --depth < 0) return false;
    }
    return quote == 0 && depth == 0;
}

std::vector<BillSource> own_bill_sources() {
    std::vector<BillSource> sources;
    for (const BillKind& kind : bill_kinds()) {
        if (std::ranges::find(sources, kind.header, &BillSource::header) != sources.end()) continue;
        sources.push_back({kind.header, kind.lines, Text(u"select * from ") + kind.header->name,
                           Text(u"select * from ") + kind.lines->name + u" order by ItemNo"});
    }
    return sources;
}

std::vector<BillSource> described_bill_sources(const std::string& content, const Dialect& dialect, Language language) {
    return Reader(dialect, language).read(content);
}

std::optional<std::string> kept_description(NativeConnection& database) {
    return description_in(database, Catalog(database));
}

std::string script_keeping(const std::string& content) {
    return to_utf8(forgetting) + ";\n" + to_utf8(keeping(content)) + ";\n";
}

void keep_description(NativeConnection& database, const std::string& content) {
    database.begin();
    try {
        database.run(forgetting);
        database.run(keeping(content));
        database.commit();
    } catch (...) {
        database.roll_back();
        throw;
    }
}

std::vector<BillSource> bill_sources(NativeConnection& database, Language language) {
    const Catalog catalog(database);
    // Some catalogs hide from an account what it has no right to: looking tells that from what is not there.
    if (catalog.is_known() && !catalog.has(u"ShopDescription", u"Content")) find_table(database, "ShopDescription");
    if (const std::optional<std::string> content = description_in(database, catalog)) {
        return described_bill_sources(*content, database.dialect(), language);
    }
    std::vector<BillSource> sources = own_bill_sources();
    const auto has_kinds = [&](const BillSource& source) {
        if (!catalog.is_known() || catalog.has(source.header->name, u"Kind")) return true;
        find_table(database, to_utf8(source.header->name));
        return false;
    };
    if (!std::ranges::all_of(sources, has_kinds)) sources.clear();
    return sources;
}

}  // namespace vantlo
