#include "bookkeeping/rows_named.h"

#include <algorithm>
#include <iterator>

#include "bookkeeping/bill_goods.h"

namespace vantlo {

namespace {

constexpr std::size_t names_a_statement = 200;

}  // namespace

Text column_list(std::span<const BillColumn> columns) {
    Text list;
    for (const BillColumn& column : columns) list += (list.empty() ? u"" : u",") + Text(column.column);
    return list;
}

std::vector<std::vector<Variant>> rows_named(NativeConnection& database, const Text& table, const Text& columns,
                                             const Text& key, std::span<const Text> names) {
    std::vector<std::vector<Variant>> rows;
    const Text select = u"select " + columns + u" from " + table + u" where " + key + u" in (";
    while (!names.empty()) {
        const auto chunk = names.first(std::min(names.size(), names_a_statement));
        names = names.subspan(chunk.size());
        std::ranges::move(database.run(select + literal_list(chunk) + u")").rows, std::back_inserter(rows));
    }
    return rows;
}

}  // namespace vantlo
