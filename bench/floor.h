/* The least that a C program can do to run statements on an engine: no text is made, no value is read. */
#ifndef VANTLO_BENCH_FLOOR_H
#define VANTLO_BENCH_FLOOR_H

#ifdef __cplusplus
extern "C" {
#endif

/* A connection that belongs to the floor alone. */
typedef struct floor_connection floor_connection;

/* Opens a database file, `:memory:` for one in memory; null if it cannot be opened. */
floor_connection* floor_open_sqlite(const char* file);

/* Connects with an ODBC connection string; null if that fails. */
floor_connection* floor_open_odbc(const char* connection_string);

/* Runs a statement in UTF-8 and steps through its rows. Returns: how many rows it had, -1 for a failure. */
long floor_run_sqlite(floor_connection* connection, const char* statement);
long floor_run_odbc(floor_connection* connection, const char* statement);

/* Begins a transaction, or ends the one that was begun. Returns: 0, or -1 for a failure. */
int floor_begin_odbc(floor_connection* connection);
int floor_commit_odbc(floor_connection* connection);

void floor_close_sqlite(floor_connection* connection);
void floor_close_odbc(floor_connection* connection);

#ifdef __cplusplus
}
#endif

#endif
