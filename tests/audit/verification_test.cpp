#include "audit/verification.h"

#include <doctest/doctest.h>

#include <algorithm>
#include <set>

#include "audit/repair_plan.h"
#include "automation/calendar.h"
#include "bookkeeping/bill_history.h"
#include "output/verify_report.h"
#include "tests/audit/many_movements.h"
#include "tests/audit/spoilings.h"

namespace vantlo::test {
namespace {

using namespace vantlo;

std::set<Cause> causes_of(const Verification& verification) {
    std::set<Cause> causes;
    for (const Finding& finding : verification.findings) causes.insert(finding.cause);
    return causes;
}

std::string report_of(const Verification& verification) {
    return report_of(verification.findings, verification.timeline, verification.stored.size(), Language::english);
}

TEST_CASE("verify finds the sample shop's ledger right, and also after bills were taken back") {
    const auto database = sample_shop_in_memory();
    Bookkeeping bookkeeping([&] { return database; });
    for (const bool with_bills_taken_back : {false, true}) {
        if (with_bills_taken_back) reverse_sample_bills(bookkeeping);
        const Verification verification = verify(*database, Language::english);
        CHECK_MESSAGE(verification.findings.empty(), report_of(verification));
        CHECK(verification.stored.size() == 207);
        CHECK(verification.expected.rows.size() == 207);
    }
}

TEST_CASE("verify takes the latest hundred of many movements without a bill") {
    const auto database = empty_shop_in_memory();
    switch_journal_on(*database);
    check_latest_movements(database, *database);
}

TEST_CASE("verify needs no history for bills that another host stored") {
    const auto database = sample_shop_in_memory();
    database->run(u"delete from BillHistory");
    const Verification verification = verify(*database, Language::english);
    CHECK_MESSAGE(verification.findings.empty(), report_of(verification));
}

TEST_CASE("verify names the cause of each way in which rows go wrong") {
    const auto database = sample_shop_in_memory();
    for (const Spoiling& spoiling : spoilings()) {
        if (spoiling.bill != nullptr) continue;
        database->begin();
        spoil(database, spoiling);
        const Verification verification = verify(*database, Language::english);
        database->roll_back();
        const std::string report = report_of(verification);
        INFO(std::string(spoiling.name), "\n", report);
        REQUIRE(verification.findings.size() == 1);
        CHECK(verification.findings.front().cause == spoiling.cause);
        CHECK(report.find(cause_text(spoiling.cause, Language::english) + " (1)") != std::string::npos);
    }
}

TEST_CASE("verify names the bill whose posting went wrong") {
    for (const Spoiling& spoiling : spoilings()) {
        if (spoiling.bill == nullptr) continue;
        const auto database = empty_shop_in_memory();
        spoil(database, spoiling);
        const Verification verification = verify(*database, Language::english);
        const std::string report = report_of(verification);
        INFO(std::string(spoiling.name), "\n", report);
        REQUIRE(verification.findings.size() == 1);
        CHECK(verification.findings.front().cause == spoiling.cause);
        CHECK(verification.findings.front().event.has_value());
        CHECK(report.find(cause_text(spoiling.cause, Language::english) + " (1)") != std::string::npos);
        CHECK(report.find("   stock " + to_utf8(spoiling.bill)) != std::string::npos);
    }
}

TEST_CASE("verify tells all ways apart in one ledger") {
    const auto database = sample_shop_in_memory();
    std::set<Cause> expected;
    for (const Spoiling& spoiling : spoilings()) {
        if (spoiling.bill != nullptr) continue;  // they share a row of the supplier
        spoil(database, spoiling);
        expected.insert(spoiling.cause);
    }
    const Verification verification = verify(*database, Language::english);
    INFO(report_of(verification));
    CHECK(causes_of(verification) == expected);
    CHECK(verification.findings.size() == expected.size());
}

TEST_CASE("verify shows the cause that meets the earliest bill first, and rows without a bill last") {
    const auto database = sample_shop_in_memory();
    database->run(u"update Inventory set CurrentQty=null where WID='W01' and GId='G041'");
    database->run(
        u"update Inventory set InQty=InQty+1 where WID='W01' and GId='G001' and Model1='曜石黑' and Status=0");
    database->run(spoilings()[2].statements.front());
    const Verification verification = verify(*database, Language::english);
    REQUIRE(verification.findings.size() == 3);
    CHECK(verification.findings[0].cause == Cause::unbalanced);
    CHECK(verification.findings[0].first_event() == 0);
    CHECK(verification.findings[1].cause == Cause::null_quantity);
    CHECK(verification.findings[1].first_event() > 0);
    CHECK(verification.findings[2].cause == Cause::extra_row);
}

TEST_CASE("verify posts by the history: what the members do depends on what was there before") {
    // The first component line of an assembly inserts its converted quantity, a line on a row that is there the quantity
    // as it stands; a bill that was taken back left such a row.
    const auto database = empty_shop_in_memory();
    database->run(u"insert into GoodsUnit(id,Unit,UnitConverter) values('G1','box',12)");
    Bookkeeping bookkeeping([&] { return database; });
    Bill receipt = stock_bill(u"B1", u"G1", 5, u"W1", u"W2");
    bookkeeping.save(receipt);
    Bill assembly{find_bill_kind("assembly"), u"Z1", {}, {}};
    assembly.header.set(u"BillDate", date_of({2024, 3, 1, 0, 0, 0}));
    assembly.header.set(u"WareHouseID", u"W1");
    assembly.header.set(u"Gid", u"G2");
    assembly.header.set(u"Model1", u"");
    assembly.header.set(u"Model2", u"");
    assembly.header.set(u"Goodstutas", std::int32_t{0});
    assembly.header.set(u"Actualqty", 1.0F);
    assembly.header.set(u"Unit", u"pcs");
    Record& line = assembly.lines.emplace_back();
    line.set(u"WareHouseID", u"W1");
    line.set(u"Gid", u"G1");
    line.set(u"Model1", u"red");
    line.set(u"Model2", u"");
    line.set(u"Goodstutas", std::int32_t{0});
    line.set(u"Actualqty", 2.0F);
    line.set(u"Unit", u"box");
    bookkeeping.save(assembly);
    bookkeeping.reverse(*receipt.kind, receipt.id);
    CHECK(verify(*database, Language::english).findings.empty());

    database->run(u"delete from BillHistory");
    const Verification without = verify(*database, Language::english);
    REQUIRE(without.findings.size() == 1);
    CHECK(without.findings[0].differences[0].surplus() == Amounts{0, -220000, 220000});
}

TEST_CASE("verify finds an entry of the history that cannot be read, and goes on") {
    struct Row {
        Text change;  ///< of the entry by which B1 was taken back
        const char* why;
    };
    const BillKind& assembly_kind = *find_bill_kind("assembly");
    const Bill assembly{&assembly_kind, u"A1", empty_record(assembly_kind.header->columns), {}};
    const Row rows[] = {
        {u"Content='no JSON'", "parse error"},
        {u"Content=null", "parse error"},
        {u"Content=''", "parse error"},
        {u"Content='[]'", "cannot use at() with array"},
        {u"Content='{}'", "key 'header' not found"},
        {u"Content=replace(Content,'Actualqty','Qty')", "key 'Actualqty' not found"},
        {u"Content=replace(Content,'\"Actualqty\":3.0','\"Actualqty\":1e300')", "outside"},
        {u"Content=replace(Content,'\"Receiver\":\"W1\"','\"Receiver\":7')", "a text is expected, not 7"},
        {u"Content='" + bill_content(assembly) + u"'", "not found"},
        {u"Kind='assembly'", "not found"},
        {u"Kind='gift'", "no such kind of bill"},
        {u"Action='give away'", "no such action: give away"},
    };
    const auto database = empty_shop_in_memory();
    Bookkeeping bookkeeping([&] { return database; });
    bookkeeping.save(stock_bill(u"KEPT", u"G1", 2, u"W1", u"W2"));
    const Bill bill = stock_bill(u"B1", u"G1", 3, u"W1", u"W2");
    bookkeeping.save(bill);
    bookkeeping.reverse(*bill.kind, bill.id);
    for (const Row& row : rows) {
        INFO(to_utf8(row.change));
        database->begin();
        database->run(u"update BillHistory set " + row.change + u" where BillId='B1' and Action='take back'");
        database->run(u"update Inventory set InQty=InQty+1");
        const Verification verification = verify(*database, Language::english);
        database->roll_back();
        const std::string report = report_of(verification);
        INFO(report);
        REQUIRE(verification.findings.size() > 1);
        CHECK(verification.findings[0].cause == Cause::unreadable_history);
        CHECK(verification.findings[0].reason.find(" B1 (BillHistory 3): ") != std::string::npos);
        CHECK(verification.findings[0].reason.find(row.why) != std::string::npos);
        CHECK(report.find("1. The history cannot be read (1)\n") != std::string::npos);
        CHECK(std::ranges::count(verification.timeline.events, u"KEPT",
                                 [](const BillEvent& event) { return event.bill.id; }) == 1);
        CHECK(plan_repairs(verification, {}).chosen.empty());
    }
    CHECK(verify(*database, Language::english).findings.empty());
}

TEST_CASE("verify tells apart what the members do unevenly by design from what went wrong") {
    // Taking a disassembly back sets what its main item received to what it issued less the quantity.
    const auto database = sample_shop_in_memory();
    const ResultTable bill = database->run(u"select Id from GoodsBill where Kind='disassembly'");
    REQUIRE(!bill.rows.empty());
    Bookkeeping([&] { return database; }).reverse(*find_bill_kind("disassembly"), to_text(bill.rows[0][0]));
    const Verification verification = verify(*database, Language::english);
    CHECK_MESSAGE(verification.findings.empty(), report_of(verification));
    const auto balanced = [](const LedgerEntry& entry) { return is_balanced(entry.amounts()); };
    CHECK(!std::ranges::all_of(verification.stored, balanced));
}

TEST_CASE("A key looks the same without blanks around it and in any width") {
    struct Row {
        const char16_t* part;
        const char16_t* look;
    };
    const Row rows[] = {
        {u"G1", u"G1"},       {u" G1 ", u"G1"},  {u"Ｇ１", u"G1"},       {u"　G1\t", u"G1"},
        {u"G 1", u"G 1"},     {u"ｶﾞ", u"ガ"},    {u"G1\u200B", u"G1"},   {u"", u""},
        {u"（大）", u"(大)"}, {u" \u3000", u""}, {u"曜石黑", u"曜石黑"},
    };
    for (const Row& row : rows) {
        const LedgerKey look = look_of({{u"W1", row.part, u"", std::nullopt, u"0"}});
        CHECK_MESSAGE(to_utf8(*look.parts[1]) == to_utf8(row.look), to_utf8(row.part));
        CHECK(!look.parts[3]);
    }
}

}  // namespace
}  // namespace vantlo::test
