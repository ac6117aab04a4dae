#pragma once

#include <vector>

#include "bills/bill.h"
#include "component/member_table.h"

namespace vantlo {

/// Whether the member is called once for each line, with the line as its first argument.
bool is_fed_lines(const MemberCall& call);

/// The arguments of a call for a bill; `line` is null for a member that is given the bill's id.
std::vector<Argument> arguments_for(const MemberCall& call, const Bill& bill, Line* line);

}  // namespace vantlo
