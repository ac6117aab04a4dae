/* The least that a C program can do to run statements on an engine: no text is made, no value is read. */
#ifndef VANTLO_BENCH_BASELINE_H
#define VANTLO_BENCH_BASELINE_H

#ifdef __cplusplus
extern "C" {
#endif

/* A connection that belongs to the baseline alone. */
typedef struct baseline_connection baseline_connection;

/* Opens a database file, `:memory:` for one in memory; null if it cannot be opened. */
baseline_connection* baseline_open_sqlite(const char* file);

/* Connects with an ODBC connection string; null if that fails. */
baseline_connection* baseline_open_odbc(const char* connection_string);

/* Runs a statement in UTF-8 and steps through its rows. Returns: how many rows it had, -1 for a failure. */
long baseline_run_sqlite(baseline_connection* connection, const char* statement);
long baseline_run_odbc(baseline_connection* connection, const char* statement);

/* Begins a transaction, or ends the one that was begun. Returns: 0, or -1 for a failure. */
int baseline_begin_odbc(baseline_connection* connection);
int baseline_commit_odbc(baseline_connection* connection);

void baseline_close_sqlite(baseline_connection* connection);
void baseline_close_odbc(baseline_connection* connection);

#ifdef __cplusplus
}
#endif

#endif
