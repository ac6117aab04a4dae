#include <sql.h>
#include <sqlext.h>
#include <stdlib.h>
#include <string.h>

#include "baseline.h"

struct baseline_connection {
    SQLHENV environment;
    SQLHDBC handle;
};

baseline_connection* baseline_open_odbc(const char* connection_string) {
    baseline_connection* connection = calloc(1, sizeof *connection);
    if (connection == NULL) return NULL;
    SQLAllocHandle(SQL_HANDLE_ENV, SQL_NULL_HANDLE, &connection->environment);
    SQLSetEnvAttr(connection->environment, SQL_ATTR_ODBC_VERSION, (SQLPOINTER)SQL_OV_ODBC3, 0);
    SQLAllocHandle(SQL_HANDLE_DBC, connection->environment, &connection->handle);
    if (SQL_SUCCEEDED(SQLDriverConnect(connection->handle, NULL, (SQLCHAR*)connection_string, SQL_NTS, NULL, 0, NULL,
                                       SQL_DRIVER_NOPROMPT))) {
        return connection;
    }
    baseline_close_odbc(connection);
    return NULL;
}

long baseline_run_odbc(baseline_connection* connection, const char* statement) {
    SQLHSTMT handle = NULL;
    if (!SQL_SUCCEEDED(SQLAllocHandle(SQL_HANDLE_STMT, connection->handle, &handle))) return -1;
    SQLSMALLINT columns = 0;
    long rows = 0;
    SQLRETURN result = SQLExecDirect(handle, (SQLCHAR*)statement, SQL_NTS);
    if (SQL_SUCCEEDED(result)) SQLNumResultCols(handle, &columns);
    if (columns != 0) {
        while (SQL_SUCCEEDED(result = SQLFetch(handle))) ++rows;
    }
    SQLFreeHandle(SQL_HANDLE_STMT, handle);
    return SQL_SUCCEEDED(result) || result == SQL_NO_DATA ? rows : -1;
}

static int set_autocommit(baseline_connection* connection, SQLULEN mode) {
    return SQL_SUCCEEDED(SQLSetConnectAttr(connection->handle, SQL_ATTR_AUTOCOMMIT, (SQLPOINTER)mode, 0)) ? 0 : -1;
}

int baseline_begin_odbc(baseline_connection* connection) { return set_autocommit(connection, SQL_AUTOCOMMIT_OFF); }

int baseline_commit_odbc(baseline_connection* connection) {
    const SQLRETURN result = SQLEndTran(SQL_HANDLE_DBC, connection->handle, SQL_COMMIT);
    return set_autocommit(connection, SQL_AUTOCOMMIT_ON) == 0 && SQL_SUCCEEDED(result) ? 0 : -1;
}

void baseline_close_odbc(baseline_connection* connection) {
    SQLDisconnect(connection->handle);
    SQLFreeHandle(SQL_HANDLE_DBC, connection->handle);
    SQLFreeHandle(SQL_HANDLE_ENV, connection->environment);
    free(connection);
}
