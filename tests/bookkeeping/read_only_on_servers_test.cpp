#include <doctest/doctest.h>

#include "ado/native/open_connection.h"
#include "bookkeeping/bookkeeping.h"
#include "bookkeeping/rehearsal_copy.h"
#include "bookkeeping/stored_bill.h"
#include "support/stock_bills.h"
#include "tests/support/empty_shop.h"

// Bills are rehearsed for accounts and sessions that may only read.

namespace vantlo::test {
namespace {

/// What makes a session one that may only read.
const char16_t* read_only_session(const Server& server) {
    return server.dialect == "mariadb" ? u"set session transaction read only"
                                       : u"set session characteristics as transaction read only";
}

class LatestChanges final : public BookkeepingObserver {
public:
    void ends(const std::vector<LedgerChange>& changes) override { latest = changes; }

    std::vector<LedgerChange> latest;
};

void check_rehearsed(NativeConnection& reader) {
    CHECK(is_read_only(reader));
    const std::optional<Bill> stored = stored_bill(reader, *find_bill_kind("stock"), u"B1");
    REQUIRE(stored);
    const Bill* const copied[] = {&*stored};
    const auto copy = copy_for_rehearsal(reader, {}, copied);
    const auto seen = std::make_shared<LatestChanges>();
    Bookkeeping rehearsal([&] { return copy; }, seen, Language::english, GuardRules{});
    rehearsal.reverse(*stored->kind, u"B1");
    REQUIRE(seen->latest.size() == 2);
    CHECK(quantity_text(seen->latest[0].before->on_hand) == "24");
    CHECK(quantity_text(seen->latest[0].after->on_hand) == "0");
}

TEST_CASE("A bill is taken back in a rehearsal by a session, and by an account, that may only read") {
    for (const Server& server : servers()) {
        INFO(server.dialect);
        const EmptyShop emptied(server, false);
        const auto writer = open_connection(server.connection_string);
        CHECK(!is_read_only(*writer));
        Bill bill = stock_bill(u"B1", u"G1", 2, u"W1", u"W2");
        bill.lines[0].replace(u"Unit", u"box");
        writer->run(u"insert into GoodsUnit(id,Unit,UnitConverter) values('G1','box',12)");
        Bookkeeping([&] { return writer; }).save(bill);

        const auto reader = open_for_reading(server.connection_string);
        reader->run(read_only_session(server));
        check_rehearsed(*reader);

        if (server.dialect != "postgresql") continue;
        writer->run_script("create role vantlo_reader; grant select on all tables in schema public to vantlo_reader");
        {
            const auto account = open_for_reading(server.connection_string);
            account->run(u"set role vantlo_reader");
            check_rehearsed(*account);
        }
        writer->run_script("drop owned by vantlo_reader; drop role vantlo_reader");
    }
}

}  // namespace
}  // namespace vantlo::test
