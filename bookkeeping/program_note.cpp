#include "bookkeeping/program_note.h"

#include <algorithm>
#include <iterator>

#include "bills/schema.h"
#include "dataaccess/sql_literals.h"

namespace vantlo {

namespace {

/// What tells an engine the program, whose literal stands between the two; and what ends that.
struct Telling {
    std::string_view dialect;
    const char16_t* before;
    const char16_t* behind;
    const char16_t* end;
};

// clang-format off
constexpr Telling tellings[] = {
    {"sqlite",     u"insert into CurrentPosting(Program) values(", u")", u"delete from CurrentPosting"},
    {"postgresql", u"select set_config('vantlo.program', ",
                   u", true) as a, set_config('vantlo.bill_kind', '', true) as b, set_config('vantlo.bill_id', '', true) as c, "
                   u"set_config('vantlo.item_no', '', true) as d, set_config('vantlo.member', '', true) as e",
                   u"select set_config('vantlo.program', '', true) as a"},
    {"mariadb",    u"set @vantlo_program = ",
                   u", @vantlo_bill_kind = null, @vantlo_bill_id = null, @vantlo_item_no = null, @vantlo_member = null",
                   u"set @vantlo_program = null"},
    {"sqlserver",  u"exec sp_set_session_context N'vantlo.bill_kind', null; exec sp_set_session_context N'vantlo.bill_id', null; "
                   u"exec sp_set_session_context N'vantlo.item_no', null; exec sp_set_session_context N'vantlo.member', null; "
                   u"exec sp_set_session_context N'vantlo.program', ", u"",
                   u"exec sp_set_session_context N'vantlo.program', null"},
};
// clang-format on

const Telling* telling_of(NativeConnection& database) {
    const auto* const telling = std::ranges::find(tellings, database.dialect().name, &Telling::dialect);
    return telling == std::end(tellings) ? nullptr : telling;
}

}  // namespace

ProgramNote::ProgramNote(NativeConnection& database, const Text& program) : database_(database) {
    const Telling* const telling = telling_of(database);
    has_reader_ = telling != nullptr && (telling->dialect != "sqlite" || has_table(database, "CurrentPosting"));
    if (has_reader_) database.run(telling->before + GetSqlVal(program) + telling->behind);
}

void ProgramNote::end() {
    if (has_reader_) database_.run(telling_of(database_)->end);
}

}  // namespace vantlo
