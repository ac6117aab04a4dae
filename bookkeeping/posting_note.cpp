#include "bookkeeping/posting_note.h"

#include "automation/number_text.h"
#include "dataaccess/sql_literals.h"

namespace vantlo {

namespace {

constexpr TextView program = u"'vantlo'";

Variant item_of(const PostingNote::Posting& posting) {
    if (posting.item == 0) return Null{};
    return posting.item;
}

Text literal(const Text& text) { return GetSqlVal(text); }

Text postgresql_settings(const PostingNote::Posting& posting) {
    const Text item = posting.item == 0 ? Text() : to_text(posting.item);
    const auto set = [](TextView name, const Text& value) {
        return u"set_config('vantlo." + Text(name) + u"', " + value + u", true)";
    };
    return u"select " + set(u"program", Text(program)) + u" as a, " + set(u"bill_kind", literal(posting.kind)) +
           u" as b, " + set(u"bill_id", literal(posting.bill)) + u" as c, " + set(u"item_no", literal(item)) +
           u" as d, " + set(u"member", literal(posting.member)) + u" as e";
}

Text mariadb_variables(const PostingNote::Posting& posting) {
    const Variant member = posting.member.empty() ? Variant(Null{}) : Variant(posting.member);
    return u"set @vantlo_program = " + Text(program) + u", @vantlo_bill_kind = " + literal(posting.kind) +
           u", @vantlo_bill_id = " + literal(posting.bill) + u", @vantlo_item_no = " + GetSqlVal(item_of(posting)) +
           u", @vantlo_member = " + GetSqlVal(member);
}

Text sqlserver_context(const PostingNote::Posting& posting) {
    const auto set = [](TextView name, const Text& value) {
        return u"exec sp_set_session_context N'vantlo." + Text(name) + u"', " + value + u"; ";
    };
    const Text member = posting.member.empty() ? Text(u"null") : u"N" + literal(posting.member);
    return set(u"program", u"N" + Text(program)) + set(u"bill_kind", u"N" + literal(posting.kind)) +
           set(u"bill_id", u"N" + literal(posting.bill)) + set(u"item_no", GetSqlVal(item_of(posting))) +
           set(u"member", member);
}

}  // namespace

void PostingNote::begin(NativeConnection& database) {
    database_ = &database;
    dialect_ = database.dialect().name;
    // An account that may only post sees neither triggers nor journal on MariaDB and SQL Server: they are always told.
    if (dialect_ == "mariadb" || dialect_ == "sqlserver") {
        has_reader_ = true;
    } else if (is_sqlite()) {
        has_reader_ = !database.run(u"select name from sqlite_schema where name = 'CurrentPosting'").rows.empty();
    } else if (dialect_ == "postgresql" && !is_known_) {
        has_reader_ = !database
                           .run(
                               u"select tgname from pg_trigger where tgrelid = to_regclass('Inventory') and tgname = "
                               u"'stockmovementofinsert'")
                           .rows.empty();
        is_known_ = true;
    }
}

void PostingNote::begin_bill(const Posting& posting) {
    if (!has_reader_) return;
    if (is_sqlite()) {
        database_->run(u"insert into CurrentPosting(Program,BillKind,BillId) values(" + Text(program) + u"," +
                       literal(posting.kind) + u"," + literal(posting.bill) + u")");
    } else if (dialect_ == "postgresql") {
        database_->run(postgresql_settings(posting));
    } else if (dialect_ == "mariadb") {
        database_->run(mariadb_variables(posting));
    } else {
        database_->run(sqlserver_context(posting));
    }
}

void PostingNote::before_call(const Text& member, std::int32_t item) {
    if (!has_reader_ || !is_sqlite()) return;
    const Variant number = item == 0 ? Variant(Null{}) : Variant(item);
    database_->run(u"update CurrentPosting set Member=" + literal(member) + u",ItemNo=" + GetSqlVal(number));
}

void PostingNote::end_bill() {
    if (has_reader_ && is_sqlite()) database_->run(u"delete from CurrentPosting");
}

}  // namespace vantlo
