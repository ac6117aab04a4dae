#include "bookkeeping/observed_connection.h"

#include "automation/error.h"
#include "bookkeeping/interrupt.h"

namespace vantlo {

RecordsetVariable ObservedConnection::execute(TextView statement) {
    stop_if_interrupted();
    if (watch_ != nullptr) watch_->before(statement);
    if (show_) show_(statement);
    try {
        ResultTable result = database_.run(statement);
        if (watch_ != nullptr) watch_->after(statement, result);
        return make_client_recordset(std::move(result));
    } catch (const Failure& failure) {
        account_ = failure.what();
        throw;
    }
}

}  // namespace vantlo
