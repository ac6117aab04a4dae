#pragma once

#include <functional>
#include <stdexcept>

#include "automation/error_text.h"
#include "host/bill_file.h"
#include "host/bill_saver.h"
#include "host/observed_connection.h"

namespace vantlo::host {

/// A bill that could not be saved or taken back; nothing of it was left behind.
class PostingFailed : public std::runtime_error {
    using std::runtime_error::runtime_error;
};

/// Keeps bills and the ledger of one database together: every bill is stored and posted, or taken back and deleted, in
/// one transaction, through the component, and again after a conflict or a lost connection (BillSaver).
///
/// Errors   besides those below, every call raises Interrupted if the user asks to stop meanwhile; its transaction is then
///          rolled back.
class Bookkeeping {
public:
    /// `show` sees every statement of a bill as it is sent; `language` is that of the error texts in PostingFailed, the
    /// component's own messages are Chinese.
    /// Errors   Failure, if no connection can be opened.
    explicit Bookkeeping(Connect connect, ObservedConnection::Show show = {}, Language language = Language::chinese);

    /// Stores master rows in one transaction; a row that is there already is replaced.
    void save_master(const std::vector<MasterRow>& rows);

    /// Stores a bill and posts it. Errors: PostingFailed with the user's messages and the database's words.
    void save(const Bill& bill);

    /// Takes a stored bill back and deletes it. Errors: PostingFailed; also if there is no such bill.
    void remove(const BillKind& kind, const Text& id);

    /// How many attempts after the first all calls together have made.
    [[nodiscard]] long retries() const { return saver_.retries(); }

private:
    class Session;

    void in_transaction(const std::string& what, const std::function<void(Session&)>& body);
    [[nodiscard]] Text next_marker();

    BillSaver saver_;
    ObservedConnection::Show show_;
    Language language_;
    Text name_;  ///< no other Bookkeeping has it, in any process
    long savings_ = 0;
};

/// Shows the messages of the component to the host: the platform's presenter, which keeps them until they are taken.
void collect_messages();

/// The messages shown since the last call, each on a line of its own.
std::string take_messages();

}  // namespace vantlo::host
