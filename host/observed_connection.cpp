#include "host/observed_connection.h"

#include "automation/error.h"

namespace vantlo::host {

RecordsetVariable ObservedConnection::execute(TextView statement) {
    if (show_) show_(statement);
    try {
        return database_.execute(statement);
    } catch (const Failure& failure) {
        account_ = failure.what();
        throw;
    }
}

}  // namespace vantlo::host
