#include "tests/support/com/script_host.h"

#include <doctest/doctest.h>

#include <filesystem>
#include <fstream>
#include <iterator>

#include "ado/sqlite/sqlite_connection.h"
#include "tests/com/component_library.h"
#include "tests/com/registered.h"
#include "tests/support/scenario.h"
#include "tests/support/temporary_folder.h"

// Script engines that we did not write save the sample shop; the ledger must be what the native host makes of it.

namespace vantlo::test {
namespace {

const std::string shop = VANTLO_SHOP;

std::vector<std::string> ledger_of(const std::string& file) {
    const Owned<SqliteConnection> connection(new SqliteConnection(file));
    return read_ledger(*connection);
}

/// Kinds and identifiers of the bills that the native host takes back, one after the other.
std::vector<std::string> taken_back() {
    std::vector<std::string> words;
    std::ifstream list(VANTLO_SOURCE_DIR "/examples/shop/taken-back.txt");
    for (std::string word; list >> word;) words.push_back(word);
    return words;
}

void check_script(const std::string& script) {
    const Registered component(VANTLO_COMPONENT);
    const Registered ado(VANTLO_ADO_STAND_IN);
    const TemporaryFolder folder;
    const std::string file = folder.file("bills.db");
    const std::string path = VANTLO_SOURCE_DIR "/tests/com/scripts/" + script;

    std::filesystem::copy_file(shop + "/bills.db", file);
    CHECK(ledger_of(file).empty());
    CHECK(joined(run_script(path, {file})) == joined({"125 bills saved", "done"}));
    CHECK(joined(ledger_of(file)) == joined(ledger_of(shop + "/saved.db")));

    std::filesystem::copy_file(shop + "/bills.db", file, std::filesystem::copy_options::overwrite_existing);
    std::vector<std::string> arguments = taken_back();
    arguments.insert(arguments.begin(), file);
    CHECK(joined(run_script(path, arguments)) == joined({"125 bills saved", "done"}));
    CHECK(joined(ledger_of(file)) == joined(ledger_of(shop + "/taken-back.db")));
}

TEST_CASE("A VBScript host leaves the ledger that the native host leaves") { check_script("shop.vbs"); }

TEST_CASE("A JScript host leaves the ledger that the native host leaves") { check_script("shop.js"); }

/// A database with one line's worth of goods: a unit of twelve pieces.
struct SampleDatabase {
    SampleDatabase() {
        SetEnvironmentVariableW(L"VANTLO_UNATTENDED", L"1");  // which the script host inherits
        const Owned<SqliteConnection> connection(new SqliteConnection(file));
        std::ifstream schema(VANTLO_SOURCE_DIR "/schema/sqlite.sql");
        connection->run_script(std::string(std::istreambuf_iterator<char>(schema), {}));
        connection->run(u"insert into GoodsUnit(id,Unit,UnitConverter) values('G001','box',12)");
    }

    /// Runs a sample of examples/hosts on it.
    [[nodiscard]] std::vector<std::string> run(const std::string& sample,
                                               std::vector<std::string> arguments = {}) const {
        arguments.insert(arguments.begin(), "Data Source=" + file);
        return run_script(VANTLO_SOURCE_DIR "/examples/hosts/" + sample, arguments);
    }

    TemporaryFolder folder;
    std::string file = folder.file("sample.db");
};

TEST_CASE("The JScript sample saves a line in a transaction, or nothing of it") {
    const Registered component(VANTLO_COMPONENT);
    const Registered ado(VANTLO_ADO_STAND_IN);
    const SampleDatabase database;
    CHECK(joined(database.run("save_line.js")) == joined({"saved"}));
    CHECK(joined(ledger_of(database.file)) == joined({"W1 G001 '' '' 0 | in 24 out 0 current 24 | '' box ''",
                                                      "W2 G001 '' '' 0 | in 0 out 24 current -24 | '' box ''"}));
    // The receipt goes well, the issue does not: the transaction takes the receipt back.
    Owned<SqliteConnection>(new SqliteConnection(database.file))
        ->run(
            u"create trigger Full before update on Inventory when new.WID='W2' begin select raise(abort,'full'); end");
    const std::vector<std::string> said = database.run("save_line.js");
    REQUIRE(said.size() == 2);
    CHECK(said[0].starts_with("AddInventory_Db():"));  // in the place of the message box
    CHECK(said[1].starts_with("not saved: error -"));
    CHECK(joined(ledger_of(database.file)) == joined({"W1 G001 '' '' 0 | in 24 out 0 current 24 | '' box ''",
                                                      "W2 G001 '' '' 0 | in 0 out 24 current -24 | '' box ''"}));
}

TEST_CASE("The VBScript sample takes a bill back in a transaction, or nothing of it") {
    const Registered component(VANTLO_COMPONENT);
    const Registered ado(VANTLO_ADO_STAND_IN);
    const SampleDatabase database;
    Owned<SqliteConnection>(new SqliteConnection(database.file))
        ->run(
            u"insert into "
            u"StockBillItems(BillId,ItemNo,Receiver,Supplier,Gid,Model1,Model2,Class,Unit,Actualqty,Remarks) "
            u"values('B1',1,'W1','W2','G001','','','','box',2,'')");
    CHECK(joined(database.run("take_back.vbs", {"B1"})) == joined({"taken back"}));
    const std::vector<std::string> taken = {"W1 G001 '' '' 0 | in -24 out 0 current -24 | '' box ''",
                                            "W2 G001 '' '' 0 | in 0 out -24 current 24 | '' box ''"};
    CHECK(joined(ledger_of(database.file)) == joined(taken));
    Owned<SqliteConnection>(new SqliteConnection(database.file))
        ->run(
            u"create trigger Full before update on Inventory when new.WID='W2' begin select raise(abort,'full'); end");
    const std::vector<std::string> said = database.run("take_back.vbs", {"B1"});
    REQUIRE(said.size() == 2);
    CHECK(said[0].starts_with("ReduceInventory_Db():"));
    CHECK(said[1].starts_with("not taken back: error -"));
    CHECK(joined(ledger_of(database.file)) == joined(taken));
}

}  // namespace
}  // namespace vantlo::test
