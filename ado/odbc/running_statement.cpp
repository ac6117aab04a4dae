#include "ado/odbc/running_statement.h"

#include <sql.h>

#include <mutex>

#include "ado/native/adapters.h"

namespace vantlo {

namespace {

std::mutex list;
RunningStatement* first = nullptr;

}  // namespace

RunningStatement::RunningStatement(void* handle) : handle_(handle) {
    const std::lock_guard lock(list);
    next_ = first;
    if (next_ != nullptr) next_->previous_ = this;
    first = this;
}

RunningStatement::~RunningStatement() {
    const std::lock_guard lock(list);
    (previous_ == nullptr ? first : previous_->next_) = next_;
    if (next_ != nullptr) next_->previous_ = previous_;
}

void cancel_odbc_statements() noexcept {
    const std::lock_guard lock(list);
    for (const RunningStatement* running = first; running != nullptr; running = running->next_) {
        SQLCancel(running->handle_);
    }
}

}  // namespace vantlo
