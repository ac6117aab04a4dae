#include <doctest/doctest.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <thread>

#include "ado/open_connection.h"
#include "component/inventory_class.h"
#include "dataaccess/platform.h"
#include "host/bill_saver.h"
#include "tests/support/recording.h"
#include "tests/support/servers.h"
#include "tests/support/test_database.h"

// Many sessions save bills at once, each its own object on its own thread and connection, all of them on the same few
// ledger rows.

namespace vantlo::test {
namespace {

using namespace vantlo::host;

constexpr int writers = 16;
constexpr int bills_per_writer = 12;
constexpr int goods = 3;

/// Moves `quantity` units of a goods item from one warehouse to another through the component.
std::int32_t move_goods(NativeConnection& connection, const Text& gid, bool forward, float quantity) {
    Recorder reads;
    RecordedLine line(reads, {{"Gid", gid},
                              {"Unit", u"pcs"},
                              {"Actualqty", quantity},
                              {"Receiver", forward ? u"W1" : u"W2"},
                              {"Supplier", forward ? u"W2" : u"W1"},
                              {"Model1", u"red"},
                              {"Model2", u""},
                              {"Class", u"C1"},
                              {"Remarks", u""}});
    Inventory_Class object;
    object.set_ADOConn(&connection);
    const std::int32_t result = object.call(u"AddInventory_Db", {line});
    object.set_ADOConn(nullptr);
    return result;
}

/// What a goods item has moved, by all bills together.
struct Moved {
    std::atomic<int> forward{0};
    std::atomic<int> backward{0};
};

/// Saves one writer's bills. Returns how many attempts failed.
long save_bills(const Connect& connect, int writer, std::array<Moved, goods>& moved, std::atomic<int>& refused) {
    BillSaver saver(connect);
    for (int bill = 0; bill < bills_per_writer; ++bill) {
        const auto item = static_cast<std::size_t>((writer + bill) % goods);
        const bool forward = (writer + bill / goods) % 3 != 0;
        const int quantity = bill + 1;
        const std::string name = std::to_string(writer) + "/" + std::to_string(bill);
        const std::int32_t result = saver.save(from_utf8(name), [&](NativeConnection& connection) {
            const Text gid = from_utf8("G" + std::to_string(item));
            return move_goods(connection, gid, forward, static_cast<float>(quantity));
        });
        if (result != 0) ++refused;
        (forward ? moved[item].forward : moved[item].backward) += quantity;
    }
    return saver.retries();
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
    std::atomic<int> refused{0};
    std::atomic<long> retries{0};
    {
        std::vector<std::jthread> threads;
        for (int writer = 0; writer < writers; ++writer) {
            threads.emplace_back([&, writer] { retries += save_bills(connect, writer, moved, refused); });
        }
    }
    CHECK(refused.load() == 0);

    std::vector<std::string> expected;
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
    }
    std::ranges::sort(expected);
    const Owned<OdbcConnection> reader = server.connect();
    CHECK(joined(read_ledger(*reader)) == joined(expected));
    CHECK(to_long(only_value(*reader, u"select count(*) from SavedBill")) == writers * bills_per_writer);
    MESSAGE(server.dialect << " " << std::string(settings) << ": " << writers * bills_per_writer << " bills by "
                           << writers << " writers, " << retries.load() << " attempts failed and were made again");
}

TEST_CASE("16 writers on the same few rows leave exact sums and one row a key, with the unique key") {
    for (const Server& server : servers()) {
        for (const char* settings : {"", "Protocol=7.4-0"}) {
            if (*settings != '\0' && server.dialect != "postgresql") continue;
            INFO(server.dialect << " " << std::string(settings));
            const Owned<OdbcConnection> owner = server.connect();
            owner->run_script(schema_of(server.dialect));
            owner->run_script("delete from Inventory; delete from SavedBill");
            owner->run_script(schema_of(server.dialect + "-unique"));
            check_writers(server, settings);
            owner->run_script("delete from Inventory; delete from SavedBill");
            owner->run(server.dialect == "mariadb" ? u"drop index InventoryUniqueKey on Inventory"
                                                   : u"drop index InventoryUniqueKey");
        }
    }
}

TEST_CASE("16 writers need no unique key where the rows are there already") {
    for (const Server& server : servers()) {
        INFO(server.dialect);
        const Owned<OdbcConnection> owner = server.connect();
        owner->run_script(schema_of(server.dialect));
        owner->run_script("delete from Inventory; delete from SavedBill");
        for (int item = 0; item < goods; ++item) {
            CHECK(move_goods(*owner, from_utf8("G" + std::to_string(item)), true, 0) == 0);
        }
        check_writers(server, "");
        owner->run_script("delete from Inventory; delete from SavedBill");
    }
}

}  // namespace
}  // namespace vantlo::test
