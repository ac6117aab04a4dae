#include "posting/statement.h"

#include "automation/error.h"
#include "dataaccess/sql_literals.h"

namespace vantlo {

Statement& Statement::literal(const Variant& value) { return piece(GetSqlVal(value)); }

Statement& Statement::digits(const Variant& value) { return piece(to_text(value)); }

RecordsetVariable execute(Connection* connection, const Statement& statement) {
    if (connection == nullptr) throw Failure(error::object_not_set);
    return connection->execute(statement.text());
}

Statement select_by_id(TextView select, const Text& id) { return Statement().piece(select).literal(id); }

}  // namespace vantlo
