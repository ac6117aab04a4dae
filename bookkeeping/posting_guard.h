#pragma once

#include <optional>
#include <set>
#include <string>
#include <vector>

#include "ado/native/native_connection.h"
#include "automation/message.h"
#include "bills/bill.h"
#include "bills/ledger_row.h"
#include "bookkeeping/posted_quantities.h"

namespace vantlo {

/// What the host refuses, since the component by design does not check it.
struct GuardRules {
    bool is_forced = false;  ///< `--force`: what is refused for what it would do to ledger rows is sent all the same
    bool refuses_negative = false;  ///< `--fail-on-negative`
};

/// A ledger row that a bill looked up, before and after; empty where there was or is no row.
struct LedgerChange {
    std::optional<LedgerRow> before;
    std::optional<LedgerRow> after;
};

/// Something dubious. Warnings of one sort are worded by the same message.
struct Warning {
    const Message* sort;
    std::string text;
};

/// The warnings of all bills. A unit without a factor, and a ledger row below zero, are reported once.
class Findings {
public:
    std::vector<Warning> warnings;  ///< of the bill at hand

    /// Notes a finding. Returns whether it is a new one.
    bool is_new(Text what) { return !noted_.contains(what) && noted_now_.insert(std::move(what)).second; }

    /// A transaction begins: drops the findings of an attempt that failed.
    void begin() {
        warnings.clear();
        noted_now_.clear();
    }
    void commit() { noted_.merge(noted_now_); }

private:
    std::set<Text> noted_;
    std::set<Text> noted_now_;
};

/// Observes the statements of one bill; collects touched rows and warnings, refuses what the guard forbids.
///
/// It judges the statements that are sent to the engine, whichever member made them. Its own queries are not observed: one
/// for each touched row, one for each unit without a factor, one or two for each write that did not change exactly one row,
/// and on MariaDB one in all for the storage engines.
class PostingGuard {
public:
    PostingGuard(NativeConnection& database, const GuardRules& rules, Language language, Findings& findings)
        : database_(database), rules_(rules), language_(language), findings_(findings) {}

    /// Warns of lines without a quantity, of missing warehouses and of fields that the kind of bill ignores.
    void look_at(const Bill& bill);

    /// Errors   TaskError with Reason::refused for a bill that could be saved, but whose taking back would send a statement
    ///          with two minus signs.
    void require_reversible(const Bill& bill);

    /// To be called when a bill has been taken back, with what the journal of movements knew of it before.
    /// Errors   TaskError with Reason::refused, if that has moved other quantities than were posted. A warning alone for kinds
    ///          that by design insert another quantity than they update by.
    void require_opposite(const Bill& bill, const std::vector<PostedQuantity>& posted);

    /// Errors   TaskError with Reason::refused for a statement whose end, WHERE clause included, the engine would take for a
    ///          comment; for any where a table of the system keeps what is rolled back.
    void before(TextView statement);

    /// Errors   TaskError with Reason::refused, if a write left the ledger as it was, or changed several rows of a key.
    void after(TextView statement, const ResultTable& result);

    /// Warns of stock that the bill takes below zero, or further below, once for each ledger row.
    /// Errors   TaskError with Reason::refused, if that is to be refused.
    void look_at_stock(const std::vector<LedgerChange>& changes);

    /// Every row that was looked up, in the order of first look-up; `after` is its present state.
    [[nodiscard]] std::vector<LedgerChange> changes() const;

private:
    struct LookUp {
        Text condition;
        std::vector<LedgerRow> rows;
    };

    template <typename... Values>
    void warn(const Message& wording, const Values&... values) {
        findings_.warnings.push_back({&wording, say(language_, wording, values...)});
    }
    void refuse_unless_forced(const Message& sort, const std::string& what);
    void require_rollback();
    void require_one_row(TextView statement, const ResultTable& result);
    void note_unit_look_up(TextView statement, const ResultTable& result);
    void note_ledger_look_up(TextView statement, const ResultTable& result);
    [[nodiscard]] std::vector<LedgerRow> rows_of(const Text& condition) const;

    NativeConnection& database_;
    GuardRules rules_;
    Language language_;
    Findings& findings_;
    std::vector<LookUp> look_ups_;
    std::set<Text> conditions_;
    std::optional<std::vector<LedgerRow>> found_;  ///< by the latest look-up, if it told
};

/// Whether the engine would take the end of the statement for a comment: two minus signs outside literals, where its rule
/// has them begin one.
bool has_comment(TextView statement, CommentRule rule);

}  // namespace vantlo
