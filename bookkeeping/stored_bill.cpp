#include "bookkeeping/stored_bill.h"

#include <algorithm>

#include "automation/number_text.h"
#include "automation/text_value.h"
#include "dataaccess/sql_literals.h"

namespace vantlo {

namespace {

Text text_of(const Variant* value) { return value == nullptr ? Text() : Text(trim_blanks(text_or_empty(*value))); }

bool is_same(const BillColumn& column, const Record& stored, const Record& given) {
    const Variant* const before = stored.find(column.column);
    const Variant* const now = given.find(column.column);
    if (column.type == ColumnType::text) return text_of(before) == text_of(now);
    const bool is_null_before = before == nullptr || before->is<Null>();
    const bool is_null_now = now == nullptr || now->is<Null>();
    if (is_null_before || is_null_now) return is_null_before == is_null_now;
    if (column.type != ColumnType::single) return to_double(*before) == to_double(*now);
    return number_text(static_cast<float>(to_double(*before))) == number_text(static_cast<float>(to_double(*now)));
}

bool are_same(std::span<const BillColumn> columns, const Record& stored, const Record& given) {
    return std::ranges::all_of(columns, [&](const BillColumn& column) { return is_same(column, stored, given); });
}

}  // namespace

Text where_bill(const BillTable& table, const Text& id) {
    return Text(u" where ") + table.id_column + u"=" + GetSqlVal(id);
}

std::optional<Bill> stored_bill(Connection& database, const BillKind& kind, const Text& id) {
    const RecordsetVariable header =
        database.execute(Text(u"select * from ") + kind.header->name + where_bill(*kind.header, id));
    if (header->eof() || to_text(header->field(u"Kind")) != from_utf8(kind.name)) return std::nullopt;
    Bill bill{&kind, id, read_row(*header, kind.header->columns), {}};
    const RecordsetVariable rows = database.execute(Text(u"select * from ") + kind.lines->name +
                                                    where_bill(*kind.lines, id) + u" order by ItemNo");
    for (; !rows->eof(); rows->move_next()) bill.lines.push_back(read_row(*rows, kind.lines->columns));
    return bill;
}

bool is_stored_as(const Bill& stored, const Bill& bill) {
    return are_same(bill.kind->header->columns, stored.header, bill.header) &&
           std::ranges::equal(stored.lines, bill.lines, [&](const Record& before, const Record& now) {
               return are_same(bill.kind->lines->columns, before, now);
           });
}

}  // namespace vantlo
