#include "bookkeeping/import_journal.h"

#include <doctest/doctest.h>

#include <set>

#include "ado/native/open_connection.h"
#include "bills/schema.h"
#include "bookkeeping/bookkeeping.h"
#include "support/stock_bills.h"
#include "tests/support/printing.h"

namespace vantlo::test {
namespace {

using namespace vantlo;

TEST_CASE("A bill's content text has every field of header and lines, by the names of the columns") {
    Bill bill = stock_bill(u"B1", u"G1", 3, u"W1", u"箱=1\n2");
    bill.lines.push_back(bill.lines.front());
    bill.lines.back().replace(u"Actualqty", 0.1F);
    bill.lines.back().replace(u"Remarks", Null{});
    CHECK(content_text(bill) ==
          "1\nheader\nBillDate=45356\nReferFlag=0\nRemarks=0:\n"
          "line\nActualqty=3\nClass=2:C1\nGid=2:G1\nModel1=3:red\nModel2=0:\nReceiver=2:W1\nRemarks=0:\n"
          "Supplier=7:箱=1\n2\nUnit=3:pcs\n"
          "line\nActualqty=0.10000000149011612\nClass=2:C1\nGid=2:G1\nModel1=3:red\nModel2=0:\nReceiver=2:W1\n"
          "Remarks=null\nSupplier=7:箱=1\n2\nUnit=3:pcs\n");
}

TEST_CASE("A bill's content digest is the SHA-256 of its content text") {
    // Source: sha256sum of the text "1\nheader\n".
    CHECK(content_digest(Bill{find_bill_kind("stock"), u"B1", {}, {}}) ==
          u"sha256-1:eea573a0d0c055e9c7fdd948e2b1d80cc87f206d9f1429021330d60a1114d0f5");
}

TEST_CASE("Bills of other content have another digest, bills of other names the same") {
    const Bill bill = stock_bill(u"B1", u"G1", 3, u"W1", u"W2");
    CHECK(content_digest(stock_bill(u"B2", u"G1", 3, u"W1", u"W2")) == content_digest(bill));
    Bill twice = bill;
    twice.lines.push_back(bill.lines.front());
    Bill without = bill;
    without.lines.clear();
    Bill null = bill;
    null.lines.front().replace(u"Remarks", Null{});
    Bill word = bill;
    word.lines.front().replace(u"Remarks", u"null");
    const Bill bills[] = {bill,
                          stock_bill(u"B1", u"G1", 4, u"W1", u"W2"),
                          stock_bill(u"B1", u"G1", 3, u"W2", u"W1"),
                          stock_bill(u"B1", u"G1\nModel1=3:red", 3, u"W1", u"W2"),
                          twice,
                          without,
                          null,
                          word};
    std::set<Text> digests;
    for (const Bill& other : bills) digests.insert(content_digest(other));
    CHECK(digests.size() == std::size(bills));
}

TEST_CASE("An import knows the bills that it has imported, also those whose content it wrote in sixteen digits") {
    const auto database = open_connection("sqlite::memory:");
    database->run_script(schema_for("sqlite"));
    const Bill bill = stock_bill(u"B1", u"G1", 3, u"W1", u"W2");
    const Bill* const bills[] = {&bill};
    Bookkeeping([&] { return database; }).import(bills);
    const auto state_of = [&](const Bill& asked) { return states_of(*database, {asked}).front(); };
    const Bill changed = stock_bill(u"B1", u"G1", 4, u"W1", u"W2");

    const ResultTable content = database->run(u"select Content from PostingJournal");
    CHECK(to_text(content.rows.at(0).at(0)) == content_digest(bill));
    CHECK(state_of(bill) == BillState::imported);
    CHECK(state_of(changed) == BillState::imported_otherwise);

    // What an import of the time before wrote for this bill.
    database->run(u"update PostingJournal set Content='5e9f8c8bf11f8642'");
    CHECK(state_of(bill) == BillState::imported);
    CHECK(state_of(changed) == BillState::imported_otherwise);

    for (const TextView foreign : {u"", u"0123456789abcdef", u"sha256-2:00", u"sha256-1:"}) {
        database->run(u"update PostingJournal set Content='" + Text(foreign) + u"'");
        CHECK(state_of(bill) == BillState::imported_otherwise);
    }
}

}  // namespace
}  // namespace vantlo::test
