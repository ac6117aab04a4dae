#include "ado/native/native_connection.h"

#include "ado/native/statement_text.h"

namespace vantlo {

void NativeConnection::add_reference() noexcept { references_.fetch_add(1, std::memory_order_relaxed); }

void NativeConnection::release() noexcept {
    if (references_.fetch_sub(1, std::memory_order_acq_rel) == 1) delete this;
}

void NativeConnection::run_script(const std::string& script) {
    for (const Text& statement : statements_of(script)) run(statement);
}

RecordsetVariable NativeConnection::execute(TextView statement) {
    return make_client_recordset(run(statement), statement);
}

}  // namespace vantlo
