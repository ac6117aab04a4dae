#include "bookkeeping/posted_quantities.h"

#include <algorithm>

#include "automation/text_value.h"
#include "bookkeeping/bill_goods.h"
#include "dataaccess/sql_literals.h"

namespace vantlo {

namespace {

/// How an engine tells whether the journal's table is there and may be read: by a row.
struct Privilege {
    std::string_view dialect;
    const char16_t* select;
};

// clang-format off
constexpr Privilege privileges[] = {
    {"sqlite",     u"select name from sqlite_schema where name = 'StockMovement'"},
    {"postgresql", u"select 1 as n from pg_class where oid = to_regclass('StockMovement') "
                   u"and has_table_privilege(oid, 'select')"},
    {"mariadb",    u"select column_name as n from information_schema.columns where table_schema = database() "
                   u"and table_name = 'StockMovement' and column_name = 'BillId' and privileges like '%select%'"},
    {"sqlserver",  u"select 1 as n where has_perms_by_name('StockMovement', 'object', 'select') = 1"},
};
// clang-format on

bool may_read_journal(NativeConnection& database) {
    const auto* const privilege = std::ranges::find(privileges, database.dialect().name, &Privilege::dialect);
    return privilege != std::end(privileges) && !database.run(privilege->select).rows.empty();
}

}  // namespace

std::vector<PostedQuantity> posted_quantities(NativeConnection& database, const Bill& bill) {
    const Bill* const bills[] = {&bill};
    const Text goods = literal_list(goods_of(bills));
    if (goods.empty() || !may_read_journal(database)) return {};
    const ResultTable movements = database.run(
        u"select WID,GId,Model1,Model2,Status,sum(CurrentChange) as Moved from StockMovement where GId in (" + goods +
        u") and BillKind=" + GetSqlVal(from_utf8(bill.kind->name)) + u" and BillId=" + GetSqlVal(bill.id) +
        // Whether the bill was taken back while the journal was off is not known.
        u" and MovementNo>(select coalesce(max(MovementNo),0) from StockMovement where GId in (" + goods +
        u") and Action='gap') group by WID,GId,Model1,Model2,Status");
    std::vector<PostedQuantity> posted;
    for (const std::vector<Variant>& row : movements.rows) {
        PostedQuantity& quantity = posted.emplace_back();
        quantity.key.warehouse = text_or_empty(row[0]);
        quantity.key.goods = text_or_empty(row[1]);
        quantity.key.model1 = text_or_empty(row[2]);
        quantity.key.model2 = text_or_empty(row[3]);
        quantity.key.status = text_or_empty(row[4]);
        quantity.on_hand = to_currency(row[5]);
    }
    return posted;
}

bool have_same_key(const LedgerRow& one, const LedgerRow& other) {
    return one.warehouse == other.warehouse && one.goods == other.goods && one.model1 == other.model1 &&
           one.model2 == other.model2 && one.status == other.status;
}

}  // namespace vantlo
