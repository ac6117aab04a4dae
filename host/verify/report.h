#pragma once

#include <string>
#include <vector>

#include "automation/error_text.h"
#include "host/verify/checks.h"

namespace vantlo::host {

/// What is told of a comparison, for people: the causes in order, with the rows and the bills that touch them.
std::string report_of(const std::vector<Finding>& findings, const CourseOfBills& course, std::size_t ledger_rows,
                      Language language);

/// The notes below the report; empty if there are none.
std::string report_of(const std::vector<Note>& notes, Language language);

/// A cause in a few words.
std::string cause_text(Cause cause, Language language);

}  // namespace vantlo::host
