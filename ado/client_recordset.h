#pragma once

#include <memory>
#include <vector>

#include "ado/connection.h"

namespace vantlo {

/// A statement's result read to its end: what a client-side cursor holds.
struct ResultTable {
    std::vector<Text> columns;
    std::vector<std::vector<Variant>> rows;
    bool yields_rows = false;  ///< whether the statement is one that can return rows at all
};

/// A result whose rows its driver holds until somebody reads them.
class UnreadResult {
public:
    UnreadResult() = default;
    UnreadResult(const UnreadResult&) = delete;
    UnreadResult& operator=(const UnreadResult&) = delete;
    virtual ~UnreadResult() = default;

    [[nodiscard]] virtual bool has_rows() const = 0;

    /// All of it. To be called once.
    virtual ResultTable read() = 0;
};

/// A recordset over a ResultTable, opened through a connection or made of a result. A result that is not read yet,
/// which has to be one of rows, is read when a field is asked for or the first row left.
RecordsetVariable make_client_recordset();
RecordsetVariable make_client_recordset(ResultTable result);
RecordsetVariable make_client_recordset(std::unique_ptr<UnreadResult> result);

}  // namespace vantlo
