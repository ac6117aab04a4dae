#pragma once

#include <array>
#include <chrono>
#include <memory>
#include <optional>
#include <string>

#include "ado/native/native_connection.h"
#include "automation/error.h"

namespace vantlo {

struct OdbcOptions {
    std::chrono::seconds login_time_out{15};
};

/// A connection to a database server through its ODBC driver.
///
/// Calls are the narrow ones with UTF-8, statements go to the driver as they stand, and each result is read to its end
/// before the next statement: some servers refuse a second one while one is open.
///
/// Connecting makes the engine do what the statements say, whatever its settings, or fails: the doubled quote is the only
/// escape in a literal, characters of every plane come back whole, a select has all its rows, a commit ends a transaction
/// (see engine.cpp).
///
/// Errors   Failure; its account begins with SQLSTATE, the engine's code and message, `ODBC 42S02 1146 (Table …): …`.
///          The password of the connection string is in none of them.
///
/// A connection belongs to one thread at a time: nothing in it is locked.
class OdbcConnection final : public NativeConnection {
public:
    /// Connects with a connection string given in UTF-8. Example: `Driver={MariaDB Unicode};Server=db;Database=shop;…`
    explicit OdbcConnection(const std::string& connection_string, const OdbcOptions& options = {});

    /// Returns  the first result where a statement yields several; all of them are read.
    /// Errors   also bad_argument for a text with a NUL or half a surrogate pair, before anything is sent.
    ResultTable run(TextView statement) override;

    void begin() override;

    /// Errors   if a statement has failed since `begin`: rolls back and raises that failure again. The engine may have
    ///          ended the transaction at that failure; a commit would then apply only what followed. Galera can roll back
    ///          silently; releasing a savepoint set at begin detects it.
    void commit() override;

    /// Does nothing if no transaction is open. A connection that cannot roll back is closed, and its server does it;
    /// SQL Server fails here after a deadlock, having rolled back by itself. The remedy is then to connect again.
    void roll_back() override;

    [[nodiscard]] Remedy remedy() const override { return remedy_; }
    [[nodiscard]] const Dialect& dialect() const override;
    [[nodiscard]] std::string engine() const override;

private:
    struct EnvironmentCloser {
        void operator()(void* environment) const noexcept;
    };
    struct ConnectionCloser {
        void operator()(void* connection) const noexcept;
    };
    struct StatementCloser {
        void operator()(void* statement) const noexcept;
    };
    using StatementHandle = std::unique_ptr<void, StatementCloser>;

    ~OdbcConnection() override = default;

    void make_safe();
    StatementHandle take_statement(std::string_view first_use);
    void keep_statement(StatementHandle statement);
    void disconnect();

    void require_whole_transaction();
    void leave_transaction();
    bool set_autocommit(bool on);

    /// Remembers what the failed call on a handle means, and raises it.
    [[noreturn]] void fail(std::int16_t handle_type, void* handle, std::string_view what_was_done);

    std::unique_ptr<void, EnvironmentCloser> environment_;
    std::unique_ptr<void, ConnectionCloser> connection_;
    std::array<StatementHandle, 2> idle_statements_;  // for the next statements: drivers take long to make one
    bool is_cluster_ = false;
    bool in_transaction_ = false;
    std::optional<Failure> transaction_failure_;  // the first one since begin
    Remedy remedy_ = Remedy::none;
};

}  // namespace vantlo
