#include "tests/audit/spoilt_shops.h"

#include <doctest/doctest.h>

#include <algorithm>
#include <cstdlib>
#include <nlohmann/json.hpp>
#include <set>

#include "ado/native/open_connection.h"
#include "audit/repair_plan.h"
#include "bookkeeping/bookkeeping.h"
#include "bookkeeping/journal.h"
#include "import/shop_file.h"
#include "tests/audit/repairs.h"
#include "tests/support/json_schema.h"
#include "tests/support/shell.h"
#include "tests/support/test_database.h"

// Each way to spoil a shop, what `vantlo verify` says of it, and what `vantlo repair --apply --yes` does to the ledger.

namespace vantlo::test {
namespace {

using namespace vantlo;

/// The rows of a ledger by key, each row's quantities as a text; rows without a quantity are as good as none.
using Rows = std::multimap<std::string, std::string>;

/// The shop of spoilt_shops.h, in a file or on the server of this run.
class SpoiltShop {
public:
    explicit SpoiltShop(bool has_journal) {
        const char* const server = std::getenv("VANTLO_TEST_ODBC");
        name_ = server == nullptr ? "sqlite:" + shell_.path("shop.db") : server;
        const auto database = open();
        database->run_script(schema_of(database->dialect().name));
        if (server != nullptr) database->run_script(emptying);
        save(*database, spoilt_shop_archive);
        database->run(
            u"insert into Inventory(WID,GId,Model1,Model2,Status,InQty,OutQty,CurrentQty) "
            u"values('W1','OPEN','','',0,8,0,8)");
        if (has_journal) switch_journal_on(*database);
        save(*database, spoilt_shop_bills);
        Bookkeeping([&] { return database; }).reverse(*find_bill_kind("stock-in"), u"X1");
    }
    SpoiltShop(const SpoiltShop&) = delete;
    SpoiltShop& operator=(const SpoiltShop&) = delete;
    ~SpoiltShop() {
        if (std::getenv("VANTLO_TEST_ODBC") == nullptr) return;
        const auto database = open();
        if (journal_state(*database) != JournalState::absent) remove_journal(*database);
        database->run_script(emptying);
    }

    [[nodiscard]] Owned<NativeConnection> open() const { return open_connection(name_); }

    [[nodiscard]] Finished vantlo(const std::string& arguments) const {
        return shell_.run("VANTLO_DB='" + name_ + "' " + Shell::program() + " " + arguments);
    }

    [[nodiscard]] Rows rows() const {
        Rows rows;
        const auto database = open();
        const RecordsetVariable ledger = database->execute(u"select * from Inventory");
        for (; !ledger->eof(); ledger->move_next()) {
            const LedgerEntry entry = read_entry(*ledger);
            std::string quantities;
            for (const char16_t* const column : quantity_columns) {
                quantities += to_utf8(text_or_nothing(ledger->field(column)).value_or(u"?")) + " ";
            }
            if (quantities != "0 0 0 ") rows.emplace(to_utf8(condition_of(entry.key)), quantities);
        }
        return rows;
    }

private:
    static constexpr const char* emptying =
        "delete from Inventory; delete from GoodsUnit; delete from StockBill; delete from StockBillItems;"
        "delete from GBorrow; delete from GBorrowItems; delete from SavedBill; delete from BillHistory;"
        "delete from RepairJournal;";

    void save(NativeConnection& database, const char* content) const {
        const ShopFile shop = read_shop_file(shell_.path(shell_.file("shop.json", content)), Language::english);
        Bookkeeping bookkeeping([&] { return Owned<NativeConnection>(&database); });
        if (!shop.master.empty()) bookkeeping.save_master(shop.master);
        for (const Bill& bill : shop.bills) bookkeeping.save(bill);
    }

    Shell shell_;
    std::string name_;
};

bool has(const Rows& ledger, const Rows::value_type& row) {
    const auto [first, last] = ledger.equal_range(row.first);
    return std::any_of(first, last, [&](const auto& there) { return there.second == row.second; });
}

/// Whether a repair made no row wrong that was right, and none that was neither there before nor is right.
bool is_no_worse(const Rows& repaired, const Rows& before, const Rows& spoilt) {
    return std::ranges::all_of(repaired, [&](const auto& row) { return has(before, row) || has(spoilt, row); }) &&
           std::ranges::all_of(before, [&](const auto& row) { return has(repaired, row) || !has(spoilt, row); });
}

/// The causes of the findings, in alphabetical order.
std::string causes_in(const std::string& verified) {
    std::set<std::string> causes;
    const auto findings = nlohmann::json::parse(verified).at("findings");
    for (const auto& finding : findings) causes.insert(finding.at("cause").get<std::string>());
    std::string all;
    for (const std::string& cause : causes) all += cause + " ";
    return all;
}

/// Undoes the latest repair through the program, and undoes that: the whole ledger must be what it was before each.
void check_undoing_of_latest(const SpoiltShop& shop, const std::vector<RowImage>& before) {
    const auto database = shop.open();
    const std::vector<RowImage> after = whole_ledger(*database);
    for (const std::vector<RowImage>& expected : {before, after}) {
        const std::string number = std::to_string(next_repair_number(*database) - 1);
        const Finished undone = shop.vantlo("repair --yes --undo " + number);
        INFO(undone.output);
        CHECK(undone.exit_code == 0);
        CHECK(whole_ledger(*database) == expected);
    }
}

/// Repairs each cause by name, rows that are left alone unless their goods are named too, and undoes that.
void check_undoing_of_each_cause(NativeConnection& database) {
    const Verification verification = verify(database, Language::english);
    std::set<Cause> causes;
    RepairChoice choice;
    for (const Finding& finding : verification.findings) {
        causes.insert(finding.cause);
        for (const Difference& rows : finding.differences) choice.goods.push_back(rows.key.parts[1].value_or(u""));
    }
    for (const Cause cause : causes) {
        INFO(std::string(name_of(cause)));
        choice.causes = {cause};
        const std::vector<Repair> repairs = repairs_of(plan_repairs(verification, choice).chosen);
        if (repairs.empty()) continue;
        database.begin();
        if (verification.movements.state == JournalState::broken)
            CHECK_THROWS_AS(run_repairs(repairs, database, cause_in_journal), Failure);
        else
            check_undoing(database, repairs);
        database.roll_back();
    }
}

TEST_CASE("verify names what spoilt a shop, and repair makes no ledger worse and is undone exactly") {
    const JsonSchema schema(VANTLO_SOURCE_DIR "/docs/verify.schema.json");
    std::set<std::string> names;
    for (const WayToSpoil& way : ways_to_spoil()) {
        CHECK(names.insert(way.name).second);
        const SpoiltShop shop(way.has_journal);
        const auto database = shop.open();
        if (*way.dialect != '\0' && database->dialect().name != way.dialect) continue;
        INFO(std::string(way.name));
        const Rows before = shop.rows();
        for (const char* const statement : way.statements) database->run(from_utf8(statement));
        const Rows spoilt = shop.rows();

        const Finished verified = shop.vantlo("verify --format json");
        INFO(verified.output);
        REQUIRE(verified.output.starts_with("{"));
        std::string causes;
        for (const std::string& cause : way.causes) causes += cause + " ";
        CHECK(causes_in(verified.output) == causes);
        CHECK(schema.fault_of(nlohmann::json::parse(verified.output)).empty());
        CHECK(verified.exit_code == (way.causes.empty() ? 0 : 3));

        check_undoing_of_each_cause(*database);
        const std::vector<RowImage> spoilt_rows = whole_ledger(*database);
        const Finished repair = shop.vantlo("repair --apply --yes");
        INFO(repair.output);
        const Rows repaired = shop.rows();
        if (way.repaired == Repaired::mended) CHECK(repaired == before);
        if (way.repaired == Repaired::untouched) CHECK(repaired == spoilt);
        CHECK(is_no_worse(repaired, before, spoilt));
        if (repaired != spoilt) check_undoing_of_latest(shop, spoilt_rows);
        if (spoilt != before || way.causes.empty()) continue;

        // The ledger is right. Naming a cause alone does not make it wrong.
        for (const std::string& cause : way.causes) {
            if (cause == "not-posted") continue;  // to take the bill for the truth is what this asks for
            INFO(shop.vantlo("repair --apply --yes --only " + cause).output);
            CHECK(shop.rows() == before);
        }
    }
    CHECK(names.size() >= 60);
}

}  // namespace
}  // namespace vantlo::test
