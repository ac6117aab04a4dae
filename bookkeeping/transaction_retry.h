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

/// Opens the databases of a list, named as open_connection names them, in turn: each call begins with the one after the
/// one that the call before it opened, and raises the last failure if none can be opened. For the nodes of a cluster.
/// `may_create` says whether an SQLite file that does not exist is made.
Connect connect_in_turn(std::vector<std::string> databases, bool may_create = true);

/// How often a bill is saved again, and how long after the failure: each pause is up to twice as long as the one before.
struct RetryPolicy {
    int attempts = 16;
    std::chrono::milliseconds first_pause{4};
    std::chrono::milliseconds longest_pause{2000};
};

/// Saves bills, each in a transaction of its own, and saves a bill again after a deadlock, a serialization failure, a key
/// that another session has inserted meanwhile, or a lost connection. A key that is there on the next attempt too was there
/// before the bill: then it gives up.
///
/// Each saving has a marker, whose row in SavedBill commits with the bill. A commit whose answer was lost is found by it,
/// so that nothing is posted twice; a second writer with the same marker waits for the first and then posts nothing.
///
/// Isolation: the engine's own level. Each statement then sees what others have committed, and an update adds to the row
/// as it is at that moment.
///
/// Like the connection that it opens, it belongs to one thread at a time.
class TransactionRetry {
public:
    /// Writes a bill and calls the component, all on the given connection, in a transaction that is open already.
    /// Returns  0, or the number of the error that stopped it. It is called again for another attempt.
    using Work = std::function<std::int32_t(GuardedConnection&)>;

    /// Opens the first connection, once: a wrong name is told without delay. Errors: Failure.
    explicit TransactionRetry(Connect connect, RetryPolicy policy = {});

    /// Saves one bill, all or nothing. `marker` names this saving and no other, in at most 64 characters.
    ///
    /// Returns  0 once the bill is in the database, and if it was there already; else what the last attempt returned, with
    ///          nothing in the database.
    /// Errors   whatever the last attempt raised, or a Failure of a statement that the bill passed over. After a lost
    ///          connection, whether the bill is in the database is known only by its marker: saving it again under the same
    ///          one is always right.
    std::int32_t save(TextView marker, const Work& work);

    /// How many attempts after the first all calls together have made.
    [[nodiscard]] long retries() const { return retries_; }

private:
    std::int32_t attempt(TextView marker, const Work& work);
    /// Ends a failed attempt, and lets go of a connection that is lost. Returns whether another attempt can help.
    bool roll_back_for_another();
    void pause(int failed_attempts);

    Connect connect_;
    RetryPolicy policy_;
    std::optional<Owned<GuardedConnection>> connection_;
    std::optional<std::string>
        standing_key_;  // what the database said of a repeated key, in the attempt before this one
    long retries_ = 0;
};

}  // namespace vantlo
