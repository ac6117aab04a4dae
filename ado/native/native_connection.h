#pragma once

#include <atomic>
#include <string>

#include "ado/client_recordset.h"
#include "ado/native/dialect.h"

namespace vantlo {

/// What a host can do after a failure, once it has rolled back: nothing, save its bill again, or connect and save again.
enum class Remedy { none, save_again, connect_again };

/// A connection of one of the native adapters, with what a native host needs beyond the port.
class NativeConnection : public Connection {
public:
    void add_reference() noexcept final;
    void release() noexcept final;

    /// Runs one statement as it stands and reads its result to the end.
    virtual ResultTable run(TextView statement) = 0;

    RecordsetVariable execute(TextView statement) override;

    // The host's transaction; the component never opens one.
    virtual void begin() = 0;
    virtual void commit() = 0;
    virtual void roll_back() = 0;

    /// The remedy for all failures since `begin`; outside a transaction, for the latest failure.
    [[nodiscard]] virtual Remedy remedy() const = 0;

    /// Runs a script of any number of statements, given in UTF-8, without reading their results.
    /// Errors   the first failing statement ends it; those before it stay applied.
    virtual void run_script(const std::string& script);

    /// What is particular to the engine's SQL: a row of `dialects()`.
    [[nodiscard]] virtual const Dialect& dialect() const = 0;

    /// Engine and driver with their versions, for people: `SQLite 3.40.1`.
    [[nodiscard]] virtual std::string engine() const = 0;

protected:
    ~NativeConnection() override = default;  // the last release ends it

private:
    std::atomic<long> references_{0};
};

/// A counted reference that keeps its connection's own type.
/// Example  `Owned<SqliteConnection> connection(new SqliteConnection(path));`
template <typename Type>
class Owned {
public:
    explicit Owned(Type* connection) : reference_(connection), connection_(connection) {}

    [[nodiscard]] Type* get() const { return connection_; }
    Type* operator->() const { return connection_; }
    Type& operator*() const { return *connection_; }

private:
    ConnectionReference reference_;
    Type* connection_;
};

}  // namespace vantlo
