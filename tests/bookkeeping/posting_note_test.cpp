#include "bookkeeping/posting_note.h"

#include <doctest/doctest.h>

#include <algorithm>

// What each engine is told of a posting, and in how many round trips.

namespace vantlo::test {
namespace {

/// A database with a journal, as far as PostingNote asks for one.
class ToldDatabase final : public NativeConnection {
public:
    ToldDatabase(std::string dialect, bool has_journal) : dialect_(std::move(dialect)), has_journal_(has_journal) {}

    ResultTable run(TextView statement) override {
        const bool asks =
            statement.find(u"sqlite_schema") != TextView::npos || statement.find(u"pg_trigger") != TextView::npos;
        if (!asks) told.push_back(to_utf8(statement));
        ResultTable result{{u"name"}, {}, true};
        if (asks && has_journal_) result.rows.push_back({Text(u"x")});
        return result;
    }
    void begin() override {}
    void commit() override {}
    void roll_back() override {}
    [[nodiscard]] Remedy remedy() const override { return Remedy::none; }
    [[nodiscard]] const Dialect& dialect() const override { return dialect_named(dialect_); }
    [[nodiscard]] std::string engine() const override { return dialect_; }

    std::vector<std::string> told;

private:
    std::string dialect_;
    bool has_journal_;
};

void post_two_lines(PostingNote& note, NativeConnection& database) {
    note.begin(database);
    note.begin_bill({u"stock-in", u"O'R1", u"In_AddInventory"});
    note.before_call(u"In_AddInventory", 1);
    note.before_call(u"In_AddInventory", 2);
    note.end_bill();
}

TEST_CASE("A server is told of a bill in one round trip, SQLite of each call") {
    struct Row {
        const char* dialect;
        std::vector<std::string> told;
    };
    const Row rows[] = {
        {"sqlite",
         {"insert into CurrentPosting(Program,BillKind,BillId) values('vantlo','stock-in','O''R1')",
          "update CurrentPosting set Member='In_AddInventory',ItemNo=1",
          "update CurrentPosting set Member='In_AddInventory',ItemNo=2", "delete from CurrentPosting"}},
        {"postgresql",
         {"select set_config('vantlo.program', 'vantlo', true) as a, set_config('vantlo.bill_kind', 'stock-in', true) "
          "as b, "
          "set_config('vantlo.bill_id', 'O''R1', true) as c, set_config('vantlo.item_no', '', true) as d, "
          "set_config('vantlo.member', 'In_AddInventory', true) as e"}},
        {"mariadb",
         {"set @vantlo_program = 'vantlo', @vantlo_bill_kind = 'stock-in', @vantlo_bill_id = 'O''R1', "
          "@vantlo_item_no = null, @vantlo_member = 'In_AddInventory'"}},
        {"sqlserver",
         {"exec sp_set_session_context N'vantlo.program', N'vantlo'; "
          "exec sp_set_session_context N'vantlo.bill_kind', N'stock-in'; "
          "exec sp_set_session_context N'vantlo.bill_id', N'O''R1'; "
          "exec sp_set_session_context N'vantlo.item_no', null; "
          "exec sp_set_session_context N'vantlo.member', N'In_AddInventory'; "}},
        {"access", {}},
    };
    for (const Row& row : rows) {
        INFO(row.dialect);
        const Owned<ToldDatabase> database(new ToldDatabase(row.dialect, true));
        PostingNote note;
        post_two_lines(note, *database);
        CHECK(database->told == row.told);
    }
}

TEST_CASE("A program that posts no bill is told with none, and no longer when it has ended") {
    struct Row {
        const char* dialect;
        std::vector<std::string> told;
    };
    const Row rows[] = {
        {"sqlite",
         {"insert into CurrentPosting(Program,BillKind,BillId) values('vantlo repair 3',null,null)",
          "delete from CurrentPosting"}},
        {"mariadb",
         {"set @vantlo_program = 'vantlo repair 3', @vantlo_bill_kind = null, @vantlo_bill_id = null, "
          "@vantlo_item_no = null, @vantlo_member = null",
          "set @vantlo_program = null, @vantlo_bill_kind = null, @vantlo_bill_id = null, @vantlo_item_no = null, "
          "@vantlo_member = null"}},
    };
    for (const Row& row : rows) {
        INFO(row.dialect);
        const Owned<ToldDatabase> database(new ToldDatabase(row.dialect, true));
        PostingNote note;
        note.begin(*database);
        note.begin_program(u"vantlo repair 3");
        note.end_program();
        CHECK(database->told == row.told);
    }
}

TEST_CASE("Where there is no journal SQLite and PostgreSQL are told nothing") {
    for (const char* const dialect : {"sqlite", "postgresql"}) {
        INFO(dialect);
        const Owned<ToldDatabase> database(new ToldDatabase(dialect, false));
        PostingNote note;
        post_two_lines(note, *database);
        CHECK(database->told.empty());
    }
}

}  // namespace
}  // namespace vantlo::test
