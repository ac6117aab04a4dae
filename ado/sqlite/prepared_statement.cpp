#include "ado/sqlite/prepared_statement.h"

#include <sqlite3.h>

#include <new>

#include "ado/sqlite/sqlite_failure.h"

namespace vantlo {

namespace {

Text column_text(sqlite3_stmt* statement, int column) {
    const void* const bytes = sqlite3_column_text(statement, column);
    if (bytes == nullptr) throw std::bad_alloc();  // a text is never absent otherwise
    return from_utf8(
        {static_cast<const char*>(bytes), static_cast<std::size_t>(sqlite3_column_bytes(statement, column))});
}

Variant read_field(sqlite3_stmt* statement, int column, DeclaredType type) {
    switch (sqlite3_column_type(statement, column)) {
        case SQLITE_NULL: return Null{};
        case SQLITE_INTEGER: return field_value(type, std::int64_t{sqlite3_column_int64(statement, column)});
        case SQLITE_FLOAT: return field_value(type, sqlite3_column_double(statement, column));
        case SQLITE_TEXT: return field_value(type, column_text(statement, column));
        default: return Other{};
    }
}

}  // namespace

void PreparedStatement::Finalizer::operator()(sqlite3_stmt* statement) const noexcept { sqlite3_finalize(statement); }

bool PreparedStatement::step(std::string_view what_was_done) {
    switch (sqlite3_step(get())) {
        case SQLITE_ROW: return true;
        case SQLITE_DONE: return false;
        default: throw sqlite_failure(sqlite3_db_handle(get()), what_was_done);
    }
}

ResultTable PreparedStatement::read_to_end(std::string_view what_was_done) {
    bool has_row = step(what_was_done);
    // After the first step, in which the engine prepares the statement again if the tables have changed.
    know_columns();
    ResultTable result;
    result.yields_rows = !column_names_.empty();
    result.columns = column_names_;
    for (; has_row; has_row = step(what_was_done)) {
        std::vector<Variant>& row = result.rows.emplace_back();
        row.reserve(column_types_.size());
        int column = 0;
        for (const DeclaredType type : column_types_) row.push_back(read_field(get(), column++, type));
    }
    // Of a statement of another kind the engine tells the count of the last one that changed rows.
    if (!result.yields_rows && sqlite3_stmt_readonly(get()) == 0) {
        result.changed_rows = sqlite3_changes64(sqlite3_db_handle(get()));
    }
    return result;
}

void PreparedStatement::know_columns() {
    const int preparation = sqlite3_stmt_status(get(), SQLITE_STMTSTATUS_REPREPARE, 0);
    if (preparation == preparation_) return;

    column_names_.clear();
    column_types_.clear();
    const int count = sqlite3_column_count(get());
    for (int column = 0; column < count; ++column) {
        const char* const name = sqlite3_column_name(get(), column);
        if (name == nullptr) throw std::bad_alloc();
        column_names_.push_back(from_utf8(name));
        const char* const declaration = sqlite3_column_decltype(get(), column);
        column_types_.push_back(declared_type(declaration != nullptr ? declaration : ""));
    }
    preparation_ = preparation;
}

}  // namespace vantlo
