#include "audit/adoption.h"

#include <algorithm>
#include <cctype>
#include <map>

#include "automation/error.h"

namespace vantlo {

namespace {

constexpr const char* key_texts[] = {"WID", "GId", "Model1", "Model2"};
constexpr const char* status_column[] = {"Status"};
constexpr const char* quantity_columns[] = {"InQty", "OutQty", "CurrentQty"};
constexpr const char* other_columns[] = {"Class", "Unit", "Remarks"};

constexpr std::int64_t longest_key = 255;
constexpr std::int64_t most_decimals = 4;
constexpr std::int64_t most_digits_before = 15;  // of money and numeric(19,4)

/// What a server's catalog tells of the ledger, each select with the columns that read_catalog reads.
struct Catalog {
    std::string_view dialect;
    const char16_t* kind;      ///< kind: table or view; engine: its storage engine, or null
    const char16_t* columns;   ///< name, type, length, digits, decimals, collation
    const char16_t* indexes;   ///< key_list: the columns of each index, in order, with commas between
    const char16_t* triggers;  ///< name
};

// clang-format off
constexpr Catalog catalogs[] = {
    {"sqlite",
     u"select type as kind, null as engine from sqlite_schema where type in ('table', 'view') and lower(name) = 'inventory'",
     u"select name, type, null as length, null as digits, null as decimals, null as collation from pragma_table_info('Inventory')",
     u"select (select group_concat(name) from (select name from pragma_index_info(list.name) order by seqno)) as key_list "
     u"from pragma_index_list('Inventory') list",
     u"select name from sqlite_schema where type = 'trigger' and lower(tbl_name) = 'inventory' order by name"},
    {"postgresql",
     u"select case when relkind in ('r', 'p') then 'table' else 'view' end as kind, null as engine from pg_class "
     u"where oid = to_regclass('Inventory')",
     u"select column_name as name, data_type as type, character_maximum_length as length, numeric_precision as digits, "
     u"numeric_scale as decimals, null as collation from information_schema.columns "
     u"where (table_schema::text, table_name::text) = (select nspname::text, relname::text from pg_class "
     u"join pg_namespace space on space.oid = relnamespace where pg_class.oid = to_regclass('Inventory'))",
     u"select (select string_agg(attname, ',' order by place) from unnest(indkey) with ordinality as k(number, place) "
     u"join pg_attribute on attrelid = indrelid and attnum = number) as key_list "
     u"from pg_index where indrelid = to_regclass('Inventory')",
     u"select tgname as name from pg_trigger where tgrelid = to_regclass('Inventory') and not tgisinternal order by tgname"},
    {"mariadb",
     u"select case table_type when 'VIEW' then 'view' else 'table' end as kind, engine as engine from information_schema.tables "
     u"where table_schema = database() and table_name = 'Inventory'",
     u"select column_name as name, data_type as type, character_maximum_length as length, numeric_precision as digits, "
     u"numeric_scale as decimals, collation_name as collation from information_schema.columns "
     u"where table_schema = database() and table_name = 'Inventory'",
     u"select group_concat(column_name order by seq_in_index) as key_list from information_schema.statistics "
     u"where table_schema = database() and table_name = 'Inventory' group by index_name",
     u"select trigger_name as name from information_schema.triggers where trigger_schema = database() "
     u"and event_object_table = 'Inventory' order by trigger_name"},
    {"sqlserver",
     u"select case type when 'V' then 'view' else 'table' end as kind, null as engine from sys.objects "
     u"where object_id = object_id('Inventory')",
     u"select column_name as name, data_type as type, character_maximum_length as length, numeric_precision as digits, "
     u"numeric_scale as decimals, collation_name as collation from information_schema.columns where table_name = 'Inventory'",
     u"select stuff((select ',' + c.name from sys.index_columns k join sys.columns c on c.object_id = k.object_id "
     u"and c.column_id = k.column_id where k.object_id = i.object_id and k.index_id = i.index_id order by k.key_ordinal "
     u"for xml path('')), 1, 1, '') as key_list from sys.indexes i where i.object_id = object_id('Inventory') and i.index_id > 0",
     u"select name from sys.triggers where parent_id = object_id('Inventory') order by name"},
};
// clang-format on

std::string lower(std::string text) {
    std::ranges::transform(text, text.begin(), [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return text;
}

std::string text_of(Recordset& rows, TextView column) {
    const Variant value = rows.field(column);
    return value.is<Null>() ? std::string() : to_utf8(to_text(value));
}

std::int64_t number_of(Recordset& rows, TextView column) {
    const Variant value = rows.field(column);
    return value.is<Null>() ? -1 : static_cast<std::int64_t>(to_double(value));
}

struct Column {
    std::string name, type, collation;
    std::int64_t length, digits, decimals;  ///< -1 where the catalog has none
};

/// The ledger's columns by their names in small letters.
std::map<std::string, Column> read_columns(NativeConnection& database, const Catalog& catalog) {
    std::map<std::string, Column> columns;
    const RecordsetVariable rows = database.execute(catalog.columns);
    for (; !rows->eof(); rows->move_next()) {
        Column column{text_of(*rows, u"name"),     lower(text_of(*rows, u"type")), text_of(*rows, u"collation"),
                      number_of(*rows, u"length"), number_of(*rows, u"digits"),    number_of(*rows, u"decimals")};
        columns.emplace(lower(column.name), std::move(column));
    }
    return columns;
}

/// Whether a movement holds every value of the column exactly. Floating point counts as four decimals.
bool holds_quantities(const Column& column) {
    for (const char* const type : {"money", "smallmoney", "smallint", "tinyint", "mediumint", "int", "integer", "real",
                                   "float", "double", "double precision"}) {
        if (column.type == type) return true;
    }
    if (column.type != "numeric" && column.type != "decimal") return false;
    return column.decimals >= 0 && column.decimals <= most_decimals &&
           column.digits - column.decimals <= most_digits_before;
}

bool holds_key_text(const Column& column) {
    if (column.type == "text" && column.collation.empty()) return true;  // PostgreSQL's, which the journal has too
    return column.type.find("char") != std::string::npos && column.length > 0 && column.length <= longest_key;
}

bool holds_status(const Column& column) {
    return column.type.find("int") != std::string::npos && column.type != "bigint";
}

/// Whether a collation takes texts for equal that differ.
bool is_inexact(const std::string& collation) {
    const std::string name = lower(collation);
    return !name.empty() && name.find("_bin") == std::string::npos && name.find("_cs_as") == std::string::npos;
}

bool has_key_index(NativeConnection& database, const Catalog& catalog) {
    const RecordsetVariable rows = database.execute(catalog.indexes);
    for (; !rows->eof(); rows->move_next()) {
        const std::string columns = lower(text_of(*rows, u"key_list")) + ",";
        if (columns.starts_with("wid,gid,") || columns.starts_with("gid,wid,")) return true;
    }
    return false;
}

}  // namespace

std::vector<AdoptionNote> look_before_adopting(NativeConnection& database) {
    std::vector<AdoptionNote> notes;
    const auto note = [&](AdoptionFinding finding, std::string subject = {}) {
        notes.push_back({finding, std::move(subject)});
    };
    const std::string_view dialect = database.dialect().name;
    const auto* const catalog = std::ranges::find(catalogs, dialect, &Catalog::dialect);
    if (catalog == std::end(catalogs)) {
        note(AdoptionFinding::no_triggers);
        return notes;
    }
    const RecordsetVariable kind = database.execute(catalog->kind);
    if (kind->eof()) {
        note(AdoptionFinding::no_ledger);
        return notes;
    }
    const std::map<std::string, Column> columns = read_columns(database, *catalog);
    const auto look_for = [&](const auto& names) {
        for (const char* const name : names) {
            if (!columns.contains(lower(name))) note(AdoptionFinding::column_missing, name);
        }
    };
    look_for(key_texts);
    look_for(status_column);
    look_for(quantity_columns);
    look_for(other_columns);
    if (text_of(*kind, u"kind") == "view") note(AdoptionFinding::ledger_is_view);
    const std::string engine = text_of(*kind, u"engine");
    if (!engine.empty() && engine != "InnoDB") note(AdoptionFinding::no_transactions, engine);

    const auto type_of = [](const Column& column) { return column.name + " " + column.type; };
    const auto check_types = [&](const auto& names, AdoptionFinding finding, bool (*holds)(const Column&)) {
        for (const char* const name : names) {
            const auto column = columns.find(lower(name));
            if (column != columns.end() && !holds(column->second)) note(finding, type_of(column->second));
        }
    };
    if (dialect != "sqlite") {  // which keeps any value in any column
        check_types(quantity_columns, AdoptionFinding::quantity_type, holds_quantities);
        check_types(key_texts, AdoptionFinding::key_type, holds_key_text);
        check_types(status_column, AdoptionFinding::key_type, holds_status);
    }
    if (!has_key_index(database, *catalog)) note(AdoptionFinding::no_key_index);
    for (const char* const name : key_texts) {
        const auto column = columns.find(lower(name));
        if (column == columns.end() || !is_inexact(column->second.collation)) continue;
        note(AdoptionFinding::inexact_key, column->second.name + " " + column->second.collation);
    }
    const RecordsetVariable triggers = database.execute(catalog->triggers);
    for (; !triggers->eof(); triggers->move_next()) {
        const std::string name = text_of(*triggers, u"name");
        if (!lower(name).starts_with("stockmovementof")) note(AdoptionFinding::other_trigger, name);
    }
    return notes;
}

}  // namespace vantlo
