#pragma once

#include "dataaccess/recordsets.h"
#include "posting/line.h"
#include "posting/statement.h"

namespace vantlo {

/// The course of a member that posts one line in hand: prepares the look-up recordset, runs `body(lookup)` and
/// releases it.
template <typename Body>
void post_one_line(Body body) {
    RecordsetVariable lookup;
    Open_Recordset(lookup);
    body(lookup);
    Close_Recordset(lookup);
}

/// By what the stored lines are read: the connection's Execute, or the prepared recordset's own Open.
enum class LinesBy { execute, open };

/// What happens to the look-up recordset's variable around the lines.
enum class LookupVariable { prepared_and_released, prepared_only, neither };

/// The course of a member that posts stored lines: prepares its recordsets, reads the lines, runs `body(line, lookup)`
/// for each, closes the lines and releases.
/// Errors   raised to the caller; the recordsets are then let go of without being closed.
template <typename Body>
void post_stored_lines(Connection* connection, const Statement& select, Body body, LinesBy lines_by = LinesBy::execute,
                       LookupVariable lookup_variable = LookupVariable::prepared_and_released) {
    RecordsetVariable lines;
    RecordsetVariable lookup;
    Open_Recordset(lines);
    if (lookup_variable != LookupVariable::neither) Open_Recordset(lookup);
    if (lines_by == LinesBy::open) {
        held(lines).open(select.text());
    } else {
        lines = execute(connection, select);
    }
    for_each_line(lines, [&](Line& line) { body(line, lookup); });
    lines->close();
    Close_Recordset(lines);
    if (lookup_variable == LookupVariable::prepared_and_released) Close_Recordset(lookup);
}

}  // namespace vantlo
