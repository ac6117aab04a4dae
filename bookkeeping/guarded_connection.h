#pragma once

#include <exception>
#include <functional>

#include "ado/native/native_connection.h"
#include "bookkeeping/posting_guard.h"

namespace vantlo {

/// The connection on which the work of a transaction runs.
///
/// After the first failure every later statement, and `commit`, raises that failure again: the engine may have ended the
/// transaction, and what ran after it would be committed alone. The component does continue when its unit look-up fails. It
/// turns each exception into an error number; the caller gets the exception itself from `raise_failure`.
class GuardedConnection final : public NativeConnection {
public:
    using Show = std::function<void(TextView statement)>;

    explicit GuardedConnection(Owned<NativeConnection> database) : database_(std::move(database)) {}

    /// Sets the observers of `execute`: `posting_guard` sees each statement before it is sent, and its result; `show`
    /// sees what is sent. Either may be empty.
    void observe(Show show, PostingGuard* posting_guard) {
        show_ = std::move(show);
        posting_guard_ = posting_guard;
    }

    /// Runs a statement of the posting, seen by the observers.
    /// Errors   also a TaskError: the user has asked to stop, or the posting guard refuses.
    RecordsetVariable execute(TextView statement) override;

    /// Runs a statement that no observer sees: what the posting guard itself asks the database.
    ResultTable run(TextView statement) override;

    void begin() override;
    void commit() override;
    void roll_back() override { database_->roll_back(); }
    [[nodiscard]] Remedy remedy() const override { return database_->remedy(); }
    [[nodiscard]] const Dialect& dialect() const override { return database_->dialect(); }
    [[nodiscard]] std::string engine() const override { return database_->engine(); }

    /// The first exception since `begin`; null if there was none.
    [[nodiscard]] const std::exception_ptr& failure() const { return failure_; }

    /// Errors   the first exception since `begin`, if there was one.
    void raise_failure() const {
        if (failure_ != nullptr) std::rethrow_exception(failure_);
    }

    /// The connection that it guards.
    [[nodiscard]] NativeConnection& database() const { return *database_; }

private:
    ~GuardedConnection() override = default;

    /// Calls, unless something has failed already; keeps what the call raises.
    template <typename Call>
    auto guarded(const Call& call);

    Owned<NativeConnection> database_;
    Show show_;
    PostingGuard* posting_guard_ = nullptr;
    std::exception_ptr failure_;
};

}  // namespace vantlo
