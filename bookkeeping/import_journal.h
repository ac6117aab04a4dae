#pragma once

#include <string>
#include <vector>

#include "ado/native/native_connection.h"
#include "bills/bill.h"

namespace vantlo {

/// What a database knows of a bill that is to be saved or imported.
enum class BillState {
    absent,
    imported,  ///< with the same content
    imported_otherwise,
    stored,            ///< by another road than import, with the same content
    stored_otherwise,  ///< likewise, with other content
    other_kind,        ///< the id is that of a bill of another kind
    lost,              ///< imported, but its rows are gone
};

/// What a bill says, as a text that only its header and lines decide: version 1, UTF-8.
///
/// Shape    `1`, then for the header and for each line: `header` or `line`, and a line `COLUMN=VALUE` for each field, in the
///          order of the columns' names. A null is `null`, a number the shortest decimal that reads back as its Double
///          (a date is its day number), a text its length in bytes, a colon and its bytes.
/// Example  `1\nheader\nBillDate=45356\nRemarks=3:abc\nline\nActualqty=2.5\nGid=2:G1\n`
///
/// Any change of this text needs a new version, under which bills that were imported before are still compared by this one.
std::string content_text(const Bill& bill);

/// The identity of a bill's content: `sha256-1:` and the SHA-256 of content_text in 64 hexadecimal digits.
Text content_digest(const Bill& bill);

/// Whether PostingJournal's Content stands for this bill. Sixteen hexadecimal digits, which imports wrote before there was
/// content_digest, are compared as they were made.
bool is_content_of(TextView content, const Bill& bill);

/// The state of each bill. Reads the bill tables and PostingJournal, some hundred bills a statement.
std::vector<BillState> states_of(NativeConnection& database, const std::vector<Bill>& bills);

}  // namespace vantlo
