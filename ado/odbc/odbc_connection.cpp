#include "ado/odbc/odbc_connection.h"

#include <sql.h>
#include <sqlext.h>

#include <algorithm>
#include <functional>
#include <new>
#include <utility>

#include "ado/odbc/connection_string.h"
#include "ado/odbc/engine.h"
#include "ado/odbc/field_type.h"
#include "ado/odbc/odbc_failure.h"
#include "ado/statement_text.h"

namespace vantlo {

namespace {

bool succeeded(SQLRETURN result) { return result == SQL_SUCCESS || result == SQL_SUCCESS_WITH_INFO; }

// The API takes texts that it only reads without const.
SQLCHAR* odbc_text(const std::string& text) { return reinterpret_cast<SQLCHAR*>(const_cast<char*>(text.c_str())); }

SQLPOINTER odbc_number(std::uintptr_t value) { return reinterpret_cast<SQLPOINTER>(value); }

std::string information(SQLHDBC connection, SQLUSMALLINT what) {
    char text[256] = "";
    SQLSMALLINT length = 0;
    SQLGetInfo(connection, what, text, sizeof text, &length);
    return text;
}

const Engine& engine_of(SQLHDBC connection) { return engine_named(information(connection, SQL_DBMS_NAME)); }

/// Raised inside while a result is read; its account is made where the handle's owner catches it.
struct StatementFailed {};

SQLRETURN checked(SQLRETURN result) {
    if (!succeeded(result) && result != SQL_NO_DATA) throw StatementFailed();
    return result;
}

struct Column {
    Text name;
    FieldType type;
};

Column describe(SQLHSTMT statement, SQLUSMALLINT number) {
    char name[512] = "";
    SQLSMALLINT sql_type = 0;
    SQLSMALLINT length = 0, decimals = 0, nullable = 0;
    SQLULEN size = 0;
    checked(SQLDescribeCol(statement, number, reinterpret_cast<SQLCHAR*>(name), sizeof name, &length, &sql_type, &size,
                           &decimals, &nullable));
    char type_name[128] = "";
    if (needs_type_name(sql_type)) {
        checked(SQLColAttribute(statement, number, SQL_DESC_TYPE_NAME, type_name, sizeof type_name, nullptr, nullptr));
    }
    return {from_utf8(name), field_type(sql_type, type_name)};
}

/// The bytes of a text field, or nothing for null.
std::optional<std::string> read_bytes(SQLHSTMT statement, SQLUSMALLINT column) {
    std::string bytes;
    char piece[4096];
    for (;;) {
        SQLLEN length = 0;  // of all that is left, the piece included
        if (checked(SQLGetData(statement, column, SQL_C_CHAR, piece, sizeof piece, &length)) == SQL_NO_DATA)
            return bytes;
        if (length == SQL_NULL_DATA) return std::nullopt;
        const std::size_t room = sizeof piece - 1;  // each piece ends in a NUL
        const bool is_last = length != SQL_NO_TOTAL && static_cast<std::size_t>(length) <= room;
        bytes.append(piece, is_last ? static_cast<std::size_t>(length) : room);
        if (is_last) return bytes;
    }
}

/// A field of a fixed size, or nothing for null.
template <typename Type>
std::optional<Type> read_fixed(SQLHSTMT statement, SQLUSMALLINT column, SQLSMALLINT c_type) {
    Type value{};
    SQLLEN length = 0;
    checked(SQLGetData(statement, column, c_type, &value, sizeof value, &length));
    if (length == SQL_NULL_DATA) return std::nullopt;
    return value;
}

template <typename Optional, typename Convert>
Variant or_null(const Optional& field, Convert convert) {
    if (!field) return Null{};
    return convert(*field);
}

/// The narrowest of the wanted type, Long and Other that holds a whole number.
template <typename Wanted>
Variant whole_number(std::int64_t value) {
    if (std::in_range<Wanted>(value)) return static_cast<Wanted>(value);
    if (std::in_range<std::int32_t>(value)) return static_cast<std::int32_t>(value);
    return Other{from_utf8(std::to_string(value))};
}

/// A date, or an Other where automation has no such day: MariaDB's 0000-00-00, a year beyond 9999.
Variant date_or_other(const DateParts& parts) {
    try {
        return date_of(parts);
    } catch (const Failure&) {
        return Other{};
    }
}

Variant read_whole_number(SQLHSTMT statement, SQLUSMALLINT column, Variant (*narrow)(std::int64_t)) {
    return or_null(read_fixed<std::int64_t>(statement, column, SQL_C_SBIGINT), narrow);
}

Variant read_field(SQLHSTMT statement, SQLUSMALLINT column, FieldType type) {
    switch (type) {
        case FieldType::text:
            return or_null(read_bytes(statement, column), [](const auto& bytes) { return from_utf8(bytes); });
        case FieldType::byte: return read_whole_number(statement, column, whole_number<std::uint8_t>);
        case FieldType::integer: return read_whole_number(statement, column, whole_number<std::int16_t>);
        case FieldType::long_integer: return read_whole_number(statement, column, whole_number<std::int32_t>);
        case FieldType::big_integer:
            return or_null(read_bytes(statement, column), [](const auto& digits) { return Other{from_utf8(digits)}; });
        case FieldType::exact: return or_null(read_bytes(statement, column), exact_number);
        case FieldType::single: return or_null(read_fixed<float>(statement, column, SQL_C_FLOAT), std::identity());
        case FieldType::double_precision:
            return or_null(read_fixed<double>(statement, column, SQL_C_DOUBLE), std::identity());
        case FieldType::boolean:
            return or_null(read_fixed<std::uint8_t>(statement, column, SQL_C_BIT), [](auto bit) { return bit != 0; });
        case FieldType::date:
            return or_null(read_fixed<SQL_DATE_STRUCT>(statement, column, SQL_C_TYPE_DATE), [](const auto& date) {
                return date_or_other({.year = date.year, .month = date.month, .day = date.day});
            });
        case FieldType::time:
            return or_null(read_fixed<SQL_TIME_STRUCT>(statement, column, SQL_C_TYPE_TIME), [](const auto& time) {
                return date_or_other({.hour = time.hour, .minute = time.minute, .second = time.second});
            });
        case FieldType::date_and_time:
            return or_null(
                read_fixed<SQL_TIMESTAMP_STRUCT>(statement, column, SQL_C_TYPE_TIMESTAMP), [](const auto& time) {
                    return date_or_other({time.year, time.month, time.day, time.hour, time.minute, time.second});
                });
        case FieldType::other: return or_null(read_bytes(statement, column), [](const auto&) { return Other{}; });
    }
    return Other{};
}

/// Whether a setting and its value, if there is one, is on.
bool says_on(const ResultTable& setting) { return !setting.rows.empty() && setting.rows[0].at(1) == Variant(u"ON"); }

/// Reads the result that a statement stands on, or none, to its end.
ResultTable read_result(SQLHSTMT statement) {
    SQLSMALLINT count = 0;
    checked(SQLNumResultCols(statement, &count));
    ResultTable result;
    result.yields_rows = count != 0;
    if (!result.yields_rows) return result;

    std::vector<FieldType> types;
    for (SQLSMALLINT number = 1; number <= count; ++number) {
        Column column = describe(statement, static_cast<SQLUSMALLINT>(number));
        result.columns.push_back(std::move(column.name));
        types.push_back(column.type);
    }
    while (checked(SQLFetch(statement)) != SQL_NO_DATA) {
        std::vector<Variant>& row = result.rows.emplace_back();
        row.reserve(types.size());
        SQLUSMALLINT number = 0;
        for (const FieldType type : types) row.push_back(read_field(statement, ++number, type));
    }
    return result;
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
        throw Failure(failure.meaning.number, without_password(std::move(failure.account), connection_string));
    }
    make_safe();
}

void OdbcConnection::make_safe() {
    const Engine& own = engine_of(connection_.get());
    for (const char16_t* setting : own.settings) {
        if (setting != nullptr) run(setting);
    }
    const std::string hazard = literal_hazard(run(own.probe).rows.at(0));
    if (!hazard.empty()) throw Failure(error::unspecified, engine() + " " + hazard);
    is_cluster_ = own.cluster_probe != nullptr && says_on(run(own.cluster_probe));
}

ResultTable OdbcConnection::run(TextView text) {
    const std::string bytes = checked_utf8(text);
    if (bytes.empty()) throw Failure(error::syntax_error, "the statement is empty");
    if (statement_ == nullptr) allocate_statement(bytes);
    SQLHSTMT handle = statement_.get();
    try {
        checked(SQLExecDirect(handle, odbc_text(bytes), static_cast<SQLINTEGER>(bytes.size())));
        ResultTable first = read_result(handle);
        while (checked(SQLMoreResults(handle)) != SQL_NO_DATA) read_result(handle);
        checked(SQLFreeStmt(handle, SQL_CLOSE));
        return first;
    } catch (const StatementFailed&) {
        const StatementHandle failed = std::move(statement_);
        fail(SQL_HANDLE_STMT, handle, bytes);
    } catch (...) {
        statement_.reset();
        throw;
    }
}

void OdbcConnection::allocate_statement(std::string_view first_use) {
    SQLHANDLE handle = nullptr;
    if (!succeeded(SQLAllocHandle(SQL_HANDLE_STMT, connection_.get(), &handle))) {
        fail(SQL_HANDLE_DBC, connection_.get(), first_use);
    }
    statement_.reset(handle);
    // Some drivers look for escapes outside quotes only and do not know the attribute; the tests tell.
    SQLSetStmtAttr(handle, SQL_ATTR_NOSCAN, odbc_number(SQL_NOSCAN_ON), 0);
}

void OdbcConnection::disconnect() {
    statement_.reset();  // which would otherwise end with the connection, and once more
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
    // Statements to come must not wait in a transaction that nobody commits.
    if (!set_autocommit(true)) disconnect();
}

bool OdbcConnection::set_autocommit(bool on) {
    return succeeded(SQLSetConnectAttr(connection_.get(), SQL_ATTR_AUTOCOMMIT,
                                       odbc_number(on ? SQL_AUTOCOMMIT_ON : SQL_AUTOCOMMIT_OFF), 0));
}

void OdbcConnection::fail(std::int16_t handle_type, void* handle, std::string_view what_was_done) {
    OdbcFailure failure = odbc_failure(handle_type, handle, what_was_done);
    Failure raised(failure.meaning.number, std::move(failure.account));
    if (in_transaction_) {
        remedy_ = std::max(remedy_, failure.meaning.remedy);
        if (!transaction_failure_) transaction_failure_ = raised;
    } else {
        remedy_ = failure.meaning.remedy;
    }
    throw raised;
}

std::string OdbcConnection::dialect() const { return engine_of(connection_.get()).dialect; }

std::string OdbcConnection::engine() const {
    SQLHDBC connection = connection_.get();
    return information(connection, SQL_DBMS_NAME) + " " + information(connection, SQL_DBMS_VER) + " (" +
           information(connection, SQL_DRIVER_NAME) + " " + information(connection, SQL_DRIVER_VER) + ")";
}

}  // namespace vantlo
