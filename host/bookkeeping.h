#pragma once

#include <functional>
#include <stdexcept>

#include "automation/error_text.h"
#include "component/inventory_class.h"
#include "host/bill_file.h"
#include "host/observed_connection.h"

namespace vantlo::host {

/// A bill that could not be saved or taken back; nothing of it was left behind.
class PostingFailed : public std::runtime_error {
    using std::runtime_error::runtime_error;
};

/// Keeps bills and the ledger of one database together: every bill is stored and posted, or taken back and deleted, in
/// one transaction, through the component.
class Bookkeeping {
public:
    /// `language` is that of the error texts in PostingFailed; the component's own messages are Chinese.
    explicit Bookkeeping(ObservedConnection& connection, Language language = Language::chinese);
    Bookkeeping(const Bookkeeping&) = delete;
    Bookkeeping& operator=(const Bookkeeping&) = delete;
    ~Bookkeeping();

    /// Stores master rows in one transaction; a row that is there already is replaced.
    void save_master(const std::vector<MasterRow>& rows);

    /// Stores a bill and posts it. Errors: PostingFailed with the user's messages and the database's words.
    void save(const Bill& bill);

    /// Takes a stored bill back and deletes it. Errors: PostingFailed; also if there is no such bill.
    void remove(const BillKind& kind, const Text& id);

private:
    void in_transaction(const std::string& what, const std::function<void()>& body);
    void store(const Bill& bill);
    void post(std::span<const MemberCall> calls, const Bill& bill);
    void insert(const char16_t* table, const Record& record);
    std::vector<Record> read_lines(const BillTable& table, const Text& id);
    void erase(const BillTable& table, const Text& id);

    ObservedConnection& connection_;
    Language language_;
    Inventory_Class component_;
};

/// Shows the messages of the component to the host: the platform's presenter, which keeps them until they are taken.
void collect_messages();

/// The messages shown since the last call, each on a line of its own.
std::string take_messages();

}  // namespace vantlo::host
