#pragma once

#include "ado/connection.h"
#include "automation/text.h"
#include "automation/variant.h"
#include "posting/line.h"

namespace vantlo {

/// An SQL statement being put together from its fixed pieces and the literals of values.
class Statement {
public:
    Statement() { text_.reserve(usual_length); }

    Statement& piece(TextView text) {
        text_ += text;
        return *this;
    }

    /// The value as GetSqlVal writes it.
    Statement& literal(const Variant& value);

    /// The value as CStr writes it, without quotes. Errors: a null value fails its conversion to text.
    Statement& digits(const Variant& value);

    [[nodiscard]] TextView text() const { return text_; }

private:
    static constexpr std::size_t usual_length = 320;

    Text text_;
};

/// Runs a statement through the instance's connection. Errors: object_not_set without a connection.
RecordsetVariable execute(Connection* connection, const Statement& statement);

/// `select` followed by the literal of a bill's identifier.
Statement select_by_id(TextView select, const Text& id);

/// Calls `body` for each row that the recordset has left, and moves on after each.
template <typename Body>
void for_each_line(const RecordsetVariable& lines, Body body) {
    while (!lines->eof()) {
        StoredLine line(*lines);
        body(line);
        lines->move_next();
    }
}

}  // namespace vantlo
