#include "tests/support/sample_shop.h"

#include <doctest/doctest.h>

#include "ado/native/open_connection.h"
#include "bookkeeping/bookkeeping.h"
#include "tests/support/empty_shop.h"
#include "tests/support/recording.h"
#include "tests/support/temporary_folder.h"

// The sample shop on every engine: four weeks of bills of every kind.

namespace vantlo::test {
namespace {

using namespace vantlo;

/// The ledgers after all bills, and after some are taken back.
struct Ledgers {
    std::string saved;
    std::string taken_back;
};

Ledgers run_shop(const std::string& database) {
    const Connect connect = connect_in_turn({database});
    Bookkeeping bookkeeping(connect);
    save_sample_shop(bookkeeping);
    Ledgers ledgers;
    ledgers.saved = joined(read_ledger(*connect()));
    reverse_sample_bills(bookkeeping);
    ledgers.taken_back = joined(read_ledger(*connect()));
    return ledgers;
}

TEST_CASE("The sample shop leaves the same ledger on every engine, also after bills are taken back") {
    const TemporaryFolder folder;
    const std::string file = "sqlite:" + folder.file("shop.db");
    open_connection(file)->run_script(schema_of("sqlite"));
    const Ledgers expected = run_shop(file);
    CHECK(expected.saved.size() > 1000);
    CHECK(expected.saved != expected.taken_back);
    for (const Server& server : servers()) {
        INFO(server.dialect);
        const EmptyShop shop(server, true);
        const Ledgers ledgers = run_shop(server.connection_string);
        CHECK(ledgers.saved == expected.saved);
        CHECK(ledgers.taken_back == expected.taken_back);
    }
}

}  // namespace
}  // namespace vantlo::test
