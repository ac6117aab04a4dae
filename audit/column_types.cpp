#include "audit/column_types.h"

namespace vantlo {

std::string in_small_letters(std::string name) {
    for (char& c : name) {
        if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
    }
    return name;
}

std::vector<ColumnDescription> read_columns(NativeConnection& database) {
    std::vector<ColumnDescription> columns;
    const char16_t* const query = database.dialect().columns_query;
    if (query == nullptr) return columns;
    const RecordsetVariable rows = database.execute(query);
    for (; !rows->eof(); rows->move_next()) {
        const auto text = [&](TextView name) { return to_utf8(to_text(rows->field(name))); };
        columns.push_back({text(u"T"), text(u"C"), text(u"Y"), text(u"S")});
    }
    return columns;
}

}  // namespace vantlo
