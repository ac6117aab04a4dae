#pragma once

#include <doctest/doctest.h>

#include "audit/verification.h"
#include "bookkeeping/bookkeeping.h"
#include "support/stock_bills.h"

namespace vantlo::test {

/// In an empty shop with a journal: changes one row in another session so often that verify does not take all of it.
inline void check_latest_movements(const Owned<NativeConnection>& database, NativeConnection& other_session) {
    Bookkeeping([&] { return database; }).save(stock_bill(u"B1", u"G1", 4, u"W1", u"W2"));
    const auto change = [&](int times) {
        other_session.begin();
        for (int i = 0; i < times; ++i) other_session.run(u"update Inventory set InQty=InQty+1 where WID='W1'");
        other_session.commit();
    };
    const auto check = [&](std::size_t count, bool has_earlier) {
        const Verification verification = verify(*database, Language::english);
        REQUIRE(verification.findings.size() == 1);
        const LooseMovements& loose = verification.findings[0].differences.at(0).loose;
        CHECK(loose.latest.size() == count);
        CHECK(loose.has_earlier == has_earlier);
        CHECK(to_double(loose.latest.back().after[0]) - to_double(loose.latest.front().after[0]) ==
              static_cast<double>(count - 1));
    };
    change(100);
    check(100, false);
    change(1);
    check(100, true);
    other_session.run(u"update Inventory set InQty=InQty-101 where WID='W1'");
    change(7);
    check(7, false);  // what came before adds up to nothing
}

}  // namespace vantlo::test
