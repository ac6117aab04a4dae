#pragma once

#include "ado/native/native_connection.h"

namespace vantlo {

/// Tells a database what is being posted, so that its journal of movements names the bill: see docs/journal.md.
///
/// Servers are told once a bill, in one round trip, by settings of the session; they know the line where a bill has one,
/// and the member where one posts it. SQLite is told before each call of a member, in its table CurrentPosting.
///
/// Its statements are seen by nobody: they are not the component's.
class PostingNote {
public:
    /// What the session knows of a posting; item 0 and an empty member are unknown. Without a kind there is no bill.
    struct Posting {
        Text kind;
        Text bill;
        Text member = {};
        std::int32_t item = 0;
        Text program = u"vantlo";
    };

    /// To be called at the beginning of each transaction, on the connection that it is open on.
    void begin(NativeConnection& database);

    /// A bill is about to be posted; its member and line if there is one of each.
    void begin_bill(const Posting& posting);

    /// A program works on the ledger without posting a bill, until `end_program`.
    void begin_program(const Text& name);
    void end_program();

    /// A member is about to be called.
    void before_call(const Text& member, std::int32_t item);

    /// The bill is posted.
    void end_bill();

private:
    struct Way;
    static const Way ways[];

    NativeConnection* database_ = nullptr;
    const Way* way_ = nullptr;  ///< how this engine is told; null for one without a journal
    bool is_known_ = false;     ///< whether a server was asked
    bool has_reader_ = false;   ///< whether there is a journal that reads it
};

}  // namespace vantlo
