#include "bookkeeping/posting_note.h"

#include <algorithm>
#include <iterator>

#include "automation/number_text.h"
#include "dataaccess/sql_literals.h"

namespace vantlo {

namespace {

Variant item_of(const PostingNote::Posting& posting) {
    if (posting.item == 0) return Null{};
    return posting.item;
}

Text literal(const Text& text) { return GetSqlVal(text); }

Text literal_or_null(const Text& text) { return text.empty() ? Text(u"null") : literal(text); }

Text bill_or_null(const PostingNote::Posting& posting) {
    return posting.kind.empty() ? Text(u"null") : literal(posting.bill);
}

Text sqlite_row(const PostingNote::Posting& posting) {
    return u"insert into CurrentPosting(Program,BillKind,BillId) values(" + literal(posting.program) + u"," +
           literal_or_null(posting.kind) + u"," + bill_or_null(posting) + u")";
}

Text postgresql_settings(const PostingNote::Posting& posting) {
    const Text item = posting.item == 0 ? Text() : to_text(posting.item);
    const auto set = [](TextView name, const Text& value) {
        return u"set_config('vantlo." + Text(name) + u"', " + value + u", true)";
    };
    return u"select " + set(u"program", literal(posting.program)) + u" as a, " +
           set(u"bill_kind", literal(posting.kind)) + u" as b, " + set(u"bill_id", literal(posting.bill)) + u" as c, " +
           set(u"item_no", literal(item)) + u" as d, " + set(u"member", literal(posting.member)) + u" as e";
}

Text mariadb_variables(const PostingNote::Posting& posting) {
    return u"set @vantlo_program = " + literal_or_null(posting.program) + u", @vantlo_bill_kind = " +
           literal_or_null(posting.kind) + u", @vantlo_bill_id = " + bill_or_null(posting) + u", @vantlo_item_no = " +
           GetSqlVal(item_of(posting)) + u", @vantlo_member = " + literal_or_null(posting.member);
}

Text sqlserver_context(const PostingNote::Posting& posting) {
    const auto set = [](TextView name, const Text& value) {
        return u"exec sp_set_session_context N'vantlo." + Text(name) + u"', " + value + u"; ";
    };
    const auto text = [](const Text& value) { return value == u"null" ? value : u"N" + value; };
    return set(u"program", text(literal_or_null(posting.program))) +
           set(u"bill_kind", text(literal_or_null(posting.kind))) + set(u"bill_id", text(bill_or_null(posting))) +
           set(u"item_no", GetSqlVal(item_of(posting))) + set(u"member", text(literal_or_null(posting.member)));
}

}  // namespace

/// How an engine is told.
struct PostingNote::Way {
    std::string_view dialect;
    const char16_t* reader;  ///< a select with rows if a journal reads the note; null where that cannot be asked
    bool is_asked_once;      ///< else in each transaction
    Text (*bill)(const Posting& posting);  ///< the statement that tells of a bill
    bool tells_calls;                      ///< of each call as well, in CurrentPosting
};

// clang-format off
// An account that may only post sees neither triggers nor journal on MariaDB and SQL Server, which are always told.
const PostingNote::Way PostingNote::ways[] = {
    {"sqlite",     u"select name from sqlite_schema where name = 'CurrentPosting'", false, sqlite_row, true},
    {"postgresql", u"select tgname from pg_trigger where tgrelid = to_regclass('Inventory') and tgname = 'stockmovementofinsert'",
                                                                                    true,  postgresql_settings, false},
    {"mariadb",    nullptr,                                                         true,  mariadb_variables, false},
    {"sqlserver",  nullptr,                                                         true,  sqlserver_context, false},
};
// clang-format on

void PostingNote::begin(NativeConnection& database) {
    database_ = &database;
    const Way* const way = std::ranges::find(ways, database.dialect().name, &Way::dialect);
    way_ = way != std::end(ways) ? way : nullptr;
    if (way_ == nullptr) has_reader_ = false;
    if (way_ == nullptr || (way_->is_asked_once && is_known_)) return;
    has_reader_ = way_->reader == nullptr || !database.run(way_->reader).rows.empty();
    is_known_ = true;
}

void PostingNote::begin_bill(const Posting& posting) {
    if (has_reader_) database_->run(way_->bill(posting));
}

void PostingNote::begin_program(const Text& name) {
    Posting posting;
    posting.program = name;
    begin_bill(posting);
}

void PostingNote::end_program() {
    end_bill();
    if (has_reader_ && !way_->tells_calls) begin_program({});
}

void PostingNote::before_call(const Text& member, std::int32_t item) {
    if (!has_reader_ || !way_->tells_calls) return;
    const Variant number = item == 0 ? Variant(Null{}) : Variant(item);
    database_->run(u"update CurrentPosting set Member=" + literal(member) + u",ItemNo=" + GetSqlVal(number));
}

void PostingNote::end_bill() {
    if (has_reader_ && way_->tells_calls) database_->run(u"delete from CurrentPosting");
}

}  // namespace vantlo
