#include "import/column_limits.h"

#include <sstream>

#include "bills/schema.h"

namespace vantlo {

ColumnLimits::ColumnLimits() {
    std::istringstream script(schema_for("sqlite"));
    constexpr std::string_view table_head = "create table if not exists ";
    constexpr std::string_view text_type = "nvarchar(";
    std::string table;
    for (std::string line; std::getline(script, line);) {
        std::istringstream words(line);
        std::string column, type;
        if (line.starts_with(table_head)) {
            table = line.substr(table_head.size(), line.find(' ', table_head.size()) - table_head.size());
        } else if (line.starts_with("    ") && words >> column >> type) {
            Limit& limit = limits_[from_utf8(table + "." + column)];
            limit.is_short = type.starts_with("smallint");
            if (type.starts_with(text_type)) limit.longest_text = std::stoul(type.substr(text_type.size()));
        }
    }
}

const ColumnLimits::Limit& ColumnLimits::of(TextView table, TextView column) const {
    return limits_.at(Text(table) + u"." + Text(column));
}

}  // namespace vantlo
