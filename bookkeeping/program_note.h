#pragma once

#include "ado/native/native_connection.h"

namespace vantlo {

/// Names a program in the journal of movements while it works on the ledger without posting a bill: see docs/journal.md.
/// To be made in the transaction of the work, and ended in it.
class ProgramNote {
public:
    /// Errors   Failure.
    ProgramNote(NativeConnection& database, const Text& program);
    ProgramNote(const ProgramNote&) = delete;
    ProgramNote& operator=(const ProgramNote&) = delete;

    /// Ends the work. Errors   Failure.
    void end();

private:
    NativeConnection& database_;
    bool has_reader_ = true;
};

}  // namespace vantlo
