#include "bookkeeping/rehearsal_copy.h"

#include <algorithm>

#include "ado/native/open_connection.h"
#include "automation/error.h"
#include "bills/master_tables.h"
#include "bills/schema.h"
#include "bookkeeping/bill_goods.h"
#include "bookkeeping/bookkeeping.h"
#include "bookkeeping/rows_named.h"
#include "dataaccess/sql_literals.h"

namespace vantlo {

namespace {

Text literal(const Variant& value) {
    const Other* const other = value.get_if<Other>();
    return GetSqlVal(other == nullptr ? value : Variant(other->number));
}

/// Copies the columns of the rows whose `key` is one of the names.
void copy_rows(NativeConnection& source, NativeConnection& copy, const Text& table, const Text& columns,
               const Text& key, std::span<const Text> names) {
    for (const auto& row : rows_named(source, table, columns, key, names)) {
        Text values;
        for (const Variant& value : row) values += (values.empty() ? u"" : u",") + literal(value);
        copy.run(u"insert into " + table + u"(" + columns + u") values(" + values + u")");
    }
}

}  // namespace

Owned<NativeConnection> copy_for_rehearsal(NativeConnection& source, std::span<const Bill* const> bills,
                                           std::span<const Bill* const> stored) {
    const Owned<NativeConnection> copy = open_connection("sqlite::memory:");
    copy->run_script(schema_for("sqlite"));
    std::vector<const Bill*> all(bills.begin(), bills.end());
    all.insert(all.end(), stored.begin(), stored.end());
    const std::vector<Text> goods = goods_of(all);
    for (const MasterTable& table : master_tables()) {
        if (table.field == "goods" || table.field == "units")  // which postings read
            copy_rows(source, *copy, table.name, column_list(table.columns), table.columns.front().column, goods);
    }
    copy_rows(source, *copy, u"Inventory", u"WID,GId,Model1,Model2,Status,Class,Unit,InQty,OutQty,CurrentQty,Remarks",
              u"GId", goods);
    Bookkeeping keeper([&] { return copy; });
    for (const Bill* const bill : stored) {
        BillKind kind = *bill->kind;
        kind.post = {};  // storing a bill stores it, and nothing more
        keeper.save({&kind, bill->id, bill->header, bill->lines});
    }
    return copy;
}

bool is_read_only(NativeConnection& database) {
    try {
        database.begin();
        // Of no rows: where a table has no transactions, nothing may stay.
        database.run(u"insert into SavedBill(Marker) select Marker from SavedBill where Marker is null");
        database.roll_back();
        return false;
    } catch (const Failure& failure) {
        database.roll_back();
        if (failure.number() != error::permission_denied) throw;
        return true;
    }
}

}  // namespace vantlo
