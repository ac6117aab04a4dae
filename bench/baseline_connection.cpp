#include "bench/baseline_connection.h"

#include <stdexcept>

#include "ado/native/statement_text.h"
#include "bookkeeping/guarded_connection.h"

namespace vantlo::bench {

BaselineConnection::BaselineConnection(const std::string& database) : is_sqlite_(database.starts_with("sqlite:")) {
    connection_ = is_sqlite_ ? baseline_open_sqlite(database.substr(7).c_str()) : baseline_open_odbc(database.c_str());
    if (connection_ == nullptr) throw std::runtime_error("the baseline cannot open " + database);
}

BaselineConnection::~BaselineConnection() {
    if (is_sqlite_) {
        baseline_close_sqlite(connection_);
    } else {
        baseline_close_odbc(connection_);
    }
}

long BaselineConnection::run(const std::string& statement) {
    const long rows = is_sqlite_ ? baseline_run_sqlite(connection_, statement.c_str())
                                 : baseline_run_odbc(connection_, statement.c_str());
    if (rows < 0) throw std::runtime_error("the baseline failed in " + statement);
    return rows;
}

void BaselineConnection::post(const BillStatements& bill) {
    begin();
    for (const std::string& statement : bill) run(statement);
    commit();
}

void BaselineConnection::begin() {
    if (is_sqlite_) {
        run("begin immediate");
    } else if (baseline_begin_odbc(connection_) != 0) {
        throw std::runtime_error("the baseline cannot begin a transaction");
    }
}

void BaselineConnection::commit() {
    if (is_sqlite_) {
        run("commit");
    } else if (baseline_commit_odbc(connection_) != 0) {
        throw std::runtime_error("the baseline cannot commit");
    }
}

void post(NativeConnection& database, Connection& connection, const BillLines& bill) {
    Poster poster(connection);
    database.begin();
    for (const Record& line : bill) poster.post(line);
    database.commit();
}

BillStatements post_and_capture(NativeConnection& database, const BillLines& bill) {
    BillStatements statements;
    const Owned<GuardedConnection> observed(new GuardedConnection(Owned<NativeConnection>(&database)));
    observed->observe([&](TextView statement) { statements.push_back(to_utf8(statement)); }, nullptr);
    post(*observed, *observed, bill);
    return statements;
}

}  // namespace vantlo::bench
