#include "bookkeeping/posting_guard.h"

#include <fmt/ranges.h>

#include <algorithm>

#include "automation/message.h"
#include "bills/field_use.h"
#include "bills/task_error.h"
#include "bookkeeping/own_tables.h"
#include "dataaccess/sql_literals.h"
#include "dataaccess/unit_conversion.h"
#include "posting/ledger.h"

namespace vantlo {

namespace words {

// clang-format off
constexpr Message null_quantity  = {"第 {} 行没有数量", "line {} has no quantity"};
constexpr Message null_header    = {"表头没有数量", "the header has no quantity"};
constexpr Message warehouse_missing = {"{}缺少“{}”：将记到没有名称的仓库", "{} no \"{}\": that stock is posted to the warehouse without a name"};
constexpr Message field_ignored  = {"{}有“{}”，而此类单据不使用此字段", "{} \"{}\", which this kind of bill does not read"};
constexpr Message header_has     = {"表头", "the header has"};
constexpr Message line_has       = {"第 {} 行", "line {} has"};
constexpr Message lines_have     = {"{} 行（从第 {} 行起）", "{:line|lines}, from line {} on, have"};
constexpr Message unknown_unit   = {"商品 {} 没有单位“{}”，按 1 个基本单位计", "goods {} have no unit \"{}\": it counts as one base unit"};
constexpr Message negative_stock = {"{} 的结存将变为 {}", "{} goes to {} on hand"};
constexpr Message irreversible   = {
    "{}负的数量：这张单据可以保存，但冲回时两个减号之后的部分会被当作注释，每一行台账都会改变；请改用相反的单据（--force 仍然保存）",
    "{} a negative quantity: this bill could be saved, but taking it back would send two minus signs, behind which all is a comment, and change every row of the ledger. Use a bill of the opposite kind (--force saves it all the same)"};
constexpr Message no_rollback    = {
    "{} 的存储引擎 {} 不能回滚，失败的单据和演习都会留下数据；请用 alter table {} engine=InnoDB 更改",
    "the storage engine of {}, {}, cannot roll back, so that a failed bill and a dry run would stay: change it with alter table {} engine=InnoDB"};
constexpr Message several_rows   = {
    "台账中 {} 有 {} 行，该数量会记到每一行（--force 仍然执行；vantlo verify 列出这些行）：{}",
    "the ledger has several rows that the database takes for {}, {} in all, and each of them would get the quantity (--force does it all the same; vantlo verify lists them): {}"};
constexpr Message not_written    = {
    "数据库接受了语句却没有改动台账，可能是触发器、规则或视图吞掉了它：{}",
    "the database took the statement and left the ledger as it was; a trigger, a rule or a view may swallow it: {}"};
constexpr Message other_row      = {"{} 过账 {}，冲回 {}", "{}: {} was posted, {} is taken back"};
constexpr Message other_quantity = {
    "冲回的数量与过账的不同：单位换算率或单据后来被改动过（--force 仍然冲回）：{}",
    "taking it back moves other quantities than were posted: a unit's factor or the bill was changed since (--force takes it back all the same): {}"};
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

bool has_negative_quantity(const Record& record, const Bill& bill, BillPart part) {
    return std::ranges::any_of(columns_of(*bill.kind, part), [&](const BillColumn& column) {
        const Variant* const value = column.field == "quantity" ? record.find(column.column) : nullptr;
        return value != nullptr && !value->is<Null>() && to_double(*value) < 0;
    });
}

/// The first place of a text outside literals; npos if there is none.
std::size_t find_outside_literals(TextView statement, TextView what) {
    bool in_literal = false;
    for (std::size_t i = 0; i < statement.size(); ++i) {
        if (statement[i] == u'\'') in_literal = !in_literal;
        if (!in_literal && statement.substr(i).starts_with(what)) return i;
    }
    return TextView::npos;
}

/// The WHERE clause that finds the rows that an update or insert of the ledger writes.
/// Example  `insert into Inventory(WID,…) values('W1','G1','',null,0,…)` ->
///          `where WID='W1' and GId='G1' and Model1='' and Model2 is null and Status=0`
Text condition_of_write(TextView statement, LedgerAction action) {
    if (action == LedgerAction::update)
        return Text(statement.substr(find_outside_literals(statement, ledger_head::key)));
    TextView values = statement.substr(find_outside_literals(statement, u"values(") + 7);
    Text condition;
    for (const TextView column : {u" where WID", u" and GId", u" and Model1", u" and Model2", u" and Status"}) {
        const std::size_t end = find_outside_literals(values, u",");
        const TextView value = values.substr(0, end);
        condition += Text(column) + (value == u"null" ? Text(u" is null") : u"=" + Text(value));
        values.remove_prefix(end + 1);
    }
    return condition;
}

/// The condition that rows meet which an update would change: `InQty = InQty + 2,CurrentQty = CurrentQty + 2` holds for none
/// that has it, and for all where the quantity is 0.
Text condition_of_change(TextView update) {
    update.remove_prefix(ledger_head::update.size());
    TextView assignments = update.substr(0, find_outside_literals(update, ledger_head::key));
    Text all;
    while (true) {
        const std::size_t end = find_outside_literals(assignments, u",");
        all += Text(assignments.substr(0, end));
        if (end == TextView::npos) return u"not (" + all + u")";
        all += u" and ";
        assignments.remove_prefix(end + 1);
    }
}

bool have_equal_quantities(const std::vector<LedgerRow>& left, const std::vector<LedgerRow>& right) {
    return std::ranges::equal(left, right, [](const LedgerRow& one, const LedgerRow& other) {
        return one.received == other.received && one.issued == other.issued && one.on_hand == other.on_hand;
    });
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
            const Variant* const value = column.field == "quantity" ? record.find(column.column) : nullptr;
            return value != nullptr && value->is<Null>();
        });
    };
    const BillKind& kind = *bill.kind;
    if (has_null(bill.header, kind.header->columns)) warn(words::null_header);
    for (std::size_t i = 0; i < bill.lines.size(); ++i) {
        if (!has_null(bill.lines[i], kind.lines->columns)) continue;
        warn(words::null_quantity, i + 1);
    }
    std::vector<FieldFault> faults = field_faults(bill);
    while (!faults.empty()) {
        const FieldFault first = faults.front();
        const std::size_t count = std::erase_if(
            faults, [&](const FieldFault& fault) { return fault.part == first.part && fault.field == first.field; });
        const std::string subject = first.line == 0 ? words::header_has.in(language_)
                                    : count == 1    ? say(language_, words::line_has, first.line)
                                                    : say(language_, words::lines_have, Count(count), first.line);
        warn(first.is_missing ? words::warehouse_missing : words::field_ignored, subject, first.field);
    }
}

void PostingGuard::require_reversible(const Bill& bill) {
    const FieldUse& use = field_use_of(*bill.kind);
    const auto require = [&](const Record& record, BillPart part, std::size_t line) {
        const bool has_signs = use.puts_minus_signs_together(part) && has_negative_quantity(record, bill, part);
        if (!has_signs || !has_comment(u"CurrentQty--3", database_.dialect().minus_minus)) return;
        const std::string subject = line == 0 ? words::header_has.in(language_) : say(language_, words::line_has, line);
        refuse_unless_forced(words::irreversible, say(language_, words::irreversible, subject));
    };
    require(bill.header, BillPart::header, 0);
    for (std::size_t i = 0; i < bill.lines.size(); ++i) require(bill.lines[i], BillPart::line, i + 1);
}

void PostingGuard::require_opposite(const Bill& bill, const std::vector<PostedQuantity>& posted) {
    if (posted.empty()) return;
    constexpr std::size_t most_rows = 5;
    std::vector<std::string> rows;
    std::vector<LedgerRow> seen;
    const auto look_at = [&](const LedgerRow& key, const std::vector<LedgerChange>& all) {
        if (std::ranges::any_of(seen, [&](const LedgerRow& row) { return have_same_key(row, key); })) return;
        seen.push_back(key);
        Currency opposite, moved;  // of what was posted, and what is
        for (const PostedQuantity& quantity : posted) {
            if (have_same_key(quantity.key, key)) opposite = opposite - quantity.on_hand;
        }
        for (const auto& [before, after] : all) {
            const std::optional<LedgerRow>& row = after ? after : before;
            if (!row || !have_same_key(*row, key)) continue;
            moved = moved - ((before ? before->on_hand : Currency()) - (after ? after->on_hand : Currency()));
        }
        if (moved == opposite) return;
        rows.push_back(say(language_, words::other_row, key_text(key, language_), quantity_text(Currency() - opposite),
                           quantity_text(moved)));
    };
    const std::vector<LedgerChange> all = changes();
    for (const PostedQuantity& quantity : posted) look_at(quantity.key, all);
    for (const auto& [before, after] : all) {
        if (after || before) look_at(after ? *after : *before, all);
    }
    if (rows.empty()) return;
    const bool is_whole = rows.size() <= most_rows;
    if (!is_whole) rows.resize(most_rows);
    const std::string what = say(language_, words::other_quantity, fmt::join(rows, "; ")) + (is_whole ? "" : "; ...");
    if (!field_use_of(*bill.kind).inserts_as_it_updates) {
        findings_.warnings.push_back({&words::other_quantity, what});
        return;
    }
    refuse_unless_forced(words::other_quantity, what);
}

void PostingGuard::before(TextView statement) {
    require_rollback();
    if (!has_comment(statement, database_.dialect().minus_minus)) return;
    refuse_unless_forced(words::comment_in_statement, say(language_, words::comment_in_statement, to_utf8(statement)));
}

void PostingGuard::refuse_unless_forced(const Message& sort, const std::string& what) {
    if (rules_.is_forced) {
        findings_.warnings.push_back({&sort, what});
        return;
    }
    throw TaskError(Reason::refused, what);
}

void PostingGuard::after(TextView statement, const ResultTable& result) {
    note_unit_look_up(statement, result);
    note_ledger_look_up(statement, result);
    require_one_row(statement, result);
}

void PostingGuard::require_rollback() {
    if (database_.dialect().without_rollback_query == nullptr) return;
    if (!findings_.is_new(u"storage engines")) return;
    for (const TableWithoutRollback& table : tables_without_rollback(database_)) {
        throw TaskError(Reason::refused, say(language_, words::no_rollback, table.table, table.engine, table.table));
    }
}

void PostingGuard::require_one_row(TextView statement, const ResultTable& result) {
    if (!result.changed_rows || *result.changed_rows == 1) return;
    const LedgerAction action = recognize_ledger_statement(statement).action;
    if (action != LedgerAction::update && action != LedgerAction::insert) return;
    // Drivers count differently: MariaDB's only rows that became other ones, others behind views and triggers.
    const Text condition = condition_of_write(statement, action);
    const std::vector<LedgerRow> rows = rows_of(condition);
    const bool is_as_it_was = rows.empty() || (action == LedgerAction::update && *result.changed_rows == 0 &&
                                               (!found_ || have_equal_quantities(rows, *found_)) &&
                                               !rows_of(condition + u" and " + condition_of_change(statement)).empty());
    if (is_as_it_was) throw TaskError(Reason::refused, say(language_, words::not_written, to_utf8(statement)));
    if (action == LedgerAction::insert || rows.size() == 1) return;
    refuse_unless_forced(words::several_rows, say(language_, words::several_rows, key_text(rows.front(), language_),
                                                  rows.size(), to_utf8(statement)));
}

void PostingGuard::note_unit_look_up(TextView statement, const ResultTable& result) {
    if (!result.rows.empty()) return;
    const std::optional<UnitLookup> lookup = recognize_unit_lookup(statement);
    if (!lookup || lookup->unit.empty() || !findings_.is_new(Text(statement))) return;
    const Text base_unit =
        u"select ID from Goods where ID=" + GetSqlVal(lookup->gid) + u" and Unit=" + GetSqlVal(lookup->unit);
    if (!database_.run(base_unit).rows.empty()) return;
    warn(words::unknown_unit, to_utf8(lookup->gid), to_utf8(lookup->unit));
}

void PostingGuard::note_ledger_look_up(TextView statement, const ResultTable& result) {
    const auto [action, key] = recognize_ledger_statement(statement);
    if (action != LedgerAction::look_up && action != LedgerAction::count) return;
    const Text condition(key);
    const bool is_new = conditions_.insert(condition).second;
    found_.reset();
    if (action == LedgerAction::look_up) found_ = ledger_rows(result);
    if (!is_new) return;
    if (!found_) found_ = rows_of(condition);
    look_ups_.push_back({condition, *found_});
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
        if (findings_.is_new(from_utf8(key))) findings_.warnings.push_back({&words::negative_stock, what});
    }
}

}  // namespace vantlo
