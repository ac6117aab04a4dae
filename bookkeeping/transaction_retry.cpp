#include "bookkeeping/transaction_retry.h"

#include <algorithm>
#include <random>
#include <thread>

#include "ado/native/open_connection.h"
#include "automation/error.h"
#include "bookkeeping/interrupt.h"
#include "dataaccess/sql_literals.h"

namespace vantlo {

namespace {

bool is_saved(NativeConnection& connection, TextView marker) {
    const Text look_up = u"select Marker from SavedBill where Marker=" + GetSqlVal(Text(marker));
    return !connection.run(look_up).rows.empty();
}

/// Inserts the marker. Returns false if another transaction has committed it already.
bool insert_marker(NativeConnection& connection, TextView marker) {
    try {
        connection.run(u"insert into SavedBill(Marker) values(" + GetSqlVal(Text(marker)) + u")");
        return true;
    } catch (const Failure& failure) {
        if (failure.number() != error::constraint_violated) throw;
        connection.roll_back();
        if (!is_saved(connection, marker)) throw;
        return false;
    }
}

/// The database's words about a duplicate key; nothing if the failure is another one, or null.
std::optional<std::string> refused_key(const std::exception_ptr& failure) {
    if (failure == nullptr) return std::nullopt;
    try {
        std::rethrow_exception(failure);
    } catch (const Failure& refusal) {
        if (refusal.number() == error::constraint_violated) return refusal.what();
    } catch (...) {
        // Not a failure of the database.
    }
    return std::nullopt;
}

Owned<GuardedConnection> guarded(Owned<NativeConnection> connection) {
    return Owned<GuardedConnection>(new GuardedConnection(std::move(connection)));
}

}  // namespace

Connect connect_in_turn(std::vector<std::string> databases, bool may_create) {
    return [databases = std::move(databases), may_create, next = std::size_t{0}]() mutable {
        for (std::size_t tried = 1;; ++tried) {
            const std::string& database = databases.at(next);
            next = (next + 1) % databases.size();
            try {
                return open_connection(database, may_create);
            } catch (const Failure&) {
                if (tried == databases.size()) throw;
            }
        }
    };
}

TransactionRetry::TransactionRetry(Connect connect, RetryPolicy policy, Waits waits)
    : connect_(std::move(connect)), policy_(policy), waits_(std::move(waits)), connection_(guarded(connect_())) {}

std::int32_t TransactionRetry::save(TextView marker, const Work& work) {
    standing_key_.reset();
    for (int failed_attempts = 0;; pause(failed_attempts)) {
        const bool is_last = ++failed_attempts == policy_.attempts;
        try {
            const std::int32_t result = attempt(marker, work);
            if (result == 0) return 0;
            if (!roll_back_for_another() || is_last) return result;
        } catch (...) {
            const bool another_helps = roll_back_for_another();
            stop_if_interrupted();  // which may be what the failure comes from
            if (!another_helps || is_last) throw;
        }
    }
}

std::int32_t TransactionRetry::attempt(TextView marker, const Work& work) {
    stop_if_interrupted();
    if (!connection_) reconnect();
    GuardedConnection& connection = **connection_;
    connection.begin();
    if (!insert_marker(connection.database(), marker)) return 0;
    const std::int32_t result = work(connection);
    if (result == 0) connection.commit();
    return result;
}

void TransactionRetry::reconnect() {
    const auto end = std::chrono::steady_clock::now() + policy_.reconnecting;
    for (bool is_first = true; !connection_; is_first = false) {
        stop_if_interrupted();
        try {
            connection_ = guarded(connect_());
        } catch (const Failure& failure) {
            if (failure.number() == error::login_failed || std::chrono::steady_clock::now() >= end) throw;
            if (is_first && waits_) waits_(policy_.reconnecting);
            std::this_thread::sleep_for(policy_.reconnecting_pause);
        }
    }
}

bool TransactionRetry::roll_back_for_another() {
    if (!connection_) return false;  // it could not be opened for all that time
    const std::optional<std::string> key = refused_key((*connection_)->failure());
    const Remedy remedy = (*connection_)->remedy();
    (*connection_)->roll_back();
    if (remedy == Remedy::connect_again) connection_.reset();
    const std::optional<std::string> key_before = std::exchange(standing_key_, key);
    if (key && key == key_before) return false;
    return remedy != Remedy::none;
}

void TransactionRetry::pause(int failed_attempts) {
    ++retries_;
    thread_local std::minstd_rand random(std::random_device{}());
    const auto doubled = policy_.first_pause * (1L << std::min(failed_attempts, 20));
    const long longest = std::min<long>(doubled.count(), policy_.longest_pause.count());
    // Random: writers that collided would collide again after equal pauses.
    std::this_thread::sleep_for(std::chrono::milliseconds(std::uniform_int_distribution<long>(0, longest)(random)));
}

}  // namespace vantlo
