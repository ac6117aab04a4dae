#pragma once

#include <optional>
#include <string>
#include <vector>

#include "ado/native/native_connection.h"
#include "automation/error_text.h"
#include "bills/bill_kinds.h"

namespace vantlo {

/// A pair of tables that hold headers and lines, and the selects that read them under the names of this system's tables:
/// the header's id, Kind and columns, the lines' id, ItemNo and columns. Lines come in the order of their numbers.
struct BillSource {
    const BillTable* header;
    const BillTable* lines;
    Text select_headers;
    Text select_lines;
};

/// The tables of this system, which have a column Kind.
std::vector<BillSource> own_bill_sources();

/// The tables that a description names, as docs/adopting.md tells. `content` is its JSON in UTF-8.
/// Errors   TaskError with Reason::bad_input: all that is wrong, a line each, with the place in the description.
std::vector<BillSource> described_bill_sources(const std::string& content, const Dialect& dialect, Language language);

/// Whether the text can stand as one condition between parentheses: it has no comment, semicolon, backslash or dollar sign,
/// and its quotes and parentheses close.
bool is_one_condition(std::string_view text);

/// The description that is kept in the database; nothing if there is none.
std::optional<std::string> kept_description(NativeConnection& database);

/// The statements that keep a description, each with its semicolon on a line.
std::string script_keeping(const std::string& content);

/// Keeps a description in the table ShopDescription, in place of the one before. Errors: Failure.
void keep_description(NativeConnection& database, const std::string& content);

/// What an audit reads: the described tables; without a description those of this system, if all are there with their
/// kinds; else none.
/// Errors   as described_bill_sources, for a description that was spoilt in the database.
std::vector<BillSource> bill_sources(NativeConnection& database, Language language);

}  // namespace vantlo
