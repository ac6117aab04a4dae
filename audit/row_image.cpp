#include "audit/row_image.h"

#include <algorithm>
#include <array>
#include <iterator>
#include <nlohmann/json.hpp>

#include "audit/ledger_entry.h"
#include "audit/ledger_table.h"
#include "bookkeeping/identifiers.h"

namespace vantlo {

namespace {

/// How an engine makes the literal of a column's value, of which `{}` is the name; for columns whose type has one of the
/// words in it, or for all others.
struct LiteralRule {
    std::string_view dialect;
    std::string_view types;  ///< with a blank around each; empty for all others
    const char16_t* expression;
};

// clang-format off
constexpr LiteralRule rules[] = {
    // quote() stops at a NUL, and has no number for an infinite one.
    {"sqlite", "",
     u"case when typeof({})='text' and instr({},char(0))>0 then 'cast(x''' || hex({}) || ''' as text)' "
     u"when typeof({})='real' and abs({})=9e999 then case when {}<0 then '-9e999' else '9e999' end "
     u"when {} is null then 'null' else quote({}) end"},
    {"postgresql", "", u"coalesce(quote_literal({}::text),'null')"},
    {"mariadb", " binary varbinary tinyblob blob mediumblob longblob bit ", u"coalesce(concat('x''',hex({}),''''),'null')"},
    {"mariadb", " float ", u"coalesce(convert(cast({} as double) using utf8mb4),'null')"},
    {"mariadb", "", u"coalesce(concat('''',replace(convert({} using utf8mb4),'''',''''''),''''),'null')"},
    {"sqlserver", " binary varbinary ", u"coalesce(convert(varchar(max),{},1),'null')"},
    {"sqlserver", " real float ", u"coalesce(convert(varchar(40),{},3),'null')"},
    {"sqlserver", " money smallmoney ", u"coalesce(convert(varchar(40),{},2),'null')"},
    {"sqlserver", " datetime smalldatetime date datetime2 ", u"coalesce(''''+convert(varchar(40),{},126)+'''','null')"},
    {"sqlserver", "", u"coalesce(N'N'''+replace(convert(nvarchar(max),{}),N'''',N'''''')+N'''',N'null')"},
};
// clang-format on

constexpr std::array<TextView, 11> own_columns = {u"WID",  u"GId",   u"Model1", u"Model2",     u"Status", u"Class",
                                                  u"Unit", u"InQty", u"OutQty", u"CurrentQty", u"Remarks"};

bool is_own(std::string_view column) {
    return std::ranges::any_of(own_columns, [&](TextView own) { return equal_ignoring_case(own, from_utf8(column)); });
}

/// A host's further column can have any name.
Text quoted_name(const Dialect& dialect, const std::string& name) {
    if (is_own(name)) return from_utf8(name);
    // Its double quotes depend on a setting of the session.
    if (dialect.name == "sqlserver") return u"[" + replace_all(from_utf8(name), u']', u"]]") + u"]";
    return quoted_identifier(name, dialect);
}

Text literal_expression(const Dialect& dialect, const LedgerColumn& column) {
    const auto* const rule = std::ranges::find_if(rules, [&](const LiteralRule& row) {
        return row.dialect == dialect.name &&
               (row.types.empty() || row.types.find(" " + column.type + " ") != std::string_view::npos);
    });
    const Text name = quoted_name(dialect, column.name);
    Text expression;
    for (TextView rest = rule->expression; !rest.empty();) {
        const std::size_t place = rest.find(u"{}");
        expression += Text(rest.substr(0, place));
        if (place == TextView::npos) break;
        expression += name;
        rest.remove_prefix(place + 2);
    }
    return expression;
}

/// The literal of a value as the adapter read it.
Text literal_of(const Variant& value) {
    if (value.is<Null>()) return u"null";
    return value.is<Text>() ? exact_literal(to_text(value)) : to_text(value);
}

}  // namespace

const Text* RowImage::literal(TextView column) const {
    const auto found = std::ranges::find_if(
        fields, [&](const Field& field) { return equal_ignoring_case(from_utf8(field.column), column); });
    return found == fields.end() ? nullptr : &found->literal;
}

std::vector<TextView> differing_columns(const RowImage& left, const RowImage& right) {
    std::vector<TextView> columns;
    for (const TextView column : own_columns) {
        const Text* const one = left.literal(column);
        const Text* const other = right.literal(column);
        if (one == nullptr || other == nullptr ? one != other : *one != *other) columns.push_back(column);
    }
    return columns;
}

bool are_same_rows(const std::vector<RowImage>& left, const std::vector<RowImage>& right) {
    return std::ranges::is_permutation(
        left, right, [](const RowImage& one, const RowImage& other) { return differing_columns(one, other).empty(); });
}

Text condition_of(const RowImage& image) {
    Text condition;
    for (const char16_t* const column : key_columns) {
        const Text* const literal = image.literal(column);
        const bool is_null = literal == nullptr || *literal == u"null";
        condition += (condition.empty() ? Text() : Text(u" and ")) + column + (is_null ? u" is null" : u"=" + *literal);
    }
    return condition;
}

Text text_of(const RowImage& image) {
    nlohmann::ordered_json object = nlohmann::ordered_json::object();
    for (const auto& [column, literal] : image.fields) object[column] = to_utf8(literal);
    return from_utf8(object.dump());
}

std::optional<RowImage> image_from(TextView text) {
    const auto object = nlohmann::ordered_json::parse(to_utf8(text), nullptr, false);
    if (!object.is_object()) return std::nullopt;
    RowImage image;
    for (const auto& [column, literal] : object.items()) {
        if (!literal.is_string()) return std::nullopt;
        image.fields.push_back({column, from_utf8(literal.get<std::string>())});
    }
    return image;
}

RowImages::RowImages(NativeConnection& database) : database_(database) {
    const LedgerTable table = read_ledger_table(database);
    for (const LedgerColumn& column : table.columns) {
        columns_.push_back({column.name, literal_expression(database.dialect(), column)});
    }
    if (!columns_.empty()) return;
    for (const TextView column : own_columns) columns_.push_back({to_utf8(column), {}});
}

std::vector<RowImage> RowImages::of(const Text& condition) const {
    Text list;
    for (const Column& column : columns_) {
        const Text name = from_utf8("c" + std::to_string(&column - columns_.data()));
        if (column.expression.empty()) {
            list = u"*";
        } else {
            list += (list.empty() ? u"" : u",") + column.expression + u" as " + name;
        }
    }
    const RecordsetVariable rows = database_.execute(u"select " + list + u" from Inventory where " + condition);
    std::vector<RowImage> images;
    for (; !rows->eof(); rows->move_next()) {
        RowImage& image = images.emplace_back();
        for (const Column& column : columns_) {
            const bool is_made = !column.expression.empty();
            const Text name = from_utf8(is_made ? "c" + std::to_string(&column - columns_.data()) : column.name);
            const Variant value = rows->field(name);
            image.fields.push_back({column.name, is_made ? to_text(value) : literal_of(value)});
        }
    }
    std::ranges::sort(images);
    return images;
}

Text RowImages::insertion_of(const RowImage& image) const {
    const Dialect& dialect = database_.dialect();
    Text columns;
    Text values;
    for (const auto& [column, literal] : image.fields) {
        columns += (columns.empty() ? u"" : u",") + quoted_name(dialect, column);
        values += (values.empty() ? u"" : u",") + literal;
    }
    // Without it PostgreSQL refuses the values of an identity column.
    const Text overriding = dialect.name == "postgresql" ? u" overriding system value" : u"";
    return u"insert into Inventory(" + columns + u")" + overriding + u" values(" + values + u")";
}

Text RowImages::update_of(const RowImage& from, const RowImage& to) {
    Text assignments;
    for (const TextView column : differing_columns(from, to)) {
        const Text* const literal = to.literal(column);
        assignments += (assignments.empty() ? u"" : u",") + Text(column) + u"=" + (literal ? *literal : Text(u"null"));
    }
    if (assignments.empty()) return {};
    return u"update Inventory set " + assignments + u" where " + condition_of(from);
}

}  // namespace vantlo
