#include "component/inventory_class.h"

#include <doctest/doctest.h>

#include <set>
#include <thread>

#include "automation/calendar.h"
#include "automation/error.h"
#include "automation/error_text.h"
#include "dataaccess/sql_literals.h"
#include "tests/support/scenario_runner.h"

namespace vantlo::test {
namespace {

struct ComponentFixture {
    [[nodiscard]] RecordedLine line(std::map<std::string, Variant> changed = {}) {
        std::map<std::string, Variant> properties = {
            {"Gid", u"G1"},     {"Unit", u"box"}, {"Actualqty", 2.0F}, {"Receiver", u"W1"}, {"Supplier", u"W2"},
            {"Model1", u"red"}, {"Model2", u"L"}, {"Class", u"C1"},    {"Remarks", u""},
        };
        for (auto& [name, value] : changed) properties[name] = value;
        return RecordedLine(recorder, properties);
    }

    std::unique_ptr<TestDatabase> database = make_sqlite_database();
    Recorder recorder;
    RecordingConnection connection{recorder, database->connection()};
    RecordingHooks hooks{recorder};
    Inventory_Class object;
};

TEST_CASE_FIXTURE(ComponentFixture, "Inventory_Class keeps both properties in itself and in the project-wide copy") {
    object.let_DATAType(u"[Microsoft Access]");
    object.set_ADOConn(&connection);
    CHECK(object.DATAType() == u"[Microsoft Access]");
    CHECK(object.ADOConn() == &connection);
    CHECK(project_state().database_kind == DatabaseKind::access);
    CHECK(project_state().connection == &connection);
    CHECK(connection.references == 2);
    object.set_ADOConn(nullptr);
    CHECK(object.ADOConn() == nullptr);
    CHECK(project_state().connection == nullptr);
    CHECK(connection.references == 0);
}

TEST_CASE_FIXTURE(ComponentFixture,
                  "Setting DATAType on one instance changes the date literals of every instance of the thread") {
    Inventory_Class other;
    object.let_DATAType(u"[Microsoft SQL Server]");
    other.let_DATAType(u"[Microsoft Access]");
    CHECK(GetSqlVal(date_of({2024, 3, 5})) == u"#2024-03-05 00:00:00#");
    CHECK(object.DATAType() == u"[Microsoft SQL Server]");
}

TEST_CASE_FIXTURE(ComponentFixture,
                  "A posting executes on its instance's connection and looks units up on the one set last") {
    const auto other_database = make_sqlite_database();
    other_database->connection().execute(u"insert into GoodsUnit(id,Unit,UnitConverter) values('G1','box',12)");
    RecordingConnection other_connection(recorder, other_database->connection());
    Inventory_Class other;
    object.set_ADOConn(&connection);
    other.set_ADOConn(&other_connection);
    RecordedLine bill_line = line();
    CHECK(object.call(u"In_AddInventory", {bill_line}) == 0);
    CHECK(read_ledger(database->connection()) ==
          std::vector<std::string>{"W1 G1 red L 0 | in 24 out 0 current 24 | C1 box ''"});
    CHECK(read_ledger(other_database->connection()).empty());
    other.set_ADOConn(nullptr);
}

TEST_CASE_FIXTURE(ComponentFixture,
                  "A posting before ADOConn is set shows the helper's message, then its own, and returns 91") {
    RecordedLine bill_line = line();
    CHECK(object.call(u"In_AddInventory", {bill_line}) == error::object_not_set);
    const std::vector<std::string> shown = recorder.trace(Detail::statements);
    REQUIRE(shown.size() == 3);
    CHECK(shown[0].starts_with("open select id,Unit,UnitConverter from GoodsUnit"));
    CHECK(shown[1] == "message GoodsUnitConverter():" + to_utf8(standard_text(error::no_connection)));
    CHECK(shown[2] == "message In_AddInventory():" + to_utf8(standard_text(error::object_not_set)));
}

TEST_CASE_FIXTURE(ComponentFixture, "Every posting method called before ADOConn is set returns 91") {
    RecordedLine bill_line = line({{"Qty", 1.0F},
                                   {"UQty", 1.0F},
                                   {"WID", u"W1"},
                                   {"StatusWID", u"W1"},
                                   {"GoodsStatus", 1},
                                   {"Goodstutas", 0},
                                   {"SpRemarks", u""},
                                   {"WarehouseId", u"W1"}});
    for (const Member& member : member_table()) {
        if (member.kind != MemberKind::method) continue;
        INFO(to_utf8(member.name));
        std::vector<Argument> arguments;
        for (const Parameter& parameter : member.parameters()) {
            if (parameter.optional) break;
            if (parameter.type == ParameterType::line) arguments.emplace_back(bill_line);
            if (parameter.type == ParameterType::text) arguments.emplace_back(u"B1");
            if (parameter.type == ParameterType::long_integer) arguments.emplace_back(std::int32_t{1});
        }
        recorder.events.clear();
        const std::int32_t result = object.call(member, arguments);
        const bool opens_its_lines =
            TextView(member.name) == u"Out_AddInventory" || TextView(member.name) == u"RG_Out_AddInventory";
        CHECK(result == (opens_its_lines ? error::no_connection : error::object_not_set));
        const std::string own = "message " + to_utf8(member.name) + "():" + to_utf8(standard_text(result));
        const std::vector<std::string> seen = recorder.trace(Detail::statements);
        const bool shown = !seen.empty() && seen.back() == own;
        CHECK(shown == (member.on_error == OnError::tell_user));
    }
}

TEST_CASE_FIXTURE(ComponentFixture, "A call fills the defaults of arguments missing at the end") {
    object.set_ADOConn(&connection);
    RecordedLine bill_line = line();
    CHECK(object.call(u"in_addinventory", {bill_line}) == 0);
    CHECK(object.call(u"In_AddInventory", {bill_line, std::int16_t{2}}) == 0);
    CHECK(read_ledger(database->connection()) ==
          std::vector<std::string>{"W1 G1 red L 0 | in 2 out 0 current 2 | C1 box ''",
                                   "W1 G1 red L 2 | in 2 out 0 current 2 | C1 box ''"});
}

TEST_CASE_FIXTURE(ComponentFixture, "A call with the wrong arguments posts nothing and says why by its number") {
    object.set_ADOConn(&connection);
    RecordedLine bill_line = line();
    CHECK(object.call(u"In_AddInventory", {}) == error::wrong_argument_count);
    CHECK(object.call(u"In_AddInventory", {bill_line, std::int16_t{0}, std::int16_t{0}}) ==
          error::wrong_argument_count);
    CHECK(object.call(u"In_AddInventory", {u"B1"}) == error::object_required);
    CHECK(object.call(u"In_ReduceInventory", {bill_line}) == error::object_required);
    CHECK(object.call(u"In_ReduceInventory", {Null{}}) == error::invalid_use_of_null);
    CHECK(object.call(u"In_ReduceInventory", {u"B1", u"", u"x"}) == error::type_mismatch);
    CHECK(object.call(u"NoSuchMember", {}) == error::no_such_member);
    CHECK(read_ledger(database->connection()).empty());
}

TEST_CASE_FIXTURE(ComponentFixture, "A posting that runs out of memory returns 7 and says so") {
    class GreedyLine final : public Line {
    public:
        Variant value(TextView) override { throw std::bad_alloc(); }
    } greedy;
    object.set_ADOConn(&connection);
    CHECK(object.call(u"In_AddInventory", {greedy}) == error::out_of_memory);
    CHECK(recorder.trace(Detail::statements).back() == "message In_AddInventory():" + to_utf8(standard_text(7)));
}

TEST_CASE("Two threads with different kinds and connections never see each other's") {
    const auto first = make_sqlite_database();
    DatabaseKind seen_kind = DatabaseKind::sql_server;
    Connection* seen_connection = &first->connection();
    Inventory_Class object;
    object.let_DATAType(u"[Microsoft SQL Server]");
    object.set_ADOConn(&first->connection());
    std::thread([&] {
        seen_kind = project_state().database_kind;
        seen_connection = project_state().connection;
        Inventory_Class other;
        other.let_DATAType(u"[Microsoft Access]");
    }).join();
    CHECK(seen_kind == DatabaseKind::other);
    CHECK(seen_connection == nullptr);
    CHECK(project_state().database_kind == DatabaseKind::sql_server);
    object.set_ADOConn(nullptr);
}

}  // namespace
}  // namespace vantlo::test
