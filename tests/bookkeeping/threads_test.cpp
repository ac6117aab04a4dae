#include <doctest/doctest.h>

#include <barrier>
#include <string>
#include <thread>
#include <vector>

#include "ado/native/open_connection.h"
#include "bills/ledger_row.h"
#include "bills/schema.h"
#include "bookkeeping/bookkeeping.h"
#include "support/stock_bills.h"
#include "tests/support/temporary_folder.h"

// Several bookkeepings at once, each in a thread of its own. Built with the thread sanitizer, which also sees the races
// that leave no trace.

namespace vantlo::test {
namespace {

using namespace vantlo;

constexpr int rounds = 200;

/// What failing postings are reported as, with bills between them that are saved.
std::vector<std::string> accounts_of(const Text& warehouse, std::barrier<>& start) {
    const auto database = open_connection("sqlite::memory:");
    database->run_script(schema_for("sqlite"));
    // The component's statements fail in words of this database, its message in words of its own.
    database->run(u"create trigger Full before insert on Inventory when new.GId='FULL' begin select raise(abort,'" +
                  warehouse + u" is full'); end");
    Bookkeeping bookkeeping([&] { return database; });
    std::vector<std::string> accounts;
    start.arrive_and_wait();
    for (int round = 0; round < rounds; ++round) {
        const Text id = from_utf8(std::to_string(round));
        bookkeeping.save(stock_bill(id, u"G1", 1, warehouse, u"S"));
        try {
            bookkeeping.save(stock_bill(id + u"F", u"FULL", 1, warehouse, u"S"));
        } catch (const TaskError& error) {
            accounts.emplace_back(error.what());
        }
    }
    return accounts;
}

TEST_CASE("Two bookkeepings in two threads report their own failures, each with one message of the component") {
    collect_messages();
    std::barrier start(2);
    std::vector<std::string> first, second;
    {
        const std::jthread one([&] { first = accounts_of(u"W1", start); });
        const std::jthread other([&] { second = accounts_of(u"W2", start); });
    }
    REQUIRE(first.size() == rounds);
    REQUIRE(second.size() == rounds);
    const auto count = [](const std::string& text, const std::string& part) {
        int found = 0;
        for (std::size_t at = 0; (at = text.find(part, at)) != std::string::npos; at += part.size()) ++found;
        return found;
    };
    for (int round = 0; round < rounds; ++round) {
        const auto index = static_cast<std::size_t>(round);
        CHECK(first[index].find("W1 is full") != std::string::npos);
        CHECK(second[index].find("W2 is full") != std::string::npos);
        CHECK_MESSAGE(count(first[index], "AddInventory_Db()") == 1, first[index]);
        CHECK_MESSAGE(count(second[index], "AddInventory_Db()") == 1, second[index]);
    }
}

TEST_CASE("Writers in threads of their own save bills into one SQLite file, and the ledger holds exact sums") {
    constexpr int writers = 8;
    constexpr int bills_per_writer = 25;
    const TemporaryFolder folder;
    const std::string file = "sqlite:" + folder.file("shop.db");
    const auto reader = open_connection(file);
    reader->run_script(schema_for("sqlite"));
    std::vector<std::string> failures(writers);
    {
        std::vector<std::jthread> threads;
        for (std::size_t writer = 0; writer < writers; ++writer) {
            threads.emplace_back([&, writer] {
                try {
                    Bookkeeping bookkeeping(connect_in_turn({file}));
                    for (int number = 0; number < bills_per_writer; ++number) {
                        const std::string id = std::to_string(writer) + "/" + std::to_string(number);
                        bookkeeping.save(stock_bill(from_utf8(id), u"G1", number, u"W1", u"W2"));
                    }
                } catch (const std::exception& failure) {
                    failures[writer] = failure.what();
                }
            });
        }
    }
    for (const std::string& failure : failures) CHECK(failure == "");
    const Currency moved = to_currency(writers * bills_per_writer * (bills_per_writer - 1) / 2);
    const std::vector<LedgerRow> ledger = read_ledger(*reader, {});
    REQUIRE(ledger.size() == 2);
    CHECK(ledger[0].received == moved);
    CHECK(ledger[1].issued == moved);
}

}  // namespace
}  // namespace vantlo::test
