#include "bookkeeping/bookkeeping.h"

#include <fmt/format.h>

#include <algorithm>
#include <random>

#include "automation/message.h"
#include "bookkeeping/bill_history.h"
#include "bookkeeping/call_arguments.h"
#include "bookkeeping/import_journal.h"
#include "bookkeeping/interrupt.h"
#include "bookkeeping/stored_bill.h"
#include "component/inventory_class.h"
#include "dataaccess/shell_hooks.h"
#include "dataaccess/sql_literals.h"

namespace vantlo {

namespace words {

// clang-format off
constexpr Message no_such_bill   = {"没有这张单据", "there is no such bill"};
constexpr Message master_data    = {"基础资料", "master data"};
constexpr Message interrupted    = {"已中断；未完成的部分已回滚", "interrupted; what was begun is rolled back"};
constexpr Message call_failed    = {"{} 返回 {}（{}）", "{} returned {} ({})"};
// clang-format on

}  // namespace words

namespace {

thread_local std::string shown_messages;  // a posting shows its own in the thread that called it

void keep_message(const char16_t* text, const char16_t*, std::int32_t) noexcept {
    try {
        shown_messages += to_utf8(text) + "\n";
    } catch (...) {
        // Without memory for the message, the posting's result still tells of the failure.
    }
}

/// A bill as people name it.
std::string name_of(const BillKind& kind, const Text& id) { return fmt::format("{} {}", kind.name, to_utf8(id)); }

/// Whether a failure says that the database does not work, whatever bill is posted.
bool is_of_database(const Failure& failure) {
    constexpr ErrorNumber numbers[] = {error::no_such_table, error::no_such_column, error::permission_denied,
                                       error::login_failed,  error::unspecified,    error::no_connection,
                                       error::out_of_memory};
    return std::ranges::find(numbers, failure.number()) != std::end(numbers);
}

/// What is known of all movements of a bill.
PostingNote::Posting posting_of(std::span<const MemberCall> calls, const Bill& bill) {
    PostingNote::Posting posting{from_utf8(bill.kind->name), bill.id};
    if (calls.size() == 1) posting.member = calls.front().member;
    if (bill.lines.size() == 1) posting.item = 1;
    return posting;
}

/// Passes on to an observer, which may be null, that a lost connection is waited for.
TransactionRetry::Waits waits_of(const std::shared_ptr<BookkeepingObserver>& observer) {
    return [observer](std::chrono::milliseconds longest) {
        if (observer != nullptr) observer->waits_for_connection(longest);
    };
}

}  // namespace

void collect_messages() {
    ShellHooks hooks = shell_hooks();
    hooks.show_message = keep_message;
    set_shell_hooks(hooks);
}

std::string take_messages() { return std::exchange(shown_messages, {}); }

/// The work of one transaction, on the connection that it is open on.
class Bookkeeping::Session {
public:
    Session(GuardedConnection& connection, const GuardedConnection::Show& show, Language language,
            PostingGuard* posting_guard, PostingNote& note)
        : connection_(connection), language_(language), posting_guard_(posting_guard), note_(note) {
        connection.observe(show, posting_guard);
        component_.let_DATAType(connection.dialect().data_type);
        component_.set_ADOConn(&connection);
    }
    Session(const Session&) = delete;
    Session& operator=(const Session&) = delete;
    ~Session() {
        component_.set_ADOConn(nullptr);
        connection_.observe({}, nullptr);
    }

    /// Errors   TaskError with Reason::refused, if there is a guard: PostingGuard::require_reversible.
    void require_reversible(const Bill& bill);
    void store(const Bill& bill);
    Bill stored(const BillKind& kind, const Text& id);
    /// `posted` is called after each call of a member, with the line's number or 0 for the whole bill.
    void post(std::span<const MemberCall> calls, const Bill& bill,
              const std::function<void(const MemberCall& call, std::int32_t item)>& posted = {});
    /// Posts the reversal. Errors: if there is a guard, PostingGuard::require_opposite.
    void take_back(const Bill& bill);
    void enter_into_journal(const Bill& bill, const MemberCall& call, std::int32_t item, const Text& content);
    void erase_from_journal(const Bill& bill);
    void replace(const MasterRow& row);
    void insert(const char16_t* table, const Record& record);
    void erase(const BillTable& table, const Text& id);
    /// Enters what was done into the history: the last statement, so that bills on the same ledger rows stand in its order.
    void record(TextView action, const Bill& bill, const Variant& content);

private:
    /// What the database said of the failure that stopped a member; empty if it was none of the database's.
    /// Errors   whatever else stopped it: a TaskError.
    [[nodiscard]] std::string account_of_failure() const;

    GuardedConnection& connection_;
    Language language_;
    PostingGuard* posting_guard_;
    PostingNote& note_;
    Inventory_Class component_;
};

Bookkeeping::Bookkeeping(Connect connect, std::shared_ptr<BookkeepingObserver> observer, Language language,
                         std::optional<GuardRules> guard)
    : saver_(std::move(connect), {}, waits_of(observer)),
      observer_(std::move(observer)),
      language_(language),
      guard_(guard) {
    std::random_device random;
    for (int word = 0; word < 4; ++word) name_ += from_utf8(fmt::format("{:08x}", random()));
}

void Bookkeeping::save_master(std::span<const MasterRow> rows) {
    in_transaction({{words::master_data.in(language_), [&](Session& session) {
                         for (const MasterRow& row : rows) session.replace(row);
                     }}});
}

void Bookkeeping::save(const Bill& bill) {
    in_transaction({{name_of(*bill.kind, bill.id), [&](Session& session) {
                         session.store(bill);
                         session.post(bill.kind->post, bill);
                         session.require_reversible(bill);
                         session.record(history_action::save, bill, Null{});
                     }}});
}

void Bookkeeping::import(std::span<const Bill* const> bills) {
    std::vector<Step> steps;
    for (const Bill* const bill : bills) {
        steps.push_back({name_of(*bill->kind, bill->id), [bill](Session& session) {
                             session.store(*bill);
                             const Text content = content_digest(*bill);
                             session.post(bill->kind->post, *bill, [&](const MemberCall& call, std::int32_t item) {
                                 session.enter_into_journal(*bill, call, item, content);
                             });
                             session.require_reversible(*bill);
                             session.record(history_action::save, *bill, Null{});
                         }});
    }
    in_transaction(steps);
}

Bill Bookkeeping::reverse(const BillKind& kind, const Text& id) {
    Bill bill;
    in_transaction({{name_of(kind, id), [&](Session& session) {
                         bill = session.stored(kind, id);
                         session.take_back(bill);
                         session.erase_from_journal(bill);
                         session.erase(*kind.lines, id);
                         session.erase(*kind.header, id);
                         session.record(history_action::reverse, bill, bill_content(bill));
                     }}});
    return bill;
}

/// One call of Bookkeeping: its steps, and what each has come to in the latest attempt.
class Bookkeeping::Transaction {
public:
    Transaction(Bookkeeping& owner, const std::vector<Step>& steps)
        : owner_(owner), observer_(owner.observer_.get()), steps_(steps) {
        if (observer_ != nullptr) show_ = [this](TextView statement) { observer_->sends(statement); };
    }

    /// Takes all steps, in the transaction that is open; once more for each attempt.
    void attempt(GuardedConnection& database) {
        take_messages();  // those of an attempt that failed
        outcomes_.clear();
        owner_.findings_.begin();
        owner_.note_.begin(database);
        for (const Step& step : steps_) take(database, step);
    }

    void succeed() {
        owner_.findings_.commit();
        report_warnings();
        for (const Outcome& outcome : outcomes_) {
            if (observer_ != nullptr) observer_->ends(outcome.changes);
        }
    }

    /// Returns what happened, behind where it did: the last step that was begun, or the first if none was.
    std::string fail(const std::string& account) {
        if (!outcomes_.empty()) outcomes_.back().warnings = std::exchange(owner_.findings_.warnings, {});
        report_warnings();
        return fmt::format("{}: {}", outcomes_.empty() ? steps_.front().what : outcomes_.back().what, account);
    }

private:
    struct Outcome {
        std::string what;
        std::vector<Warning> warnings;
        std::vector<LedgerChange> changes;
    };

    void take(GuardedConnection& database, const Step& step) {
        Outcome& outcome = outcomes_.emplace_back();
        outcome.what = step.what;
        if (observer_ != nullptr) observer_->begins(step.what);
        std::optional<PostingGuard> posting_guard;
        if (owner_.guard_) posting_guard.emplace(database, *owner_.guard_, owner_.language_, owner_.findings_);
        Session session(database, show_, owner_.language_, posting_guard ? &*posting_guard : nullptr, owner_.note_);
        step.work(session);
        if (posting_guard) outcome.changes = posting_guard->changes();
        if (posting_guard) posting_guard->look_at_stock(outcome.changes);
        outcome.warnings = std::exchange(owner_.findings_.warnings, {});
    }

    void report_warnings() {
        if (observer_ == nullptr) return;
        for (const Outcome& outcome : outcomes_) {
            for (const Warning& warning : outcome.warnings) observer_->warns(outcome.what, warning);
        }
    }

    Bookkeeping& owner_;
    BookkeepingObserver* observer_;
    const std::vector<Step>& steps_;
    GuardedConnection::Show show_;
    std::vector<Outcome> outcomes_;
};

void Bookkeeping::in_transaction(const std::vector<Step>& steps) {
    Transaction transaction(*this, steps);
    try {
        saver_.save(next_marker(), [&](GuardedConnection& database) {
            transaction.attempt(database);
            return std::int32_t{0};
        });
    } catch (const TaskError& error) {
        if (error.reason() == Reason::interrupted)
            throw TaskError(Reason::interrupted, words::interrupted.in(language_));
        throw TaskError(error.reason(), transaction.fail(error.what()));
    } catch (const Failure& failure) {
        const std::string account = transaction.fail(account_of(failure, language_));
        if (is_of_database(failure)) throw Failure(failure.number(), account);
        throw TaskError(Reason::posting_failed, account);
    }
    transaction.succeed();
}

Text Bookkeeping::next_marker() { return name_ + from_utf8(fmt::format("-{}", ++savings_)); }

void Bookkeeping::Session::require_reversible(const Bill& bill) {
    if (posting_guard_ != nullptr) posting_guard_->require_reversible(bill);
}

void Bookkeeping::Session::store(const Bill& bill) {
    const BillTable& header = *bill.kind->header;
    Record row;
    row.set(header.id_column, bill.id);
    row.set(u"Kind", from_utf8(bill.kind->name));
    for (const Record::Field& field : bill.header.fields()) row.set(field.column, field.value);
    insert(header.name, row);
    std::int32_t number = 0;
    for (const Record& line : bill.lines) {
        Record item;
        item.set(bill.kind->lines->id_column, bill.id);
        item.set(u"ItemNo", ++number);
        for (const Record::Field& field : line.fields()) item.set(field.column, field.value);
        insert(bill.kind->lines->name, item);
    }
}

Bill Bookkeeping::Session::stored(const BillKind& kind, const Text& id) {
    std::optional<Bill> bill = stored_bill(connection_, kind, id);
    if (!bill) throw TaskError(Reason::no_such_bill, words::no_such_bill.in(language_));
    return *std::move(bill);
}

void Bookkeeping::Session::post(std::span<const MemberCall> calls, const Bill& bill,
                                const std::function<void(const MemberCall& call, std::int32_t item)>& posted) {
    if (posting_guard_ != nullptr) posting_guard_->look_at(bill);
    note_.begin_bill(posting_of(calls, bill));
    for (const MemberCall& call : calls) {
        const Member& member = *find_method(call.member);
        const auto post_one = [&](Line* line, std::int32_t item) {
            note_.before_call(call.member, item);
            const std::int32_t result = component_.call(member, arguments_for(call, bill, line));
            if (result == 0) {
                if (posted) posted(call, item);
                return;
            }
            const std::string account = account_of_failure();
            const std::string what = say(language_, words::call_failed, to_utf8(call.member), result,
                                         to_utf8(standard_text(result, language_)));
            throw TaskError(Reason::posting_failed, what + "\n" + take_messages() + account);
        };
        if (!is_fed_lines(call)) post_one(nullptr, 0);
        std::int32_t item = 0;
        for (const Record& record : bill.lines) {
            if (!is_fed_lines(call)) break;
            RecordLine line(record, bill.kind->warehouse_column);
            post_one(&line, ++item);
        }
    }
    note_.end_bill();
}

void Bookkeeping::Session::take_back(const Bill& bill) {
    std::vector<PostedQuantity> posted;
    if (posting_guard_ != nullptr) posted = posted_quantities(connection_, bill);
    post(bill.kind->reversal, bill);
    if (posting_guard_ != nullptr) posting_guard_->require_opposite(bill, posted);
}

std::string Bookkeeping::Session::account_of_failure() const {
    try {
        connection_.raise_failure();
    } catch (const Failure& failure) {
        return failure.what();
    }
    return {};
}

void Bookkeeping::Session::enter_into_journal(const Bill& bill, const MemberCall& call, std::int32_t item,
                                              const Text& content) {
    Record entry;
    entry.set(u"Kind", from_utf8(bill.kind->name));
    entry.set(u"BillId", bill.id);
    entry.set(u"Member", Text(call.member));
    entry.set(u"ItemNo", item);
    entry.set(u"Content", content);
    insert(u"PostingJournal", entry);
}

void Bookkeeping::Session::erase_from_journal(const Bill& bill) {
    connection_.execute(u"delete from PostingJournal where BillId=" + GetSqlVal(bill.id) + u" and Kind=" +
                        GetSqlVal(from_utf8(bill.kind->name)));
}

void Bookkeeping::Session::replace(const MasterRow& row) {
    Text key;
    for (const BillColumn& column : row.keys()) {
        key += key.empty() ? u" where " : u" and ";
        key += Text(column.column) + u"=" + GetSqlVal(row.values.value(column.column));
    }
    if (connection_.execute(Text(u"select * from ") + row.table->name + key)->eof()) {
        insert(row.table->name, row.values);
        return;
    }
    Text values;
    for (const BillColumn& column : row.table->columns.subspan(row.table->keys)) {
        if (!row.knows(column.column)) continue;
        if (!values.empty()) values += u",";
        values += Text(column.column) + u"=" + GetSqlVal(row.values.value(column.column));
    }
    if (!values.empty()) connection_.execute(Text(u"update ") + row.table->name + u" set " + values + key);
}

void Bookkeeping::Session::insert(const char16_t* table, const Record& record) {
    Text columns;
    Text values;
    for (const Record::Field& field : record.fields()) {
        if (!columns.empty()) columns += u",", values += u",";
        columns += field.column;
        values += GetSqlVal(field.value);
    }
    connection_.execute(Text(u"insert into ") + table + u"(" + columns + u") values(" + values + u")");
}

void Bookkeeping::Session::erase(const BillTable& table, const Text& id) {
    connection_.execute(Text(u"delete from ") + table.name + where_bill(table, id));
}

void Bookkeeping::Session::record(TextView action, const Bill& bill, const Variant& content) {
    Record entry;
    entry.set(u"Kind", from_utf8(bill.kind->name));
    entry.set(u"BillId", bill.id);
    entry.set(u"Action", Text(action));
    entry.set(u"Content", content);
    insert(u"BillHistory", entry);
}

}  // namespace vantlo
