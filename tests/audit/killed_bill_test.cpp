#include <doctest/doctest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>

#include "audit/verification.h"
#include "component/inventory_class.h"
#include "output/verify_report.h"
#include "support/stock_bills.h"
#include "tests/support/killing_connection.h"
#include "tests/support/sample_shop.h"
#include "tests/support/temporary_folder.h"

// A host that stores a bill, posts its lines without a transaction, and is killed meanwhile.

namespace vantlo::test {
namespace {

using namespace vantlo;

Bill bill_of_three_lines() {
    Bill bill = stock_bill(u"B2", u"G1", 2, u"W1", u"W2");
    for (const char16_t* const goods : {u"G2", u"G3"})
        bill.lines.push_back(stock_bill(u"", goods, 3, u"W1", u"W2").lines.front());
    return bill;
}

/// Makes a database file with all bills stored, and all posted but the one of three lines.
void store_without_posting(const std::string& file) {
    const auto database = open_connection("sqlite:" + file);
    database->run_script(schema_for("sqlite"));
    Bookkeeping bookkeeping([&] { return database; });
    bookkeeping.save(stock_bill(u"B1", u"G1", 5, u"W1", u"W2"));
    database->run(u"create table Before as select * from Inventory");
    bookkeeping.save(bill_of_three_lines());
    database->run(u"delete from Inventory");
    database->run(u"insert into Inventory select * from Before");
    database->run(u"drop table Before");
}

/// Posts the bill's lines in another process, killed before its n-th statement. Returns true if it was.
bool post_and_kill(const std::string& file, int kill_at) {
    const pid_t child = ::fork();
    REQUIRE(child >= 0);
    if (child == 0) {
        const auto database = open_connection("sqlite:" + file);
        KillingConnection connection(*database, kill_at, true);
        Inventory_Class object;
        object.set_ADOConn(&connection);
        for (const Record& record : bill_of_three_lines().lines) {
            RecordLine line(record, nullptr);
            object.call(u"AddInventory_Db", {line});
        }
        ::_exit(0);
    }
    int status = 0;
    REQUIRE(::waitpid(child, &status, 0) == child);
    return WIFSIGNALED(status) && WTERMSIG(status) == SIGKILL;
}

/// How many of the bill's six ledger rows have moved.
std::size_t rows_moved(NativeConnection& database) {
    const ResultTable moved =
        database.run(u"select count(*) from Inventory where GId in ('G2','G3') or InQty=7 or OutQty=7");
    return static_cast<std::size_t>(to_long(moved.rows.at(0).at(0)));
}

TEST_CASE("verify names the bill over whose posting a process was killed, and how far it came") {
    const TemporaryFolder folder;
    const std::string stored = folder.file("stored.db");
    store_without_posting(stored);
    std::size_t moved = 0;
    for (int kill_at = 0; moved < 6; ++kill_at) {
        REQUIRE(kill_at < 100);
        const std::string file = folder.file(std::to_string(kill_at) + ".db");
        std::filesystem::copy_file(stored, file);
        const bool is_killed = post_and_kill(file, kill_at);
        const auto database = open_connection("sqlite:" + file);
        moved = rows_moved(*database);
        const Verification verification = verify(*database, Language::english);
        const std::string report =
            report_of(verification.findings, verification.timeline, verification.stored.size(), Language::english);
        INFO("killed before statement " << kill_at << "\n" << report);
        CHECK(is_killed == (moved < 6));
        if (moved == 6) {
            CHECK(verification.findings.empty());
            continue;
        }
        REQUIRE(verification.findings.size() == 1);
        const Finding& finding = verification.findings.front();
        CHECK(finding.cause == (moved == 0 ? Cause::not_posted : Cause::posted_in_part));
        CHECK(finding.steps_there == moved);
        CHECK(report.find("   stock B2") != std::string::npos);
    }
}

}  // namespace
}  // namespace vantlo::test
