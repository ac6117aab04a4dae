#pragma once

#include <span>
#include <string_view>

namespace vantlo {

/// Where an engine takes two minus signs for the beginning of a comment.
enum class CommentRule { anywhere, before_blank, nowhere };

/// What is particular to the SQL of one kind of engine: whoever needs to know reads its row, nobody compares names.
struct Dialect {
    std::string_view name;  ///< after which the engine's files in schema/ are named

    /// Where `--` begins a comment, outside literals.
    CommentRule minus_minus;

    /// The text of the component's property DATAType, which decides how it writes dates.
    const char16_t* data_type;

    /// How a script for the engine's own client begins and ends a transaction; empty where scripts have none.
    std::string_view begin_transaction;
    std::string_view commit_transaction;

    /// Makes a backslash in a literal stand for itself; null where it does without being told.
    const char16_t* plain_backslashes;

    /// The quickest statement that empties the ledger, whatever it holds.
    std::string_view empty_ledger;

    /// Whether the engine runs in the process that uses it, each connection in memory with a database of its own.
    bool is_embedded;

    /// A select of the columns of all tables: T their table, C their name, Y their type with its digits, S the character
    /// set, encoding or collation of their texts. Null for an engine that has no such description.
    const char16_t* columns_query;
};

/// All dialects. The last is `unknown`, for an engine of which nothing is known.
std::span<const Dialect> dialects();

/// The dialect of that name; `unknown` for a name that none has.
const Dialect& dialect_named(std::string_view name);

}  // namespace vantlo
