#include <doctest/doctest.h>

#include <iterator>
#include <random>

#include "ado/sqlite/sqlite_connection.h"
#include "automation/number_text.h"

namespace vantlo::test {
namespace {

struct Movement {
    const char16_t* in_sign;  // of InQty, or of OutQty if there is none
    const char16_t* out_sign;
    const char16_t* current_sign;
    int in;
    int out;
    int current;
};

// clang-format off
const Movement movements[] = {
    // InQty    OutQty    CurrentQty  in  out  current
    {u" + ",    nullptr,  u" + ",     +1,   0,  +1},
    {nullptr,   u" + ",   u" - ",      0,  +1,  -1},
    {u" - ",    nullptr,  u" - ",     -1,   0,  -1},
    {nullptr,   u" - ",   u" + ",      0,  -1,  +1},
};
// clang-format on

struct Quantities {
    std::int64_t in;
    std::int64_t out;
    std::int64_t current;

    friend bool operator==(const Quantities&, const Quantities&) = default;
};

Quantities read(NativeConnection& connection) {
    const ResultTable result = connection.run(u"select InQty, OutQty, CurrentQty from Ledger where WID = 'W1'");
    const auto count = [&](std::size_t column) {
        return result.rows.at(0).at(column).get_if<Currency>()->ten_thousandths();
    };
    return {count(0), count(1), count(2)};
}

Text update_text(const Movement& movement, Currency quantity) {
    const Text literal = number_text(quantity);
    const Text changed = movement.in_sign != nullptr ? Text(u"InQty = InQty") + movement.in_sign
                                                     : Text(u"OutQty = OutQty") + movement.out_sign;
    return u"update Ledger set " + changed + literal + u",CurrentQty = CurrentQty" + movement.current_sign + literal +
           u" where WID='W1'";
}

TEST_CASE("Quantities in SQLite are exact to the last digit after a million postings on one row") {
    constexpr int postings = 1'000'000;
    constexpr int postings_between_looks = 100'000;
    constexpr std::int64_t opening = 2'000'000'000;  // near the largest value for which a million are promised exact
    const std::int64_t quantities[] = {1, 1000, 3333, 6667, 10005, 125000, 240000, 333333};

    const Owned<SqliteConnection> connection(new SqliteConnection(":memory:"));
    connection->run_script(
        "create table Ledger (WID nvarchar(40) primary key, InQty money, OutQty money, CurrentQty money);"
        "insert into Ledger values ('W1', 200000, 200000, 200000)");
    Quantities expected{opening, opening, opening};
    std::mt19937 random(20240305);
    connection->begin();
    for (int posted = 1; posted <= postings; ++posted) {
        const Movement& movement = movements[random() % std::size(movements)];
        const std::int64_t quantity = quantities[random() % std::size(quantities)];
        connection->run(update_text(movement, Currency::from_ten_thousandths(quantity)));
        expected.in += movement.in * quantity;
        expected.out += movement.out * quantity;
        expected.current += movement.current * quantity;
        if (posted % postings_between_looks == 0) REQUIRE(read(*connection) == expected);
    }
    connection->commit();
    CHECK(read(*connection) == expected);
}

}  // namespace
}  // namespace vantlo::test
