#include <doctest/doctest.h>

#include <algorithm>
#include <set>

#include "audit/repair.h"
#include "tests/audit/spoilings.h"
#include "tests/support/empty_shop.h"
#include "tool/output/repair_script.h"
#include "tool/output/verify_report.h"

// verify and repair on every server of this run.

namespace vantlo::test {
namespace {

using namespace vantlo;

std::set<Cause> causes_on(NativeConnection& database) {
    std::set<Cause> causes;
    for (const Finding& finding : verify(database, Language::english).findings) causes.insert(finding.cause);
    return causes;
}

void repair(NativeConnection& database) {
    database.begin();
    run_repairs(repairs_of(verify(database, Language::english).findings), database, cause_in_journal);
    database.commit();
}

TEST_CASE("verify finds on every server what went wrong in the sample shop, and the repairs set it right") {
    for (const Server& server : servers()) {
        INFO(server.dialect);
        const EmptyShop emptied(server, false);
        const auto database = open_connection(server.connection_string);
        Bookkeeping bookkeeping([&] { return database; });
        save_sample_shop(bookkeeping);
        CHECK(causes_on(*database).empty());
        reverse_sample_bills(bookkeeping);
        CHECK(causes_on(*database).empty());

        std::set<Cause> expected;
        for (const Spoiling& spoiling : spoilings()) {
            if (spoiling.bill != nullptr) continue;
            spoil(database, spoiling);
            expected.insert(spoiling.cause);
        }
        CHECK(causes_on(*database) == expected);
        repair(*database);
        CHECK(causes_on(*database) == std::set{Cause::refused_bill});  // which no ledger row can set right
        database->run(u"delete from StockBill where Id='HUGE'");
        database->run(u"delete from StockBillItems where BillId='HUGE'");

        for (const Spoiling& spoiling : spoilings()) {
            if (spoiling.bill == nullptr) continue;
            INFO(std::string(spoiling.name));
            spoil(database, spoiling);
            CHECK(causes_on(*database) == std::set{spoiling.cause});
            repair(*database);
            CHECK(causes_on(*database).empty());
        }
        CHECK(database->run(u"select * from RepairJournal").rows.size() >= spoilings().size());
    }
}

TEST_CASE("The history keeps a long bill that was taken back whole, on every server") {
    for (const Server& server : servers()) {
        INFO(server.dialect);
        const EmptyShop emptied(server, false);
        const auto database = open_connection(server.connection_string);
        Bookkeeping bookkeeping([&] { return database; });
        Bill bill = stock_bill(u"L'1\\", u"手机", 1, u"W1", u"W2");
        const Record line = bill.lines.front();
        bill.lines.resize(300, line);
        bookkeeping.save(bill);
        bookkeeping.reverse(*bill.kind, bill.id);
        CHECK(to_text(database->run(u"select Content from BillHistory where Content is not null").rows.at(0).at(0))
                  .size() > 30000);
        const Verification verification = verify(*database, Language::english);
        CHECK(verification.findings.empty());
        REQUIRE(verification.timeline.events.size() == 2);
        CHECK(verification.timeline.events[1].bill.lines.size() == 300);
    }
}

TEST_CASE("The tables of every server keep all that is written into them, and a column that does not is told") {
    for (const Server& server : servers()) {
        INFO(server.dialect);
        const EmptyShop emptied(server, false);
        const auto database = open_connection(server.connection_string);
        CHECK(read_columns(*database).size() > 100);
        CHECK(column_notes(read_columns(*database)).empty());

        const bool is_mariadb = server.dialect == "mariadb";
        database->run(is_mariadb ? u"alter table GoodsBill modify Actualqty decimal(12,2)"
                                 : u"alter table GoodsBill alter column Actualqty type numeric(12,2)");
        if (is_mariadb) database->run(u"alter table Inventory modify Model1 varchar(100) character set latin1");
        const std::vector<Note> notes = column_notes(read_columns(*database));
        database->run(is_mariadb ? u"alter table GoodsBill modify Actualqty float"
                                 : u"alter table GoodsBill alter column Actualqty type real");
        if (is_mariadb) {
            database->run(
                u"alter table Inventory modify Model1 varchar(100) character set utf8mb4 collate utf8mb4_nopad_bin");
        }
        REQUIRE(notes.size() == (is_mariadb ? 2 : 1));
        CHECK(std::ranges::count(notes, Remark::empty_literal, &Note::remark) == 1);
        CHECK(std::ranges::count(notes, Remark::loses_characters, &Note::remark) == (is_mariadb ? 1 : 0));
    }
}

}  // namespace
}  // namespace vantlo::test
