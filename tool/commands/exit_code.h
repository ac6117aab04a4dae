#pragma once

#include <string>

#include "automation/error_text.h"
#include "bills/task_error.h"

namespace vantlo {

/// What the process returns; scripts rely on the numbers, so new ones are appended. exit_code.cpp says in words what each means.
enum class ExitCode {
    done = 0,
    posting_failed = 1,
    usage = 2,
    differs = 3,
    no_database = 4,
    bad_input = 5,
    interrupted = 6,
    refused = 7,
    no_such_bill = 8,
    cannot_write = 9,
    internal_error = 10,
};

ExitCode exit_code_of(Reason reason);

/// Shape    a row each of number and meaning, in the order of the numbers: `before NUMBER between MEANING after`.
std::string exit_code_list(Language language, const char* before, const char* between, const char* after);

}  // namespace vantlo
