#pragma once

#include <functional>
#include <memory>
#include <optional>

#include "automation/error_text.h"
#include "bills/bill.h"
#include "bills/master_tables.h"
#include "bills/task_error.h"
#include "bookkeeping/posting_guard.h"
#include "bookkeeping/posting_note.h"
#include "bookkeeping/transaction_retry.h"

namespace vantlo {

/// What a host sees of its bookkeeping, call by call; every call does nothing unless it is told to.
class BookkeepingObserver {
public:
    BookkeepingObserver() = default;
    BookkeepingObserver(const BookkeepingObserver&) = delete;
    BookkeepingObserver& operator=(const BookkeepingObserver&) = delete;
    virtual ~BookkeepingObserver() = default;

    /// An attempt to save or take back begins.
    virtual void begins(const std::string& /*bill*/) {}
    /// A statement is sent.
    virtual void sends(TextView /*statement*/) {}
    /// The connection was lost and cannot be opened at once; it is tried for so long at most.
    virtual void waits_for_connection(std::chrono::milliseconds /*longest*/) {}
    /// Something is dubious; told once the bill is in the database, or has failed.
    virtual void warns(const std::string& /*bill*/, const Warning& /*warning*/) {}
    /// The bill is in the database, and has moved these rows.
    virtual void ends(const std::vector<LedgerChange>& /*changes*/) {}
};

/// Keeps bills and the ledger of one database together: every bill is stored and posted, or taken back and deleted, in
/// one transaction, through the component, and again after a conflict or a lost connection (TransactionRetry).
///
/// Errors   every call can end with a TaskError or a Failure, whose text begins with the bill's name; its transaction is then
///          rolled back. Reason::posting_failed has the user's messages and the database's words, Reason::refused is the
///          guard's, Reason::interrupted means that the user asked to stop meanwhile. A Failure means that the database
///          itself does not work: no connection, no table, no right to it.
class Bookkeeping {
public:
    /// The observer may be null. `language` is that of the error texts, the component's own messages are Chinese. Without a guard nothing is refused, no warning given and no change of a row told.
    /// Errors   Failure, if no connection can be opened.
    explicit Bookkeeping(Connect connect, std::shared_ptr<BookkeepingObserver> observer = {},
                         Language language = Language::chinese, std::optional<GuardRules> guard = {});

    /// Stores master rows in one transaction. A row that is there already takes the values that the new one knows.
    void save_master(std::span<const MasterRow> rows);

    /// Stores a bill and posts it.
    void save(const Bill& bill);

    /// Stores bills and posts them in one transaction, with a row of PostingJournal for each posting. If one fails, none of
    /// them is saved.
    void import(std::span<const Bill* const> bills);

    /// Takes a stored bill back and deletes it. Returns the bill. Errors: Reason::no_such_bill besides.
    Bill reverse(const BillKind& kind, const Text& id);

    /// How many attempts after the first all calls together have made.
    [[nodiscard]] long retries() const { return saver_.retries(); }

private:
    class Session;
    class Transaction;

    /// What a transaction does to one bill, or to master data.
    struct Step {
        std::string what;  ///< as people name it
        std::function<void(Session&)> work;
    };

    void in_transaction(const std::vector<Step>& steps);
    [[nodiscard]] Text next_marker();

    TransactionRetry saver_;
    std::shared_ptr<BookkeepingObserver> observer_;
    Language language_;
    std::optional<GuardRules> guard_;
    Findings findings_;
    PostingNote note_;
    Text name_;  ///< no other Bookkeeping has it, in any process
    long savings_ = 0;
};

/// Makes the component show its messages to the host: the hook that it sets keeps those of each thread until they are
/// taken.
void collect_messages();

/// The messages shown in this thread since its last call, each on a line of its own.
std::string take_messages();

}  // namespace vantlo
