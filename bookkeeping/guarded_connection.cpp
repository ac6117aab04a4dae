#include "bookkeeping/guarded_connection.h"

#include "bookkeeping/interrupt.h"

namespace vantlo {

template <typename Call>
auto GuardedConnection::guarded(const Call& call) {
    raise_failure();
    try {
        return call();
    } catch (...) {
        // A failed query of the posting guard passes here twice: in `run`, and in the `execute` around it.
        if (failure_ == nullptr) failure_ = std::current_exception();
        throw;
    }
}

RecordsetVariable GuardedConnection::execute(TextView statement) {
    return guarded([&] {
        stop_if_interrupted();
        if (posting_guard_ != nullptr) posting_guard_->before(statement);
        if (show_) show_(statement);
        ResultTable result = database_->run(statement);
        if (posting_guard_ != nullptr) posting_guard_->after(statement, result);
        return make_client_recordset(std::move(result), statement);
    });
}

ResultTable GuardedConnection::run(TextView statement) {
    return guarded([&] { return database_->run(statement); });
}

void GuardedConnection::begin() {
    failure_ = nullptr;
    database_->begin();
}

void GuardedConnection::commit() {
    raise_failure();
    database_->commit();
}

}  // namespace vantlo
