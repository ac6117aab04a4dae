#include "reports/names.h"

#include "automation/text_value.h"

namespace vantlo {

std::map<Text, Text> read_names(NativeConnection& database, TextView table) {
    std::map<Text, Text> names;
    const RecordsetVariable rows = database.execute(u"select ID,Name from " + Text(table));
    for (; !rows->eof(); rows->move_next())
        names[text_or_empty(rows->field(u"ID"))] = text_or_empty(rows->field(u"Name"));
    return names;
}

}  // namespace vantlo
