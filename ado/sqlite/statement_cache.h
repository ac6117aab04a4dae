#pragma once

#include <cstddef>
#include <list>
#include <optional>
#include <string>

#include "ado/sqlite/parameterized_text.h"
#include "ado/sqlite/prepared_statement.h"

struct sqlite3;

namespace vantlo {

/// Runs statements as prepared ones: their literals become parameters, and the prepared statement is kept for the next text
/// of the same shape.
///
/// Between two calls no kept statement runs, holds a lock or has bound values; one that fails is not kept. The engine
/// prepares a kept statement again when tables, indexes or settings have changed.
class StatementCache {
public:
    /// Must end before the database is closed.
    explicit StatementCache(sqlite3* database) : database_(database) {}

    /// Runs a statement given in UTF-8, with the result and the failures that its plain text has.
    /// Returns  nothing, and has done nothing, for a statement that must run as plain text: one whose shape is not
    ///          understood, or does not compile.
    std::optional<ResultTable> run(const std::string& statement);

private:
    struct Kept {
        std::string shape;
        PreparedStatement statement;
    };

    /// Moves the prepared statement of the shape to the front of the list, or adds it. Returns: whether there is one.
    bool find_or_prepare(const std::string& statement);

    void bind_literals(sqlite3_stmt* prepared, const std::string& statement);
    int bind(sqlite3_stmt* prepared, int position, const Literal& literal);

    /// The number as the engine itself reads it: its rounding is not everywhere that of the C library.
    double real_value(const Literal& literal);

    static constexpr std::size_t most_kept = 64;

    sqlite3* database_;
    ParameterizedText parameterized_;
    std::list<Kept> kept_;  ///< the latest used first
    PreparedStatement number_reader_;
};

}  // namespace vantlo
