#include "bookkeeping/find_table.h"

#include <algorithm>
#include <iterator>

#include "bills/schema.h"

namespace vantlo {

namespace {

/// A select of a row unless the table, whose name takes the place of `?`, is known not to be there. MariaDB shows an account
/// no table without a right to it, and all of them only if the right is one to the whole database.
struct Catalog {
    std::string_view dialect;
    const char16_t* select;
};
constexpr Catalog catalogs[] = {
    {"postgresql", u"select 1 as n from pg_class where oid=to_regclass('?')"},
    {"mariadb",
     u"select 1 as n from information_schema.tables where table_schema=database() and table_name='?' union all "
     u"select 1 from dual where not exists (select 1 from information_schema.user_privileges "
     u"where privilege_type='SELECT') and not exists (select 1 from information_schema.schema_privileges "
     u"where database() like table_schema and privilege_type='SELECT')"},
};

}  // namespace

bool find_table(NativeConnection& database, const std::string& name) {
    const auto* const catalog = std::ranges::find(catalogs, database.dialect().name, &Catalog::dialect);
    if (catalog != std::end(catalogs)) {
        Text select = catalog->select;
        select.replace(select.find(u'?'), 1, from_utf8(name));
        if (database.run(select).rows.empty()) return false;
    }
    return has_table(database, name);
}

}  // namespace vantlo
