#pragma once

#include <string>
#include <vector>

#include "bench/baseline.h"
#include "bench/movements.h"

namespace vantlo::bench {

using BillLines = std::vector<Record>;
using BillStatements = std::vector<std::string>;  // in UTF-8

/// The baseline on either kind of database, with a connection of its own.
class BaselineConnection {
public:
    /// Opens the database, which is named as `vantlo` names it.
    /// Errors   std::runtime_error, here and below.
    explicit BaselineConnection(const std::string& database);
    BaselineConnection(const BaselineConnection&) = delete;
    BaselineConnection& operator=(const BaselineConnection&) = delete;
    ~BaselineConnection();

    /// Returns  how many rows the result had.
    long run(const std::string& statement);

    /// Runs the statements of a bill in one transaction.
    void post(const BillStatements& bill);

private:
    void begin();
    void commit();

    bool is_sqlite_;
    baseline_connection* connection_;
};

/// Posts a bill through the component, in one transaction, on a connection to that database.
void post(NativeConnection& database, Connection& connection, const BillLines& bill);

/// Posts a bill through the component, in one transaction.
/// Returns  its statements as the component issued them.
BillStatements post_and_capture(NativeConnection& database, const BillLines& bill);

}  // namespace vantlo::bench
