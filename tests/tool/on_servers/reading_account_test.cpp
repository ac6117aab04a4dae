#include <doctest/doctest.h>

#include <algorithm>

#include "ado/native/open_connection.h"
#include "bookkeeping/bookkeeping.h"
#include "bookkeeping/journal.h"
#include "import/shop_file.h"
#include "tests/support/empty_shop.h"
#include "tests/support/shell.h"

// What an account that may only select can do, and what a server that takes no writes lets through.

namespace vantlo::test {
namespace {

constexpr const char* shop = R"({"goods": [{"id": "G1", "name": "phone"}], "warehouses": [{"id": "W1"}],
    "units": [{"goods": "G1", "unit": "box", "factor": 12}], "bills": [
    {"kind": "stock-in", "id": "B1", "date": "2024-03-05", "lines": [
        {"goods": "G1", "unit": "box", "quantity": 2, "receiver": "W1"}]}]})";
constexpr const char* one_more = R"({"bills": [{"kind": "stock-in", "id": "B2", "lines": [
    {"goods": "G1", "unit": "box", "quantity": 1, "receiver": "W1"}]}]})";

/// How a server is made to take no writes, and how an account that may write all tables, or read them, is made.
struct ReadOnlyRow {
    const char* dialect;
    const char* reader;
    const char* clerk;
    const char* no_writes;
    const char* writes;
    const char* undo;
};

// clang-format off
const ReadOnlyRow rows[] = {
    {"postgresql",
     "create role reader login; grant select on all tables in schema public to reader",
     "create role clerk login; grant select, insert, update, delete on all tables in schema public to clerk",
     "alter role clerk set default_transaction_read_only = on", "alter role clerk reset default_transaction_read_only",
     "drop owned by reader; drop role reader; drop owned by clerk; drop role clerk"},
    {"mariadb",
     "create user reader identified by 'reader'; grant select on vantlo.* to reader",
     "create user clerk identified by 'clerk'; grant select, insert, update, delete on vantlo.* to clerk",
     "set global read_only = 1", "set global read_only = 0",
     "drop user reader; drop user clerk"},
};
// clang-format on

/// The connection string under another account, whose name is its password.
std::string under(const std::string& account, std::string connection_string) {
    connection_string.erase(connection_string.find("UID="));
    return connection_string + "UID=" + account + ";PWD=" + account;
}

void check_reading(const Shell& shell, const std::string& database) {
    const auto run = [&](const std::string& arguments) {
        return shell.run("VANTLO_DB='" + database + "' " + Shell::program() + " " + arguments);
    };
    for (const char* const command : {"ledger", "verify", "bill stock-in B1", "bills", "card G1", "report --by goods",
                                      "goods", "journal status", "repair", "repair --list", "save --dry-run more.json",
                                      "import --dry-run more.json", "delete --dry-run stock-in B1", "new stock-in"}) {
        const Finished finished = run(command);
        CHECK_MESSAGE(finished.exit_code == 0, command, ": ", finished.output);
    }
    CHECK(run("ledger").has(" 24"));
    CHECK(run("save --dry-run more.json").has("on hand 24 → 36"));
    CHECK(run("delete --dry-run stock-in B1").has("on hand 24 → 0"));
    CHECK(run("backup copy.db").exit_code == 7);
    for (const char* const command : {"save more.json", "import more.json", "delete stock-in B1"}) {
        const Finished refused = run(command);
        CHECK_MESSAGE(refused.exit_code == 4, command, ": ", refused.output);
    }
}

TEST_CASE("An account that may only read, and one on a server that takes no writes, see all and change nothing") {
    for (const Server& server : servers()) {
        INFO(server.dialect);
        const auto* const row = std::ranges::find(rows, server.dialect, [](const ReadOnlyRow& r) { return r.dialect; });
        const EmptyShop emptied(server, true);
        const Shell shell;
        shell.file("more.json", one_more);
        const auto owner = open_connection(server.connection_string);
        owner->run_script("delete from PostingJournal");
        switch_journal_on(*owner);
        const ShopFile file = read_shop_file(shell.path(shell.file("shop.json", shop)), Language::english);
        Bookkeeping bookkeeping([&] { return owner; });
        bookkeeping.save_master(file.master);
        bookkeeping.save(file.bills.front());
        owner->run_script(row->reader);
        owner->run_script(row->clerk);

        check_reading(shell, under("reader", server.connection_string));
        owner->run_script(row->no_writes);
        check_reading(shell, under("clerk", server.connection_string));
        owner->run_script(row->writes);
        CHECK(quantity_text(vantlo::read_ledger(*owner, {}).at(0).on_hand) == "24");

        owner->run_script(row->undo);
        remove_journal(*owner);
    }
}

}  // namespace
}  // namespace vantlo::test
