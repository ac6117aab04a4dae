#include <doctest/doctest.h>

#include <barrier>
#include <string>
#include <thread>
#include <vector>

#include "ado/native/open_connection.h"
#include "bills/schema.h"
#include "bookkeeping/bookkeeping.h"
#include "support/stock_bills.h"

// Two bookkeepings at once, each in a thread of its own with a database of its own. Built with the thread sanitizer, which
// also sees the races that leave no trace.

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

}  // namespace
}  // namespace vantlo::test
