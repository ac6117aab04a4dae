#include "tool/commands/own_parts.h"

namespace vantlo {

namespace words {

// clang-format off
constexpr Message own_table      = {"表 {}", "table {}"};
constexpr Message separator      = {"、", ", "};
// clang-format on

}  // namespace words

OwnTables own_tables_of(NativeConnection& database) {
    OwnTables tables;
    for (const OwnTable& table : own_tables_for(database.dialect().name)) {
        (has_table(database, table.name) ? tables.present : tables.missing).push_back(table);
    }
    return tables;
}

void PartList::add(const std::string& part) {
    if (!text_.empty()) text_ += common_.say(words::separator);
    text_ += part;
}

void PartList::add(const std::vector<OwnTable>& tables) {
    for (const OwnTable& table : tables) add(common_.say(words::own_table, table.name));
}

}  // namespace vantlo
