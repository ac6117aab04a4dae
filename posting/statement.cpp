#include "posting/statement.h"

#include "dataaccess/sql_literals.h"

namespace vantlo {

Statement& Statement::literal(const Variant& value) { return piece(GetSqlVal(value)); }

Statement& Statement::unquoted(const Variant& value) { return piece(to_text(value)); }

Statement select_by_id(TextView select, const Text& id) { return Statement().piece(select).literal(id); }

}  // namespace vantlo
