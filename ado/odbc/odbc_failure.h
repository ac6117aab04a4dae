#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "ado/native/native_connection.h"
#include "automation/error.h"

namespace vantlo {

/// What a failure means to a host.
struct FailureMeaning {
    ErrorNumber number;  ///< the number that ADO would report
    Remedy remedy;

    friend bool operator==(const FailureMeaning&, const FailureMeaning&) = default;
};

/// What an SQLSTATE and the engine's own code beside it mean.
FailureMeaning meaning_of(std::string_view sql_state, std::int32_t native_code);

/// A failed ODBC call.
struct OdbcFailure {
    FailureMeaning meaning;
    std::string account;  ///< UTF-8. Example: `ODBC 42S02 1146 (Table 'Ledger' doesn't exist): select * from Ledger`
};

/// What the latest call on an ODBC handle left there, and what was being done.
OdbcFailure odbc_failure(std::int16_t handle_type, void* handle, std::string_view what_was_done);

}  // namespace vantlo
