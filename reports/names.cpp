#include "reports/names.h"

#include "automation/text_value.h"

namespace vantlo {

std::map<Text, Text> read_texts(NativeConnection& database, TextView table, TextView column) {
    std::map<Text, Text> texts;
    const RecordsetVariable rows = database.execute(u"select ID," + Text(column) + u" from " + Text(table));
    for (; !rows->eof(); rows->move_next())
        texts[text_or_empty(rows->field(u"ID"))] = text_or_empty(rows->field(column));
    return texts;
}

}  // namespace vantlo
