#include <doctest/doctest.h>
#include <unistd.h>

#include <fstream>
#include <iterator>

#include "ado/native/open_connection.h"
#include "tests/support/shell.h"

// Reading commands and dry runs without the right to write the file, or into its folder.

namespace vantlo::test {
namespace {

constexpr const char* one_more = R"({"bills": [{"kind": "stock-in", "id": "B2", "lines": [
    {"goods": "G1", "unit": "box", "quantity": 1, "receiver": "W1"}]}]})";

/// A shop that its reader may not write: root's, read by an account without rights; anybody else takes his own away.
struct ReadOnlyShop {
    ReadOnlyShop() {
        shell.vantlo("init");
        shell.file("more.json", one_more);
        shell.file("shop.json", R"({"units": [{"goods": "G1", "unit": "box", "factor": 12}], "bills": [
            {"kind": "stock-in", "id": "B1", "lines": [
                {"goods": "G1", "unit": "box", "quantity": 2, "receiver": "W1"}]}]})");
        REQUIRE(shell.vantlo("save shop.json").exit_code == 0);
        REQUIRE(shell.run("cp " + Shell::program() + " reader && chmod 755 reader").exit_code == 0);
        forbid();
    }
    ReadOnlyShop(const ReadOnlyShop&) = delete;
    ReadOnlyShop& operator=(const ReadOnlyShop&) = delete;
    ~ReadOnlyShop() { allow(); }

    /// Gives the rights back to whoever runs the test, and takes them away again.
    void allow() const { shell.run("chmod 644 vantlo.db; chmod 755 ."); }
    void forbid() const {
        if (::geteuid() != 0) shell.run("chmod 444 vantlo.db && chmod 555 .");
    }

    /// Runs the program as one who may not write.
    Finished read(const std::string& arguments) const {
        const std::string as_reader = ::geteuid() == 0 ? "setpriv --reuid=65534 --regid=65534 --clear-groups " : "";
        return shell.run(as_reader + "./reader " + arguments);
    }

    std::string database() const {
        std::ifstream file(shell.path("vantlo.db"), std::ios::binary);
        return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
    }

    Shell shell;
};

TEST_CASE_FIXTURE(ReadOnlyShop, "A database that may not be written is read by every command that only reads") {
    const std::string before = database();
    const Finished ledger = read("ledger");
    CHECK_MESSAGE(ledger.exit_code == 0, ledger.output);
    CHECK(ledger.has(" 24"));
    CHECK(read("verify").exit_code == 0);
    const Finished bill = read("bill stock-in B1");
    CHECK_MESSAGE(bill.has("W1 G1, status 0        +24       0      +24\n"), bill.output);
    CHECK(read("bill stock-in B9").exit_code == 8);
    CHECK(read("journal status").exit_code == 0);
    for (const char* const command : {"bills", "card G1", "report --by goods", "repair", "repair --list"}) {
        const Finished finished = read(command);
        CHECK_MESSAGE(finished.exit_code == 0, command, ": ", finished.output);
    }
    CHECK(read("save more.json").exit_code == 4);
    CHECK(read("repair --apply --yes").exit_code == 4);
    CHECK(database() == before);
    CHECK(!shell.run("ls").has("-wal"));
    CHECK(!shell.run("ls").has("-shm"));
}

TEST_CASE_FIXTURE(ReadOnlyShop, "A database that may not be written is backed up into a folder that may") {
    const Shell elsewhere;
    REQUIRE(elsewhere.run("chmod 777 .").exit_code == 0);
    const Finished backup = read("backup " + elsewhere.path("copy.db"));
    CHECK_MESSAGE(backup.exit_code == 0, backup.output);
    CHECK(shell.vantlo("--db " + elsewhere.path("copy.db") + " ledger").has(" 24"));
    CHECK(!shell.run("ls").has("-wal"));
    CHECK(read("backup copy.db").exit_code == 9);
}

TEST_CASE_FIXTURE(ReadOnlyShop, "A dry run on a database that may not be written goes on in memory") {
    const std::string before = database();
    for (const std::string command : {"save", "import"}) {
        CHECK(read(command + " --dry-run more.json").has("rehearsed in memory"));
        const Finished rehearsed = read(command + " --dry-run more.json 2>/dev/null");
        CHECK(rehearsed.exit_code == 0);
        CHECK_MESSAGE(rehearsed.has("-- W1 G1, status 0: received 24 → 36, issued 0 → 0, on hand 24 → 36\n"),
                      rehearsed.output);
    }
    const Finished taken_back = read("delete --dry-run stock-in B1");
    CHECK(taken_back.exit_code == 0);
    CHECK_MESSAGE(taken_back.has("on hand 24 → 0"), taken_back.output);
    CHECK(read("delete --dry-run stock-in B9").exit_code == 8);
    CHECK(database() == before);
}

TEST_CASE_FIXTURE(ReadOnlyShop, "A reader sees what a writer has committed into the log") {
    allow();
    const auto writer = open_connection("sqlite:" + shell.path("vantlo.db"));
    writer->run(u"update Inventory set CurrentQty = 77");
    forbid();
    const Finished ledger = read("ledger");
    CHECK_MESSAGE(ledger.has(" 77"), ledger.output);
}

TEST_CASE_FIXTURE(ReadOnlyShop, "Reading leaves a copy with a rollback journal as it is") {
    allow();
    shell.run("sqlite3 vantlo.db 'pragma journal_mode = delete'");
    const std::string before = database();
    forbid();
    CHECK(read("ledger").has(" 24"));
    allow();
    CHECK(shell.vantlo("ledger").has(" 24"));
    CHECK(shell.vantlo("bill stock-in B1").exit_code == 0);
    CHECK(database() == before);
}

}  // namespace
}  // namespace vantlo::test
