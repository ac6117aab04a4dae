#include "ado/odbc/odbc_connection.h"

#include <sql.h>
#include <sqlext.h>

#include <algorithm>
#include <new>
#include <utility>

#include "ado/native/adapters.h"
#include "ado/native/statement_text.h"
#include "ado/odbc/connection_string.h"
#include "ado/odbc/engine.h"
#include "ado/odbc/odbc_failure.h"
#include "ado/odbc/result_rows.h"
#include "ado/odbc/running_statement.h"

namespace vantlo {

namespace {

bool succeeded(SQLRETURN result) { return result == SQL_SUCCESS || result == SQL_SUCCESS_WITH_INFO; }

// ODBC's parameters are not const, though it only reads the text.
SQLCHAR* odbc_text(const std::string& text) { return reinterpret_cast<SQLCHAR*>(const_cast<char*>(text.c_str())); }

SQLPOINTER odbc_number(std::uintptr_t value) { return reinterpret_cast<SQLPOINTER>(value); }

std::string information(SQLHDBC connection, SQLUSMALLINT what) {
    char text[256] = "";
    SQLSMALLINT length = 0;
    SQLGetInfo(connection, what, text, sizeof text, &length);
    return text;
}

const Engine& engine_of(SQLHDBC connection) { return engine_named(information(connection, SQL_DBMS_NAME)); }

bool is_dead(SQLHDBC connection) {
    SQLULEN dead = SQL_CD_FALSE;
    SQLGetConnectAttr(connection, SQL_ATTR_CONNECTION_DEAD, &dead, 0, nullptr);
    return dead == SQL_CD_TRUE;
}

/// Whether a result of `show variables` is a setting that is on.
bool says_on(const ResultTable& setting) { return !setting.rows.empty() && setting.rows[0].at(1) == Variant(u"ON"); }

/// Runs a statement and reads all its results to their ends. Returns the first. Errors: StatementFailed.
ResultTable results_of(SQLHSTMT handle, const std::string& text) {
    checked(SQLExecDirect(handle, odbc_text(text), static_cast<SQLINTEGER>(text.size())));
    SQLSMALLINT column_count = 0;
    checked(SQLNumResultCols(handle, &column_count));
    ResultTable first;
    if (column_count > 0) {
        first = read_rows(handle, column_count);
    } else {
        SQLLEN changed = -1;
        if (succeeded(SQLRowCount(handle, &changed)) && changed >= 0) first.changed_rows = changed;
    }
    while (checked(SQLMoreResults(handle)) != SQL_NO_DATA) {
        checked(SQLNumResultCols(handle, &column_count));
        while (column_count > 0 && checked(SQLFetch(handle)) != SQL_NO_DATA) {
        }
    }
    return first;
}

}  // namespace

void OdbcConnection::EnvironmentCloser::operator()(void* environment) const noexcept {
    SQLFreeHandle(SQL_HANDLE_ENV, environment);
}

void OdbcConnection::ConnectionCloser::operator()(void* connection) const noexcept {
    SQLEndTran(SQL_HANDLE_DBC, connection, SQL_ROLLBACK);  // with one open it would not disconnect
    SQLDisconnect(connection);
    SQLFreeHandle(SQL_HANDLE_DBC, connection);
}

void OdbcConnection::StatementCloser::operator()(void* statement) const noexcept {
    SQLFreeHandle(SQL_HANDLE_STMT, statement);
}

OdbcConnection::OdbcConnection(const std::string& connection_string, const OdbcOptions& options) {
    SQLHANDLE handle = nullptr;
    if (!succeeded(SQLAllocHandle(SQL_HANDLE_ENV, SQL_NULL_HANDLE, &handle))) throw std::bad_alloc();
    environment_.reset(handle);
    SQLSetEnvAttr(handle, SQL_ATTR_ODBC_VERSION, odbc_number(SQL_OV_ODBC3), 0);

    SQLHANDLE connection = nullptr;
    if (!succeeded(SQLAllocHandle(SQL_HANDLE_DBC, environment_.get(), &connection))) throw std::bad_alloc();
    connection_.reset(connection);
    const auto seconds = static_cast<std::uintptr_t>(options.login_time_out.count());
    SQLSetConnectAttr(connection, SQL_ATTR_LOGIN_TIMEOUT, odbc_number(seconds), 0);  // some drivers have none
    const SQLRETURN result = SQLDriverConnect(connection, nullptr, odbc_text(connection_string), SQL_NTS, nullptr, 0,
                                              nullptr, SQL_DRIVER_NOPROMPT);
    if (!succeeded(result)) {
        OdbcFailure failure = odbc_failure(SQL_HANDLE_DBC, connection, "connecting");
        if (failure.meaning.number == error::login_failed && has_closing_brace(connection_string))
            failure.account += " (FreeTDS takes no password with a closing brace)";
        throw Failure(failure.meaning.number, without_password(std::move(failure.account), connection_string));
    }
    make_safe();
}

void OdbcConnection::make_safe() {
    const Engine& own = engine_of(connection_.get());
    for (const char16_t* const setting : own.settings) run(setting);
    for (const Probe& probe : own.probes) {
        if (to_text(run(probe.query).rows.at(0).at(0)) == probe.safe) continue;
        throw Failure(error::unspecified, engine() + " " + std::string(probe.hazard));
    }
    is_cluster_ = own.cluster_probe != nullptr && says_on(run(own.cluster_probe));
}

ResultTable OdbcConnection::run(TextView statement) {
    const std::string text = checked_utf8(statement);
    if (text.empty()) throw Failure(error::syntax_error, "the statement is empty");
    StatementHandle handle = take_statement(text);
    try {
        const RunningStatement running(handle.get());
        ResultTable result = results_of(handle.get(), text);
        keep_statement(std::move(handle));
        return result;
    } catch (const StatementFailed&) {
        fail(SQL_HANDLE_STMT, handle.get(), text);
    }
}

OdbcConnection::StatementHandle OdbcConnection::take_statement(std::string_view first_use) {
    for (StatementHandle& idle : idle_statements_) {
        if (idle != nullptr) return std::move(idle);
    }
    SQLHANDLE handle = nullptr;
    if (!succeeded(SQLAllocHandle(SQL_HANDLE_STMT, connection_.get(), &handle))) {
        fail(SQL_HANDLE_DBC, connection_.get(), first_use);
    }
    // Drivers without the attribute look for escapes outside quotes only; the tests check it.
    SQLSetStmtAttr(handle, SQL_ATTR_NOSCAN, odbc_number(SQL_NOSCAN_ON), 0);
    return StatementHandle(handle);
}

void OdbcConnection::keep_statement(StatementHandle statement) {
    for (StatementHandle& idle : idle_statements_) {
        if (idle == nullptr) return idle.swap(statement);
    }
}

void OdbcConnection::disconnect() {
    remedy_ = Remedy::connect_again;
    // Disconnecting frees statements; they must not be freed again.
    for (StatementHandle& idle : idle_statements_) idle.reset();
    SQLDisconnect(connection_.get());
}

void OdbcConnection::begin() {
    if (!set_autocommit(false)) fail(SQL_HANDLE_DBC, connection_.get(), "beginning a transaction");
    in_transaction_ = true;
    transaction_failure_.reset();
    remedy_ = Remedy::none;
    if (is_cluster_) run(u"savepoint vantlo");
}

void OdbcConnection::commit() {
    if (transaction_failure_) {
        const Failure failure = *transaction_failure_;
        roll_back();
        throw failure;
    }
    if (is_cluster_) require_whole_transaction();
    if (!succeeded(SQLEndTran(SQL_HANDLE_DBC, connection_.get(), SQL_COMMIT))) {
        fail(SQL_HANDLE_DBC, connection_.get(), "committing");
    }
    leave_transaction();
}

void OdbcConnection::require_whole_transaction() {
    try {
        run(u"release savepoint vantlo");
    } catch (const Failure&) {
        remedy_ = std::max(remedy_, Remedy::save_again);
        throw;
    }
}

void OdbcConnection::roll_back() {
    if (!in_transaction_) return;
    if (!succeeded(SQLEndTran(SQL_HANDLE_DBC, connection_.get(), SQL_ROLLBACK))) disconnect();
    leave_transaction();
}

void OdbcConnection::leave_transaction() {
    in_transaction_ = false;
    transaction_failure_.reset();
    // Later statements must not run in a transaction that nobody commits.
    if (!set_autocommit(true)) disconnect();
}

bool OdbcConnection::set_autocommit(bool on) {
    return succeeded(SQLSetConnectAttr(connection_.get(), SQL_ATTR_AUTOCOMMIT,
                                       odbc_number(on ? SQL_AUTOCOMMIT_ON : SQL_AUTOCOMMIT_OFF), 0));
}

void OdbcConnection::fail(std::int16_t handle_type, void* handle, std::string_view what_was_done) {
    OdbcFailure failure = odbc_failure(handle_type, handle, what_was_done);
    // FreeTDS has many words for a lost connection.
    const FailureMeaning unknown{error::unspecified, Remedy::none};
    if (failure.meaning == unknown && is_dead(connection_.get())) failure.meaning.remedy = Remedy::connect_again;
    Failure raised(failure.meaning.number, std::move(failure.account));
    if (in_transaction_) {
        remedy_ = std::max(remedy_, failure.meaning.remedy);
        if (!transaction_failure_) transaction_failure_ = raised;
    } else {
        remedy_ = failure.meaning.remedy;
    }
    throw raised;
}

const Dialect& OdbcConnection::dialect() const { return dialect_named(engine_of(connection_.get()).dialect); }

std::string OdbcConnection::engine() const {
    SQLHDBC connection = connection_.get();
    return information(connection, SQL_DBMS_NAME) + " " + information(connection, SQL_DBMS_VER) + " (" +
           information(connection, SQL_DRIVER_NAME) + " " + information(connection, SQL_DRIVER_VER) + ")";
}

Owned<NativeConnection> open_odbc(std::string_view connection_string) {
    return Owned<NativeConnection>(new OdbcConnection(without_needless_braces(connection_string)));
}

}  // namespace vantlo
