#pragma once

#include <memory>
#include <string_view>
#include <vector>

#include "ado/native/native_connection.h"
#include "ado/sqlite/declared_type.h"

struct sqlite3_stmt;

namespace vantlo {

/// A prepared statement, or none, with what is known of its result's columns. It ends with this object.
class PreparedStatement {
public:
    PreparedStatement() = default;
    explicit PreparedStatement(sqlite3_stmt* statement) : statement_(statement) {}

    [[nodiscard]] sqlite3_stmt* get() const { return statement_.get(); }

    /// Moves to the next row, if there is one.
    /// Errors   Failure, its account naming what was done.
    bool step(std::string_view what_was_done);

    /// Runs it from the beginning and reads its result to the end.
    ResultTable read_to_end(std::string_view what_was_done);

private:
    struct Finalizer {
        void operator()(sqlite3_stmt* statement) const noexcept;
    };

    void know_columns();

    std::unique_ptr<sqlite3_stmt, Finalizer> statement_;
    std::vector<Text> column_names_;
    std::vector<DeclaredType> column_types_;
    int preparation_ = -1;  ///< how often the engine had prepared it when its columns were read
};

}  // namespace vantlo
