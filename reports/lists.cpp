#include "reports/lists.h"

#include <algorithm>
#include <set>

#include "dataaccess/sql_literals.h"

namespace vantlo {

namespace {

constexpr std::string_view warehouse_fields[] = {"receiver", "supplier", "warehouse", "status_warehouse"};
constexpr std::string_view goods_fields[] = {"goods"};
constexpr std::string_view text_fields[] = {"remarks"};

/// The columns of a table that hold one of the fields, as a query names them.
std::vector<Text> columns_of(const BillTable& table, std::span<const std::string_view> fields, const Text& alias) {
    std::vector<Text> columns;
    for (const BillColumn& column : table.columns) {
        if (std::ranges::count(fields, column.field) > 0) columns.push_back(alias + u"." + column.column);
    }
    return columns;
}

/// ` and (...)` of conditions that begin with ` and `; empty if all are.
Text and_one_of(const std::vector<Text>& conditions) {
    Text any;
    for (const Text& condition : conditions) {
        if (!condition.empty())
            any += (any.empty() ? u" and (" : u" or ") + condition.substr(TextView(u" and ").size());
    }
    return any.empty() ? any : any + u")";
}

/// The condition that header or a line has a match in one of the fields.
template <typename ConditionOf>
Text and_anywhere(const BillKind& kind, std::span<const std::string_view> fields, const ConditionOf& condition_of) {
    std::vector<Text> in_header, in_line;
    for (const Text& column : columns_of(*kind.header, fields, u"h")) in_header.push_back(condition_of(column));
    for (const Text& column : columns_of(*kind.lines, fields, u"l")) in_line.push_back(condition_of(column));
    const Text of_line = and_one_of(in_line);
    if (!of_line.empty()) {
        in_header.push_back(Text(u" and exists (select * from ") + kind.lines->name + u" l where l." +
                            kind.lines->id_column + u"=h." + kind.header->id_column + of_line + u")");
    }
    return and_one_of(in_header);
}

Text and_is_kind(const std::vector<const BillKind*>& kinds) {
    std::vector<Text> names;
    for (const BillKind* kind : kinds) names.push_back(from_utf8(kind->name));
    return and_matches(u"h.Kind", names);
}

Text select_bills(const BillKind& kind, const BillsWanted& wanted) {
    const Text id = u"h." + Text(kind.header->id_column);
    const auto matching = [](const std::vector<Text>& patterns) {
        return [&patterns](const Text& column) { return and_matches(column, patterns); };
    };
    Text select = u"select h.BillDate as BillDate,h.Kind as Kind," + id + u" as BillId,(select count(*) from " +
                  kind.lines->name + u" l where l." + kind.lines->id_column + u"=" + id +
                  u") as LineCount,h.Remarks as Remarks from " + kind.header->name + u" h where 1=1";
    select += and_is_kind(wanted.kinds) + and_within(u"h.BillDate", wanted.period) + and_matches(id, wanted.ids);
    if (!wanted.goods.empty()) select += and_anywhere(kind, goods_fields, matching(wanted.goods));
    if (!wanted.warehouses.empty()) select += and_anywhere(kind, warehouse_fields, matching(wanted.warehouses));
    if (!wanted.text.empty()) {
        const auto contains = [&](const Text& column) { return and_contains({column}, wanted.text); };
        select += and_one_of({contains(id), and_anywhere(kind, text_fields, contains)});
    }
    return select;
}

}  // namespace

Listing list_bills(NativeConnection& database, const BillsWanted& wanted) {
    Listing bills{{{"date", CellType::time},
                   {"kind", CellType::text},
                   {"bill", CellType::text},
                   {"lines", CellType::number},
                   {"remarks", CellType::text}},
                  {}};
    std::set<const BillTable*> read;
    for (const BillKind& kind : bill_kinds()) {
        const bool is_wanted = wanted.kinds.empty() || std::ranges::any_of(wanted.kinds, [&](const BillKind* other) {
                                   return other->header == kind.header;
                               });
        if (!is_wanted || !read.insert(kind.header).second) continue;
        const RecordsetVariable rows = database.execute(select_bills(kind, wanted));
        for (; !rows->eof(); rows->move_next()) {
            bills.rows.push_back({rows->field(u"BillDate"), rows->field(u"Kind"), rows->field(u"BillId"),
                                  rows->field(u"LineCount"), rows->field(u"Remarks")});
        }
    }
    bills.sort_by(2, false);
    bills.sort_by(0, false);
    return bills;
}

Listing list_master_rows(NativeConnection& database, const MasterTable& table,
                         const std::vector<std::vector<Text>>& patterns, const Text& text) {
    Listing listing;
    Text columns, condition, order;
    std::vector<Text> texts;
    for (std::size_t i = 0; i < table.columns.size(); ++i) {
        const BillColumn& column = table.columns[i];
        listing.columns.push_back({column.field, column.type == ColumnType::text ? CellType::text : CellType::number});
        columns += (i == 0 ? u"" : u",") + Text(column.column);
        if (column.type == ColumnType::text) texts.emplace_back(column.column);
        if (i < table.keys) order += (i == 0 ? u" order by " : u",") + Text(column.column);
        if (i < patterns.size()) condition += and_matches(column.column, patterns[i]);
    }
    condition += and_contains(texts, text);
    const RecordsetVariable rows =
        database.execute(u"select " + columns + u" from " + table.name + u" where 1=1" + condition + order);
    for (; !rows->eof(); rows->move_next()) {
        std::vector<Variant>& row = listing.rows.emplace_back();
        for (const BillColumn& column : table.columns) row.push_back(rows->field(column.column));
    }
    return listing;
}

}  // namespace vantlo
