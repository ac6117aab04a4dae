#include "audit/column_types.h"

namespace vantlo {

namespace {

const char16_t* description_query(const std::string& dialect) {
    if (dialect == "sqlite")
        return u"select t.name as T,c.name as C,c.type as Y,'' as S from sqlite_schema t join "
               u"pragma_table_info(t.name) c "
               u"where t.type='table'";
    if (dialect == "postgresql")
        return u"select table_name as T,column_name as C,"
               u"case when data_type='numeric' then 'numeric('||coalesce(numeric_precision,0)||','||"
               u"coalesce(numeric_scale,4)||')' else data_type end as Y,"
               u"case when character_maximum_length is null then '' else database_encoding.S end as S "
               u"from information_schema.columns,"
               u"(select pg_encoding_to_char(encoding) as S from pg_database where datname=current_database()) "
               u"as database_encoding where table_schema=current_schema()";
    if (dialect == "mariadb")
        return u"select table_name as T,column_name as C,"
               u"case when data_type='decimal' then column_type else data_type end as Y,"
               u"coalesce(character_set_name,'') as S from information_schema.columns where table_schema=database()";
    if (dialect == "sqlserver")
        return u"select table_name as T,column_name as C,"
               u"case when data_type in ('decimal','numeric') then concat(data_type,'(',numeric_precision,',',"
               u"numeric_scale,')') else data_type end as Y,coalesce(collation_name,'') as S "
               u"from information_schema.columns";
    return nullptr;
}

}  // namespace

std::vector<ColumnDescription> read_columns(NativeConnection& database) {
    std::vector<ColumnDescription> columns;
    const char16_t* const query = description_query(database.dialect());
    if (query == nullptr) return columns;
    const RecordsetVariable rows = database.execute(query);
    for (; !rows->eof(); rows->move_next()) {
        const auto text = [&](TextView name) { return to_utf8(to_text(rows->field(name))); };
        columns.push_back({text(u"T"), text(u"C"), text(u"Y"), text(u"S")});
    }
    return columns;
}

}  // namespace vantlo
