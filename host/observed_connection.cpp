#include "host/observed_connection.h"

#include "automation/error.h"
#include "host/interrupt.h"

namespace vantlo::host {

RecordsetVariable ObservedConnection::execute(TextView statement) {
    stop_if_interrupted();
    if (show_) show_(statement);
    try {
        return database_.execute(statement);
    } catch (const Failure& failure) {
        account_ = failure.what();
        throw;
    }
}

}  // namespace vantlo::host
