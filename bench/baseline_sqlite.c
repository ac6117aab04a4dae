#include <sqlite3.h>
#include <stddef.h>

#include "baseline.h"

/* A connection is nothing but the engine's own handle. */
static sqlite3* handle_of(baseline_connection* connection) { return (sqlite3*)connection; }

baseline_connection* baseline_open_sqlite(const char* file) {
    sqlite3* database = NULL;
    const int flags = SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE | SQLITE_OPEN_NOMUTEX;
    if (sqlite3_open_v2(file, &database, flags, NULL) == SQLITE_OK) return (baseline_connection*)database;
    sqlite3_close(database);
    return NULL;
}

long baseline_run_sqlite(baseline_connection* connection, const char* statement) {
    sqlite3_stmt* prepared = NULL;
    if (sqlite3_prepare_v2(handle_of(connection), statement, -1, &prepared, NULL) != SQLITE_OK) return -1;
    long rows = 0;
    while (sqlite3_step(prepared) == SQLITE_ROW) ++rows;
    return sqlite3_finalize(prepared) == SQLITE_OK ? rows : -1;
}

void baseline_close_sqlite(baseline_connection* connection) { sqlite3_close(handle_of(connection)); }
