#include <doctest/doctest.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <thread>

#include "ado/native/open_connection.h"
#include "bookkeeping/bookkeeping.h"
#include "support/stock_bills.h"
#include "tests/support/empty_shop.h"
#include "tests/support/recording.h"

// Many sessions save bills and take some back, each on its own thread and connection, all of them on the same few ledger
// rows.

namespace vantlo::test {
namespace {

using namespace vantlo;

constexpr int writers = 16;
constexpr int bills_per_writer = 12;
constexpr int goods = 3;

Text goods_name(int item) { return from_utf8("G" + std::to_string(item)); }

/// What a goods item has moved by the bills that are kept, and how many these are.
struct Moved {
    std::atomic<int> forward{0};
    std::atomic<int> backward{0};
    std::atomic<int> bills{0};
};

/// Saves one writer's bills, and takes every fourth back. Returns how many attempts failed.
long save_bills(const Connect& connect, int writer, std::array<Moved, goods>& moved) {
    Bookkeeping bookkeeping(connect);
    for (int number = 0; number < bills_per_writer; ++number) {
        const int item = (writer + number) % goods;
        const bool forward = (writer + number / goods) % 3 != 0;
        const int quantity = number + 1;
        const Bill bill = stock_bill(from_utf8(std::to_string(writer) + "/" + std::to_string(number)), goods_name(item),
                                     quantity, forward ? u"W1" : u"W2", forward ? u"W2" : u"W1");
        bookkeeping.save(bill);
        if (number % 4 == 3) {
            bookkeeping.reverse(*bill.kind, bill.id);
            continue;
        }
        Moved& of_item = moved[static_cast<std::size_t>(item)];
        (forward ? of_item.forward : of_item.backward) += quantity;
        ++of_item.bills;
    }
    return bookkeeping.retries();
}

/// Lets all writers save their bills at once, and checks every row of the ledger.
void check_writers(const Server& server, const char* settings) {
    const Connect connect = [&server, settings] {
        Owned<NativeConnection> connection = open_connection(server.connection_string + ";" + settings);
        // So that a deadlock costs this test less than a second each.
        if (server.dialect == "postgresql") connection->run(u"set deadlock_timeout = '20ms'");
        return connection;
    };
    std::array<Moved, goods> moved;
    std::atomic<long> retries{0};
    std::atomic<int> refused{0};
    {
        std::vector<std::jthread> threads;
        for (int writer = 0; writer < writers; ++writer) {
            threads.emplace_back([&, writer] {
                try {
                    retries += save_bills(connect, writer, moved);
                } catch (const std::exception& failure) {
                    ++refused;
                    MESSAGE(std::string(failure.what()));
                }
            });
        }
    }
    CHECK(refused.load() == 0);

    std::vector<std::string> expected;
    int bills = 0;
    for (std::size_t item = 0; item < goods; ++item) {
        const int forward = moved[item].forward;
        const int backward = moved[item].backward;
        const auto row = [&](const char* warehouse, int in, int out) {
            expected.push_back(std::string(warehouse) + " G" + std::to_string(item) + " red '' 0 | in " +
                               std::to_string(in) + " out " + std::to_string(out) + " current " +
                               std::to_string(in - out) + " | C1 pcs ''");
        };
        row("W1", forward, backward);
        row("W2", backward, forward);
        bills += moved[item].bills;
    }
    std::ranges::sort(expected);
    const Owned<OdbcConnection> reader = server.connect();
    CHECK(joined(read_ledger(*reader)) == joined(expected));
    CHECK(to_long(only_value(*reader, u"select count(*) from StockBill")) == bills);
    CHECK(to_long(only_value(*reader, u"select count(*) from StockBillItems")) == bills);
    MESSAGE(server.dialect << " " << std::string(settings) << ": " << writers * bills_per_writer << " bills by "
                           << writers << " writers, " << retries.load() << " attempts failed and were made again");
}

TEST_CASE("16 writers on the same few rows leave exact sums and one row a key, with the unique key") {
    for (const Server& server : servers()) {
        for (const char* settings : {"", "Protocol=7.4-0"}) {
            if (*settings != '\0' && server.dialect != "postgresql") continue;
            INFO(server.dialect << " " << std::string(settings));
            const EmptyShop shop(server, true);
            check_writers(server, settings);
        }
    }
}

TEST_CASE("16 writers need no unique key where the rows are there already") {
    for (const Server& server : servers()) {
        INFO(server.dialect);
        const EmptyShop shop(server, false);
        Bookkeeping bookkeeping(connect_in_turn({server.connection_string}));
        for (int item = 0; item < goods; ++item) {
            const Bill bill = stock_bill(goods_name(item), goods_name(item), 1, u"W1", u"W2");
            bookkeeping.save(bill);
            bookkeeping.reverse(*bill.kind, bill.id);
        }
        check_writers(server, "");
    }
}

TEST_CASE("A bill whose id is there already is refused at its second attempt, and stays as it was") {
    for (const Server& server : servers()) {
        INFO(server.dialect);
        const EmptyShop shop(server, true);
        const Bill bill = stock_bill(u"B1", u"G1", 2, u"W1", u"W2");
        Bookkeeping bookkeeping(connect_in_turn({server.connection_string}));
        bookkeeping.save(bill);
        std::string account;
        try {
            bookkeeping.save(bill);
        } catch (const TaskError& failure) {
            CHECK(failure.reason() == Reason::posting_failed);
            account = failure.what();
        }
        CHECK(account.starts_with("stock B1: ODBC "));
        CHECK(bookkeeping.retries() == 1);
        CHECK(joined(read_ledger(*server.connect())) == joined({"W1 G1 red '' 0 | in 2 out 0 current 2 | C1 pcs ''",
                                                                "W2 G1 red '' 0 | in 0 out 2 current -2 | C1 pcs ''"}));
    }
}

}  // namespace
}  // namespace vantlo::test
