#pragma once

#include <vector>

#include "ado/connection.h"
#include "dataaccess/recordsets.h"
#include "posting/line.h"
#include "posting/statement.h"

namespace vantlo {

/// What one call of a member holds until it returns: its recordset variables and the connections that it uses.
///
/// It is made outside the member's trap: a failure is shown while the recordsets are still held, and they are released
/// when the user has dismissed the message.
class PostingFrame {
public:
    /// `ado_conn` is the instance's property, which may change during the call; it has to outlive the frame.
    explicit PostingFrame(const ConnectionReference& ado_conn) : ado_conn_(ado_conn), at_entry_(ado_conn) {}
    PostingFrame(const PostingFrame&) = delete;
    PostingFrame& operator=(const PostingFrame&) = delete;
    ~PostingFrame() = default;

    /// Runs a statement through the connection that ADOConn refers to now.
    /// Errors   object_not_set if it is nothing; those of the connection.
    RecordsetVariable execute(const Statement& statement);

private:
    void hold(const ConnectionReference& connection);

    const ConnectionReference& ado_conn_;
    ConnectionReference at_entry_;
    std::vector<ConnectionReference> set_later_;

public:
    // Behind the connections, so that they are released before them.
    RecordsetVariable lines;   ///< the rows of a stored bill, or its header
    RecordsetVariable lookup;  ///< the ledger rows of the key that is being posted
};

/// The frame of a member that posts one line: prepares the look-up recordset, runs `body()` and releases it.
template <typename Body>
void post_one_line(PostingFrame& frame, Body body) {
    Open_Recordset(frame.lookup);
    body();
    Close_Recordset(frame.lookup);
}

/// Calls `body(line)` for each remaining row of the lines, and moves to the next row after each.
template <typename Body>
void for_each_line(PostingFrame& frame, Body body) {
    while (!frame.lines->eof()) {
        StoredLine line(*frame.lines);
        body(line);
        frame.lines->move_next();
    }
}

/// How the stored lines are read: by the connection's Execute, or by the prepared recordset's own Open.
enum class LinesBy { execute, open };

/// What happens to the look-up variable before and after the lines.
enum class LookupVariable { prepared_and_released, prepared_only, neither };

/// The frame of a member that posts stored lines: prepares its recordsets, reads the lines, runs `body(line)` for each,
/// closes the lines and releases both.
/// Errors   raised to the caller; the recordsets are then left open in the frame.
template <typename Body>
void post_stored_lines(PostingFrame& frame, const Statement& select, Body body, LinesBy lines_by = LinesBy::execute,
                       LookupVariable lookup_variable = LookupVariable::prepared_and_released) {
    Open_Recordset(frame.lines);
    if (lookup_variable != LookupVariable::neither) Open_Recordset(frame.lookup);
    if (lines_by == LinesBy::open) {
        require_set(frame.lines).open(select.text());
    } else {
        frame.lines = frame.execute(select);
    }
    for_each_line(frame, body);
    frame.lines->close();
    Close_Recordset(frame.lines);
    if (lookup_variable == LookupVariable::prepared_and_released) Close_Recordset(frame.lookup);
}

}  // namespace vantlo
