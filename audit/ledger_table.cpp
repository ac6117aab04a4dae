#include "audit/ledger_table.h"

#include <algorithm>
#include <iterator>

#include "audit/column_types.h"
#include "automation/text_value.h"

namespace vantlo {

namespace {

/// What a catalog tells of the ledger: each a select of the columns that are named here.
struct Catalog {
    std::string_view dialect;
    const char16_t* kind;      ///< kind: table or view
    const char16_t* columns;   ///< name, type, length, digits, decimals, in the table's order
    const char16_t* indexes;   ///< key_list: the columns of each index, in order, with commas between
    const char16_t* triggers;  ///< name
};

// clang-format off
constexpr Catalog catalogs[] = {
    {"sqlite",
     u"select type as kind from sqlite_schema where type in ('table', 'view') and lower(name) = 'inventory'",
     u"select name, type, null as length, null as digits, null as decimals from pragma_table_info('Inventory') order by cid",
     u"select (select group_concat(name) from (select name from pragma_index_info(list.name) order by seqno)) as key_list "
     u"from pragma_index_list('Inventory') list",
     u"select name from sqlite_schema where type = 'trigger' and lower(tbl_name) = 'inventory' order by name"},
    {"postgresql",
     u"select case when relkind in ('r', 'p') then 'table' else 'view' end as kind from pg_class "
     u"where oid = to_regclass('Inventory')",
     u"select column_name as name, data_type as type, character_maximum_length as length, numeric_precision as digits, "
     u"numeric_scale as decimals from information_schema.columns "
     u"where (table_schema::text, table_name::text) = (select nspname::text, relname::text from pg_class "
     u"join pg_namespace space on space.oid = relnamespace where pg_class.oid = to_regclass('Inventory')) "
     u"and is_generated = 'NEVER' order by ordinal_position",
     u"select (select string_agg(attname, ',' order by place) from unnest(indkey) with ordinality as k(number, place) "
     u"join pg_attribute on attrelid = indrelid and attnum = number) as key_list "
     u"from pg_index where indrelid = to_regclass('Inventory')",
     u"select tgname as name from pg_trigger where tgrelid = to_regclass('Inventory') and not tgisinternal union all "
     u"select rulename from pg_rewrite where ev_class = to_regclass('Inventory') and rulename <> '_RETURN' order by name"},
    {"mariadb",
     u"select case table_type when 'VIEW' then 'view' else 'table' end as kind from information_schema.tables "
     u"where table_schema = database() and table_name = 'Inventory'",
     u"select column_name as name, data_type as type, character_maximum_length as length, numeric_precision as digits, "
     u"numeric_scale as decimals from information_schema.columns "
     u"where table_schema = database() and table_name = 'Inventory' and is_generated = 'NEVER' order by ordinal_position",
     u"select group_concat(column_name order by seq_in_index) as key_list from information_schema.statistics "
     u"where table_schema = database() and table_name = 'Inventory' group by index_name",
     u"select trigger_name as name from information_schema.triggers where trigger_schema = database() "
     u"and event_object_table = 'Inventory' order by trigger_name"},
    {"sqlserver",
     u"select case type when 'V' then 'view' else 'table' end as kind from sys.objects "
     u"where object_id = object_id('Inventory')",
     u"select column_name as name, data_type as type, character_maximum_length as length, numeric_precision as digits, "
     u"numeric_scale as decimals from information_schema.columns where table_name = 'Inventory' "
     u"and columnproperty(object_id('Inventory'), column_name, 'IsComputed') = 0 and data_type <> 'timestamp' "
     u"and columnproperty(object_id('Inventory'), column_name, 'IsIdentity') = 0 order by ordinal_position",
     u"select stuff((select ',' + c.name from sys.index_columns k join sys.columns c on c.object_id = k.object_id "
     u"and c.column_id = k.column_id where k.object_id = i.object_id and k.index_id = i.index_id order by k.key_ordinal "
     u"for xml path('')), 1, 1, '') as key_list from sys.indexes i where i.object_id = object_id('Inventory') and i.index_id > 0",
     u"select name from sys.triggers where parent_id = object_id('Inventory') order by name"},
};
// clang-format on

std::string text_of(Recordset& rows, TextView column) { return to_utf8(text_or_empty(rows.field(column))); }

std::int64_t number_of(Recordset& rows, TextView column) {
    const Variant value = rows.field(column);
    return value.is<Null>() ? -1 : static_cast<std::int64_t>(to_double(value));
}

std::vector<LedgerColumn> read_columns(NativeConnection& database, const char16_t* select) {
    std::vector<LedgerColumn> columns;
    const RecordsetVariable rows = database.execute(select);
    for (; !rows->eof(); rows->move_next()) {
        columns.push_back({text_of(*rows, u"name"), in_small_letters(text_of(*rows, u"type")),
                           number_of(*rows, u"length"), number_of(*rows, u"digits"), number_of(*rows, u"decimals")});
    }
    return columns;
}

}  // namespace

const LedgerColumn* LedgerTable::column(std::string_view name) const {
    const auto found = std::ranges::find_if(columns, [&](const LedgerColumn& column) {
        return in_small_letters(column.name) == in_small_letters(std::string(name));
    });
    return found == columns.end() ? nullptr : &*found;
}

LedgerTable read_ledger_table(NativeConnection& database) {
    LedgerTable table;
    const auto* const catalog = std::ranges::find(catalogs, database.dialect().name, &Catalog::dialect);
    if (catalog == std::end(catalogs)) return table;
    table.is_described = true;
    const RecordsetVariable kind = database.execute(catalog->kind);
    if (kind->eof()) return table;
    table.is_view = text_of(*kind, u"kind") == "view";
    table.columns = read_columns(database, catalog->columns);
    const RecordsetVariable indexes = database.execute(catalog->indexes);
    for (; !indexes->eof(); indexes->move_next()) {
        table.indexes.push_back(in_small_letters(text_of(*indexes, u"key_list")));
    }
    const RecordsetVariable triggers = database.execute(catalog->triggers);
    for (; !triggers->eof(); triggers->move_next()) {
        const std::string name = text_of(*triggers, u"name");
        if (!in_small_letters(name).starts_with("stockmovementof")) table.triggers.push_back(name);
    }
    return table;
}

}  // namespace vantlo
