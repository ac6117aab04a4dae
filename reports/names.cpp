#include "reports/names.h"

namespace vantlo {

namespace {

Text text_of(const Variant& value) { return value.is<Null>() ? Text() : to_text(value); }

}  // namespace

std::map<Text, Text> read_names(NativeConnection& database, TextView table) {
    std::map<Text, Text> names;
    const RecordsetVariable rows = database.execute(u"select ID,Name from " + Text(table));
    for (; !rows->eof(); rows->move_next()) names[text_of(rows->field(u"ID"))] = text_of(rows->field(u"Name"));
    return names;
}

}  // namespace vantlo
