#include <doctest/doctest.h>

#include <chrono>
#include <functional>
#include <thread>

#include "ado/native/open_connection.h"
#include "bookkeeping/bookkeeping.h"
#include "bookkeeping/rehearsal.h"
#include "import/shop_file.h"
#include "tests/support/empty_shop.h"
#include "tests/support/shell.h"

// Two hosts that save the same bill at once.

namespace vantlo::test {
namespace {

using namespace std::chrono_literals;

constexpr const char* shown =
    R"({"kind": "stock-in", "id": "B1", "lines": [{"goods": "G1", "quantity": 2, "receiver": "W1"}]})";
constexpr const char* differing =
    R"({"kind": "stock-in", "id": "B1", "lines": [{"goods": "G1", "quantity": 5, "receiver": "W1"}]})";
constexpr const char* another =
    R"({"kind": "stock-in", "id": "B2", "lines": [{"goods": "G2", "quantity": 7, "receiver": "W1"}]})";

/// A host that has saved the bills of a file and not committed them yet.
class SlowHost {
public:
    SlowHost(const std::string& database, const std::string& path)
        : connection_(open_connection(database)), bookkeeping_(rehearsing([this] { return connection_; })) {
        const ShopFile shop = read_shop_file(path, Language::english);
        for (const Bill& bill : shop.bills) bookkeeping_.save(bill);
    }

    void commit() { connection_->commit(); }

private:
    Owned<NativeConnection> connection_;
    Bookkeeping bookkeeping_;
};

std::string bills(const std::string& list) { return R"({"bills": [)" + list + "]}"; }

/// Runs a command of the program while another host saves the bill that is shown, and commits it a while later.
Finished run_beside_host(const Shell& shell, const std::string& database, const std::string& arguments) {
    SlowHost host(database, shell.path(shell.file("shown.json", bills(shown))));
    Finished finished;
    std::thread program(
        [&] { finished = shell.run("VANTLO_DB='" + database + "' " + Shell::program() + " " + arguments); });
    // Long enough that the program has looked, and waits for the host. Had it not, it would find the bill stored.
    std::this_thread::sleep_for(1s);
    host.commit();
    program.join();
    return finished;
}

std::string on_hand(const std::string& database) {
    std::string ledger;
    for (const vantlo::LedgerRow& row : vantlo::read_ledger(*open_connection(database), {})) {
        ledger += to_utf8(row.goods) + " " + quantity_text(row.on_hand) + "\n";
    }
    return ledger;
}

void check_same_bill(const std::string& database, const std::function<void()>& empty) {
    const Shell shell;
    shell.file("same.json", bills(std::string(shown) + "," + another));
    shell.file("other.json", bills(differing));
    for (const std::string command : {"save", "import"}) {
        INFO(command);
        empty();
        const Finished same = run_beside_host(shell, database, command + " same.json");
        CHECK_MESSAGE(same.exit_code == 0, same.output);
        CHECK_MESSAGE(same.has("1 bill with 1 line"), same.output);
        CHECK_MESSAGE(same.has("1 bill was there already."), same.output);
        CHECK(on_hand(database) == "G1 2\nG2 7\n");

        empty();
        const Finished other = run_beside_host(shell, database, command + " other.json");
        CHECK_MESSAGE(other.exit_code == 5, other.output);
        CHECK_MESSAGE(other.has("other.json:1:39: stock-in B1 is stored already, with other content\n"), other.output);
        CHECK_MESSAGE(!other.has("constraint"), other.output);
        CHECK(on_hand(database) == "G1 2\n");
    }
    empty();
}

constexpr const char* emptying =
    "delete from Inventory; delete from StockBill; delete from StockBillItems; delete from BillHistory;"
    "delete from PostingJournal";

TEST_CASE("A bill that another host saves at the same moment is passed over, or told where its content differs") {
    {
        INFO("sqlite");
        const Shell folder;
        const std::string database = "sqlite:" + folder.path("shop.db");
        open_connection(database)->run_script(schema_of("sqlite"));
        check_same_bill(database, [&] { open_connection(database)->run_script(emptying); });
    }
    for (const Server& server : servers()) {
        INFO(server.dialect);
        const EmptyShop shop(server, true);
        check_same_bill(server.connection_string,
                        [&] { open_connection(server.connection_string)->run_script(emptying); });
    }
}

}  // namespace
}  // namespace vantlo::test
