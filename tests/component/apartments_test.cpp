#include <doctest/doctest.h>

#include <barrier>
#include <string_view>
#include <thread>

#include "automation/calendar.h"
#include "component/inventory_class.h"
#include "dataaccess/sql_literals.h"
#include "tests/support/scenario_runner.h"

// Two apartments at once: threads of one process, each with its own objects, connection and kind of database. What one
// does is seen by no other. Built with the thread sanitizer, which also sees the races that leave no trace.

namespace vantlo::test {
namespace {

/// Runs a body for each of two apartments, each in a thread of its own; they start together.
template <typename Body>
void in_two_apartments(Body body) {
    std::barrier start(2);
    const auto apartment = [&](int number) {
        start.arrive_and_wait();
        body(number);
    };
    std::thread first(apartment, 0);
    std::thread second(apartment, 1);
    first.join();
    second.join();
}

/// What a scenario gives in this thread, on a database that nobody else uses.
std::string told(const Scenario& scenario, TestDatabase& database) {
    database.fill(scenario.given);
    Recorder recorder;
    RecordedLine line(recorder, scenario.line);
    const std::int32_t result = call_member(scenario, {database.component_connection(), line});
    const bool own = project_state().connection == &database.component_connection() &&
                     project_state().database_kind == database_kind_of(from_utf8(scenario.data_type));
    set_project_connection(nullptr);
    return scenario.where() + " returns " + std::to_string(result) + (own ? "" : " in a foreign state") + "\n" +
           joined(read_ledger(database.connection()));
}

TEST_CASE("Two apartments run every scenario at once, and each gives what it gives alone") {
    const std::vector<Scenario> scenarios = read_scenario_folder(VANTLO_SOURCE_DIR "/tests/scenarios");
    std::vector<std::string> together[2];
    in_two_apartments([&](int apartment) {
        const auto database = make_sqlite_database();
        for (std::size_t i = 0; i < scenarios.size(); ++i) {
            // One goes forward, the other backward, so that different members meet.
            const std::size_t next = apartment == 0 ? i : scenarios.size() - 1 - i;
            together[apartment].push_back(told(scenarios[next], *database));
        }
    });
    const auto database = make_sqlite_database();
    REQUIRE(!scenarios.empty());
    for (std::size_t i = 0; i < scenarios.size(); ++i) {
        const std::string alone = told(scenarios[i], *database);
        CHECK(alone.find("foreign") == std::string::npos);
        CHECK(together[0][i] == alone);
        CHECK(together[1][scenarios.size() - 1 - i] == alone);
    }
}

TEST_CASE("Two apartments that make and drop objects all the time keep their own connection, kind and unit factors") {
    constexpr int rounds = 300;
    struct Apartment {
        const char16_t* data_type;
        DatabaseKind kind;
        int factor;
        TextView date;
    };
    static constexpr Apartment apartments[] = {
        {u"[Microsoft SQL Server]", DatabaseKind::sql_server, 12, u"'2024-03-05 00:00:00'"},
        {u"[Microsoft Access]", DatabaseKind::access, 7, u"#2024-03-05 00:00:00#"},
    };
    int rounds_of_its_own[2] = {};
    std::vector<std::string> ledgers[2];
    in_two_apartments([&](int number) {
        const Apartment& apartment = apartments[number];
        const auto database = make_sqlite_database();
        database->fill({{"GoodsUnit", {{"id", u"G1"}, {"Unit", u"box"}, {"UnitConverter", apartment.factor}}}});
        for (int i = 0; i < rounds; ++i) {
            Recorder recorder;
            RecordedLine line(recorder, {{"Gid", u"G1"},
                                         {"Unit", u"box"},
                                         {"Actualqty", 2.0F},
                                         {"Receiver", u"W1"},
                                         {"Model1", u"red"},
                                         {"Model2", u"L"},
                                         {"Class", u"C1"},
                                         {"Remarks", u""}});
            Inventory_Class object;
            object.let_DATAType(apartment.data_type);
            object.set_ADOConn(&database->connection());
            const bool posted = object.call(u"In_AddInventory", {line}) == 0;
            const bool own = project_state().connection == &database->connection() &&
                             project_state().database_kind == apartment.kind &&
                             GetSqlVal(date_of({2024, 3, 5})) == apartment.date;
            if (posted && own) ++rounds_of_its_own[number];
            object.set_ADOConn(nullptr);
        }
        ledgers[number] = read_ledger(database->connection());
    });
    for (const int number : {0, 1}) {
        CHECK(rounds_of_its_own[number] == rounds);
        const std::string quantity = std::to_string(rounds * 2 * apartments[number].factor);
        CHECK(joined(ledgers[number]) ==
              joined({"W1 G1 red L 0 | in " + quantity + " out 0 current " + quantity + " | C1 box ''"}));
    }
}

}  // namespace
}  // namespace vantlo::test
