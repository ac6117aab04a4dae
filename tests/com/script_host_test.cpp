#include "tests/support/com/script_host.h"

#include <doctest/doctest.h>

#include <filesystem>
#include <fstream>

#include "ado/sqlite/sqlite_connection.h"
#include "tests/com/component_library.h"
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

/// A library registered with the system as long as this lasts.
class Registered {
public:
    explicit Registered(std::string file) : file_(std::move(file)) { REQUIRE(regsvr32(L"") == 0); }
    Registered(const Registered&) = delete;
    Registered& operator=(const Registered&) = delete;
    ~Registered() { regsvr32(L"/u"); }

private:
    DWORD regsvr32(const std::wstring& option) const {
        const Text path = windows_path(file_);
        return run_to_end(L"regsvr32.exe /s " + option + L" \"" + std::wstring(path.begin(), path.end()) + L"\"");
    }

    std::string file_;
};

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

}  // namespace
}  // namespace vantlo::test
