#include "bookkeeping/bill_goods.h"

#include <set>

#include "dataaccess/sql_literals.h"

namespace vantlo {

std::vector<Text> goods_of(std::span<const Bill* const> bills) {
    std::set<Text> goods;
    const auto add = [&](const Record& record) {
        const Variant* const value = record.find(u"Gid");
        if (value != nullptr && !value->is<Null>()) goods.insert(Text(trim_blanks(to_text(*value))));
    };
    for (const Bill* const bill : bills) {
        add(bill->header);
        for (const Record& line : bill->lines) add(line);
    }
    return {goods.begin(), goods.end()};
}

Text literal_list(std::span<const Text> texts) {
    Text list;
    for (const Text& text : texts) list += (list.empty() ? u"" : u",") + GetSqlVal(text);
    return list;
}

}  // namespace vantlo
