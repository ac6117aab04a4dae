#pragma once

#include <chrono>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "bookkeeping/guarded_connection.h"

namespace vantlo {

/// Opens a connection. Errors: Failure.
using Connect = std::function<Owned<NativeConnection>()>;

/// Opens the databases of a list in turn, such as the nodes of a cluster. The names are those of open_connection. Each call
/// begins with the next database after the one opened last; if none can be opened, it raises the last failure.
/// `may_create` says whether a missing SQLite file is made.
Connect connect_in_turn(std::vector<std::string> databases, bool may_create = true);

/// How often a bill is tried, and the pauses in between. The longest possible pause doubles with each attempt. A connection
/// that was lost is opened again for a while, as a server may be starting; that counts as no attempt.
struct RetryPolicy {
    int attempts = 16;
    std::chrono::milliseconds first_pause{4};
    std::chrono::milliseconds longest_pause{2000};
    std::chrono::milliseconds reconnecting{60000};
    std::chrono::milliseconds reconnecting_pause{250};
};

/// Saves bills, each in its own transaction. It retries after a deadlock, a serialization failure, a duplicate key or a lost
/// connection. The same duplicate key in two attempts running is no race: then it gives up.
///
/// Each saving has a marker; its row in SavedBill commits with the bill. The marker shows whether a commit succeeded whose
/// answer was lost, so that nothing is posted twice. A second writer with the same marker waits, and then posts nothing.
///
/// Isolation: the engine's default level. Each statement sees what others have committed, and an update adds to the row's
/// present values.
///
/// Like the connection that it opens, it belongs to one thread at a time.
class TransactionRetry {
public:
    /// Writes a bill and calls the component, on the given connection, in the open transaction. Called once an attempt.
    /// Returns  0, or the number of the error that stopped it.
    using Work = std::function<std::int32_t(GuardedConnection&)>;

    /// Is told that a lost connection cannot be opened at once, and for how long that is tried.
    using Waits = std::function<void(std::chrono::milliseconds longest)>;

    /// Opens the first connection, without retry: a wrong name is reported at once. Errors: Failure.
    explicit TransactionRetry(Connect connect, RetryPolicy policy = {}, Waits waits = {});

    /// Saves one bill, all or nothing. `marker` names this saving and no other, in at most 64 characters.
    ///
    /// Returns  0 if the bill is in the database, also from an earlier saving; else what the last attempt returned, with
    ///          nothing of the bill in the database.
    /// Errors   what the last attempt raised, or the first failure of a statement if the work ignored it. After a lost
    ///          connection only the marker shows whether the bill is in the database; saving again under it is safe.
    std::int32_t save(TextView marker, const Work& work);

    /// How many attempts after the first all calls together have made.
    [[nodiscard]] long retries() const { return retries_; }

private:
    std::int32_t attempt(TextView marker, const Work& work);
    void reconnect();
    /// Rolls a failed attempt back, and drops a lost connection. Returns whether another attempt can help.
    bool roll_back_for_another();
    void pause(int failed_attempts);

    Connect connect_;
    RetryPolicy policy_;
    Waits waits_;
    std::optional<Owned<GuardedConnection>> connection_;
    std::optional<std::string> standing_key_;  // the database's words about a duplicate key in the previous attempt
    long retries_ = 0;
};

}  // namespace vantlo
