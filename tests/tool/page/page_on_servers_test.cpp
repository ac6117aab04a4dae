#include <doctest/doctest.h>

#include "ado/native/open_connection.h"
#include "bookkeeping/journal.h"
#include "tests/support/empty_shop.h"
#include "tests/support/sample_shop.h"
#include "tool/page/stock_page.h"

// What a page reads is the same on every engine.

namespace vantlo::test {
namespace {

std::string cell(const Variant& value) { return value.is<Null>() ? "null" : to_utf8(to_text(value)); }

/// All that a page shows of a shop, but for times and the engine's name.
std::string shown_by(NativeConnection& database) {
    const StockPage page = read_stock_page(database, 50'000, Language::english);
    std::string shown;
    for (const StockRow& row : page.ledger) {
        shown += to_utf8(row.warehouse + u"|" + row.goods + u"|" + row.model1 + u"|" + row.model2 + u"|" + row.status +
                         u"|" + row.base_unit) +
                 " " + cell(row.received) + " " + cell(row.issued) + " " + cell(row.on_hand) + "\n";
    }
    for (const StockCard& card : page.cards) {
        shown += "card " + to_utf8(card.row.warehouse + u"|" + card.row.goods) + " " + quantity_text(card.opening);
        for (const CardEntry& entry : card.entries)
            shown += " " + to_utf8(entry.bill_id) + ":" + quantity_text(entry.balance);
        shown += "\n";
    }
    std::map<std::string, std::int64_t> received;  // in one day or two, if midnight passes meanwhile
    for (const PeriodOfUnit& day : page.days) received[day.unit] += day.received.ten_thousandths();
    for (const auto& [unit, sum] : received) shown += unit + " " + std::to_string(sum) + "\n";
    CHECK(page.has_journal);
    CHECK(page.journal_begins.has_value());
    CHECK(page.verdict.causes.empty());
    return shown + std::to_string(page.bills.value_or(0)) + " bills; " + page.verdict.report + page.verdict.failure;
}

TEST_CASE("A page shows the same of the sample shop on every engine") {
    const auto sqlite = empty_shop_in_memory();
    switch_journal_on(*sqlite);
    Bookkeeping own([&] { return sqlite; });
    save_sample_shop(own);
    const std::string expected = shown_by(*sqlite);
    CHECK_MESSAGE(expected.find("125 bills; The ledger agrees with the bills") != std::string::npos, expected);
    for (const Server& server : servers()) {
        INFO(server.dialect);
        const EmptyShop shop(server, true);
        const Connect connect = connect_in_turn({server.connection_string});
        const auto database = connect();
        switch_journal_on(*database);
        Bookkeeping bookkeeping(connect);
        save_sample_shop(bookkeeping);
        CHECK(shown_by(*database) == expected);
        remove_journal(*database);
    }
}

TEST_CASE("A page without the right to read the journal has the ledger, and says why it has no cards") {
    for (const Server& server : servers()) {
        if (server.dialect != "postgresql") continue;
        const EmptyShop shop(server, true);
        const auto owner = connect_in_turn({server.connection_string})();
        switch_journal_on(*owner);
        owner->run(u"insert into Inventory(WID,GId,InQty,OutQty,CurrentQty) values('W1','G1',1,0,1)");
        owner->run_script(
            "create role clerk login; grant select on all tables in schema public to clerk; "
            "revoke select on StockMovement from clerk");
        {
            const std::string as_clerk = server.connection_string.substr(0, server.connection_string.find("UID="));
            const auto clerk = connect_in_turn({as_clerk + "UID=clerk;PWD=clerk"})();
            const StockPage page = read_stock_page(*clerk, 10, Language::english);
            CHECK(page.ledger.size() == 1);
            CHECK(page.cards.empty());
            CHECK_MESSAGE(page.journal_failure.find("permission denied") != std::string::npos, page.journal_failure);
            const std::string html = page_html(page, "shop", "1", Language::english);
            CHECK(html.find("The journal of movements cannot be read") != std::string::npos);
            CHECK_MESSAGE(page.verdict.failure.empty(), page.verdict.failure);
        }
        owner->run_script("revoke all on all tables in schema public from clerk; drop role clerk");
        remove_journal(*owner);
    }
}

}  // namespace
}  // namespace vantlo::test
