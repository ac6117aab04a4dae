#pragma once

namespace vantlo {

/// What the process returns; scripts rely on the numbers.
enum class ExitCode {
    done = 0,
    posting_failed = 1,
    usage = 2,        ///< the command line is wrong
    differs = 3,      ///< the ledger does not hold what the bills say
    no_database = 4,  ///< it cannot be opened, or refused a statement outside a posting
    bad_input = 5,    ///< a file cannot be taken as it is
    interrupted = 6,
    refused = 7,  ///< a guard stopped the posting before it began
};

}  // namespace vantlo
