#pragma once

#include <span>
#include <string_view>

namespace vantlo {

/// Where an engine takes two minus signs for the beginning of a comment.
enum class CommentRule { anywhere, before_blank, nowhere };

/// What is particular to the SQL of one kind of engine. Code reads these fields; it does not compare names.
struct Dialect {
    std::string_view name;  ///< the first part of the names of the engine's files in schema/

    /// Where `--` begins a comment, outside literals.
    CommentRule minus_minus;

    /// The text of the component's property DATAType, which decides how it writes dates.
    const char16_t* data_type;

    /// The statements by which a script for the engine's own client begins and ends a transaction; empty if it cannot.
    std::string_view begin_transaction;
    std::string_view commit_transaction;

    /// The statement that begins a transaction which reads one state of the database and writes nothing; `rollback` ends it.
    /// Null for an engine that has none by itself.
    const char16_t* begin_snapshot;

    /// The statement that makes a backslash in a literal an ordinary character; null where it is one by default.
    const char16_t* plain_backslashes;

    /// The quotes around an identifier of any characters; doubled, it stands for itself.
    char16_t identifier_quote;

    /// The fastest statement that deletes all rows of the ledger.
    std::string_view empty_ledger;

    /// Whether the engine runs in this process. Each connection in memory then has its own database.
    bool is_embedded;

    /// The exact sum of a column of quantities, whose name takes the place of `?`. A sum of floating-point numbers drifts.
    const char16_t* exact_sum;

    /// The day, as the text `yyyy-MM-dd`, of a column that the engine filled with the time of its clock, whose name takes
    /// the place of `?`; and whether that clock goes by UTC, not by local time.
    const char16_t* day_of_clock;
    bool has_utc_clock;

    /// A select of the columns of all tables: T the table, C the column, Y the type with its digits, S the character set,
    /// encoding or collation of texts. Null for an engine that does not describe its columns.
    const char16_t* columns_query;

    /// A select of the tables that keep what a transaction rolls back: T their name, E their storage engine. Null for an
    /// engine that rolls back every table.
    const char16_t* without_rollback_query;

    /// The statement that keeps others from changing the ledger up to the end of the transaction, once those who have
    /// changed it already are done. Null where `begin` does that, or nothing can.
    const char16_t* lock_ledger;
};

/// All dialects. The last is `unknown`, for every other engine.
std::span<const Dialect> dialects();

/// The dialect of that name, or `unknown`.
const Dialect& dialect_named(std::string_view name);

}  // namespace vantlo
