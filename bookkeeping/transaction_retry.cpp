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

/// Inserts the marker. Returns false if it is there already, committed by another transaction.
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

/// Passes statements on up to the first that fails, and raises its failure for each one after it: the engine may have ended
/// the transaction, and what ran on would be committed by itself. The component does run on where its unit look-up fails,
/// with the error number as the factor.
class WatchedConnection final : public NativeConnection {
public:
    WatchedConnection(NativeConnection& inner, std::optional<Failure>& first_failure)
        : inner_(inner), first_failure_(first_failure) {}

    ResultTable run(TextView statement) override {
        raise_first_failure();
        try {
            return inner_.run(statement);
        } catch (const Failure& failure) {
            first_failure_ = failure;
            throw;
        }
    }
    void begin() override { inner_.begin(); }
    void commit() override { inner_.commit(); }
    void roll_back() override { inner_.roll_back(); }
    [[nodiscard]] Remedy remedy() const override { return inner_.remedy(); }
    [[nodiscard]] std::string dialect() const override { return inner_.dialect(); }
    [[nodiscard]] std::string engine() const override { return inner_.engine(); }

    void raise_first_failure() const {
        if (first_failure_) throw *first_failure_;
    }

private:
    NativeConnection& inner_;
    std::optional<Failure>& first_failure_;
};

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

std::int32_t TransactionRetry::save(TextView marker, const Work& work) {
    standing_key_.clear();
    for (int failed_attempts = 0;; pause(failed_attempts)) {
        const bool is_last = ++failed_attempts == policy_.attempts;
        try {
            const std::int32_t result = attempt(marker, work);
            if (result == 0) return 0;
            if (!roll_back_for_another() || is_last) return result;
        } catch (...) {
            if (!roll_back_for_another() || is_last) throw;
        }
    }
}

std::int32_t TransactionRetry::attempt(TextView marker, const Work& work) {
    stop_if_interrupted();
    first_failure_.reset();
    if (!connection_) connection_ = connect_();
    NativeConnection& connection = **connection_;
    connection.begin();
    if (!insert_marker(connection, marker)) return 0;
    const Owned<WatchedConnection> watched(new WatchedConnection(connection, first_failure_));
    const std::int32_t result = work(*watched);
    if (result != 0) return result;
    watched->raise_first_failure();
    connection.commit();
    return 0;
}

bool TransactionRetry::roll_back_for_another() {
    if (!connection_) return true;
    const Remedy remedy = (*connection_)->remedy();
    (*connection_)->roll_back();
    if (remedy == Remedy::connect_again) connection_.reset();
    const bool is_key = first_failure_ && first_failure_->number() == error::constraint_violated;
    const std::string key_before = std::exchange(standing_key_, is_key ? first_failure_->what() : "");
    if (is_key && key_before == standing_key_) return false;
    return remedy != Remedy::none;
}

void TransactionRetry::pause(int failed_attempts) {
    ++retries_;
    thread_local std::minstd_rand random(std::random_device{}());
    const auto doubled = policy_.first_pause * (1L << std::min(failed_attempts, 20));
    const long longest = std::min<long>(doubled.count(), policy_.longest_pause.count());
    // Writers that met once would meet again if they waited equally long.
    std::this_thread::sleep_for(std::chrono::milliseconds(std::uniform_int_distribution<long>(0, longest)(random)));
}

}  // namespace vantlo
