#include "bookkeeping/posting_guard.h"

#include <algorithm>

#include "automation/message.h"
#include "bills/task_error.h"
#include "dataaccess/sql_literals.h"
#include "dataaccess/unit_conversion.h"
#include "posting/ledger.h"

namespace vantlo {

namespace words {

// clang-format off
constexpr Message null_quantity  = {"第 {} 行没有数量", "line {} has no quantity"};
constexpr Message null_header    = {"表头没有数量", "the header has no quantity"};
constexpr Message unknown_unit   = {"商品 {} 没有单位“{}”，按 1 个基本单位计", "goods {} have no unit \"{}\": it counts as one base unit"};
constexpr Message negative_stock = {"{} 的结存将变为 {}", "{} goes to {} on hand"};
constexpr Message comment_in_statement = {
    "数量为负：两个减号之后的部分连同 WHERE 子句都会被当作注释，每一行台账都会改变（--force 仍然执行）：{}",
    "the quantity is negative, so that everything behind the two minus signs would be a comment, the WHERE clause too, and every row of the ledger would change (--force sends it all the same): {}"};
// clang-format on

}  // namespace words

namespace {

std::vector<LedgerRow> ledger_rows(ResultTable result) {
    const RecordsetVariable rows = make_client_recordset(std::move(result));
    std::vector<LedgerRow> ledger;
    for (; !rows->eof(); rows->move_next()) ledger.push_back(ledger_row(*rows));
    return ledger;
}

bool goes_negative(const LedgerChange& change) {
    if (!change.after || change.after->on_hand >= Currency()) return false;
    return !change.before || change.after->on_hand < change.before->on_hand;
}

}  // namespace

bool has_comment(TextView statement, CommentRule rule) {
    if (rule == CommentRule::nowhere) return false;
    bool in_literal = false;
    for (std::size_t i = 0; i < statement.size(); ++i) {
        if (statement[i] == u'\'') in_literal = !in_literal;
        if (in_literal || statement.substr(i, 2) != u"--") continue;
        const TextView behind = statement.substr(i + 2, 1);
        if (rule == CommentRule::anywhere || behind.empty() || behind.front() <= u' ') return true;
    }
    return false;
}

void PostingGuard::look_at(const Bill& bill) {
    const auto has_null = [](const Record& record, std::span<const BillColumn> columns) {
        return std::ranges::any_of(columns, [&](const BillColumn& column) {
            return column.field == "quantity" && record.value(column.column).is<Null>();
        });
    };
    const BillKind& kind = *bill.kind;
    if (has_null(bill.header, kind.header->columns)) findings_.warnings.emplace_back(words::null_header.in(language_));
    for (std::size_t i = 0; i < bill.lines.size(); ++i) {
        if (!has_null(bill.lines[i], kind.lines->columns)) continue;
        findings_.warnings.push_back(say(language_, words::null_quantity, i + 1));
    }
}

void PostingGuard::before(TextView statement) {
    if (!has_comment(statement, database_.dialect().minus_minus)) return;
    const std::string what = say(language_, words::comment_in_statement, to_utf8(statement));
    if (rules_.lets_comments_pass) {
        findings_.warnings.push_back(what);
        return;
    }
    throw TaskError(Reason::refused, what);
}

void PostingGuard::after(TextView statement, const ResultTable& result) {
    note_unit_look_up(statement, result);
    note_ledger_look_up(statement, result);
}

void PostingGuard::note_unit_look_up(TextView statement, const ResultTable& result) {
    if (!result.rows.empty()) return;
    const std::optional<UnitLookup> lookup = recognize_unit_lookup(statement);
    if (!lookup || lookup->unit.empty() || !findings_.is_new(Text(statement))) return;
    const Text base_unit =
        u"select ID from Goods where ID=" + GetSqlVal(lookup->gid) + u" and Unit=" + GetSqlVal(lookup->unit);
    if (!database_.run(base_unit).rows.empty()) return;
    findings_.warnings.push_back(say(language_, words::unknown_unit, to_utf8(lookup->gid), to_utf8(lookup->unit)));
}

void PostingGuard::note_ledger_look_up(TextView statement, const ResultTable& result) {
    const auto [action, key] = recognize_ledger_statement(statement);
    if (action != LedgerAction::look_up && action != LedgerAction::count) return;
    const Text condition(key);
    if (!conditions_.insert(condition).second) return;
    look_ups_.push_back({condition, action == LedgerAction::look_up ? ledger_rows(result) : rows_of(condition)});
}

std::vector<LedgerRow> PostingGuard::rows_of(const Text& condition) const {
    return ledger_rows(database_.run(u"select * from Inventory " + condition));
}

std::vector<LedgerChange> PostingGuard::changes() const {
    std::vector<LedgerChange> changes;
    for (const LookUp& look_up : look_ups_) {
        const std::vector<LedgerRow> rows = rows_of(look_up.condition);
        const auto at = [](const std::vector<LedgerRow>& list, std::size_t i) {
            return i < list.size() ? std::optional(list[i]) : std::nullopt;
        };
        for (std::size_t i = 0; i < std::max(rows.size(), look_up.rows.size()); ++i) {
            changes.push_back({at(look_up.rows, i), at(rows, i)});
        }
    }
    return changes;
}

void PostingGuard::look_at_stock(const std::vector<LedgerChange>& changes) {
    for (const LedgerChange& change : changes) {
        if (!goes_negative(change)) continue;
        const std::string key = key_text(*change.after, language_);
        const std::string what = say(language_, words::negative_stock, key, quantity_text(change.after->on_hand));
        if (rules_.refuses_negative) throw TaskError(Reason::refused, what);
        if (findings_.is_new(from_utf8(key))) findings_.warnings.push_back(what);
    }
}

}  // namespace vantlo
