#include "posting/posting_frame.h"

#include <algorithm>

#include "automation/error.h"

namespace vantlo {

RecordsetVariable PostingFrame::execute(const Statement& statement) {
    const ConnectionReference connection = ado_conn_;
    if (connection.get() == nullptr) throw Failure(error::object_not_set);
    hold(connection);
    return connection.get()->execute(statement.text());
}

/// Keeps a connection until the frame ends: a recordset of it may still be held when the property changes again.
void PostingFrame::hold(const ConnectionReference& connection) {
    if (connection.get() == at_entry_.get()) return;
    const bool is_held = std::ranges::find(set_later_, connection.get(), &ConnectionReference::get) != set_later_.end();
    if (!is_held) set_later_.push_back(connection);
}

}  // namespace vantlo
