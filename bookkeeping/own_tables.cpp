#include "bookkeeping/own_tables.h"

#include <algorithm>

#include "bills/schema.h"

namespace vantlo {

std::vector<std::string> system_tables(std::string_view dialect) {
    const std::string script = schema_for(dialect);
    constexpr std::string_view behind_name = " (\n";
    std::vector<std::string> names;
    for (std::size_t end = script.find(behind_name); end != std::string::npos;
         end = script.find(behind_name, end + 1)) {
        const std::size_t blank = script.rfind(' ', end - 1);
        names.push_back(script.substr(blank + 1, end - blank - 1));
    }
    return names;
}

std::vector<MissingColumn> missing_own_columns(NativeConnection& database) {
    const std::string_view dialect = database.dialect().name;
    std::vector<MissingColumn> missing;
    for (const OwnTable& table : own_tables_for(dialect)) {
        // It has had its columns from its beginning, and not every account may read it.
        if (table.name == "StockMinimum") continue;
        if (!has_table(database, table.name)) continue;
        const std::vector<Text> present =
            database.run(u"select * from " + from_utf8(table.name) + u" where 1=0").columns;
        for (const OwnTable::Column& column : table.columns) {
            const Text name = from_utf8(column.name);
            if (std::ranges::any_of(present, [&](const Text& other) { return equal_ignoring_case(other, name); }))
                continue;
            const char* const add = dialect == "sqlserver" ? " add " : " add column ";
            missing.push_back({table.name, column.name, "alter table " + table.name + add + column.definition});
        }
    }
    return missing;
}

std::vector<TableWithoutRollback> tables_without_rollback(NativeConnection& database) {
    const char16_t* const query = database.dialect().without_rollback_query;
    if (query == nullptr) return {};
    const std::vector<std::string> own = system_tables(database.dialect().name);
    std::vector<TableWithoutRollback> tables;
    const RecordsetVariable rows = database.execute(query);
    for (; !rows->eof(); rows->move_next()) {
        const Text table = to_text(rows->field(u"T"));
        // Some servers keep all names in small letters.
        const auto is_it = [&](const std::string& name) { return equal_ignoring_case(from_utf8(name), table); };
        if (std::ranges::none_of(own, is_it)) continue;
        tables.push_back({to_utf8(table), to_utf8(to_text(rows->field(u"E")))});
    }
    return tables;
}

}  // namespace vantlo
