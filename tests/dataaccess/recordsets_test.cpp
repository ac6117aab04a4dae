#include "dataaccess/recordsets.h"

#include <doctest/doctest.h>

#include <algorithm>

#include "automation/error.h"
#include "automation/error_text.h"
#include "dataaccess/unit_conversion.h"
#include "tests/support/recording.h"
#include "tests/support/scenario_runner.h"

namespace vantlo::test {
namespace {

std::vector<std::string> message(const char* routine, ErrorNumber number) {
    return {std::string("message ") + routine + "():" + to_utf8(standard_text(number))};
}

TEST_CASE("Open_Recordset makes a recordset, connects it, and asks for a client-side dynamic cursor, in this order") {
    Recorder recorder;
    const RecordingHooks hooks(recorder);
    RecordsetVariable rs;
    Open_Recordset(rs);
    REQUIRE(rs != nullptr);
    CHECK(rs->state() == 0);
    CHECK(recorder.trace(Detail::everything) == std::vector<std::string>{"prepare", "connect unopened",
                                                                         "location unopened", "type unopened",
                                                                         "release unopened"});
    CHECK(recorder.events[2].text == "3");
    CHECK(recorder.events[3].text == "2");
}

TEST_CASE("Open_Recordset shows its failure and keeps what the variable had been given by then") {
    Recorder recorder;
    const RecordingHooks hooks(recorder);
    RecordsetVariable rs;
    recorder.fail_at = 1;  // making it
    Open_Recordset(rs);
    CHECK(rs == nullptr);
    recorder.fail_at = recorder.steps + 3;  // the cursor's location
    Open_Recordset(rs);
    CHECK(rs != nullptr);
    CHECK(recorder.trace(Detail::statements) ==
          std::vector<std::string>{message("Open_Recordset", 1004)[0], message("Open_Recordset", 1004)[0]});
}

TEST_CASE("Close_Recordset only lets go of a recordset that was never opened") {
    Recorder recorder;
    const RecordingHooks hooks(recorder);
    RecordsetVariable rs;
    Open_Recordset(rs);
    Close_Recordset(rs);
    CHECK(rs == nullptr);
    CHECK(recorder.trace(Detail::recordsets) == std::vector<std::string>{"prepare", "release unopened"});
}

TEST_CASE("Close_Recordset ignores an empty variable and every failure") {
    Recorder recorder;
    const RecordingHooks hooks(recorder);
    RecordsetVariable rs;
    Close_Recordset(rs);
    const auto database = make_sqlite_database();
    RecordingConnection connection(recorder, database->connection());
    rs = connection.execute(u"select * from GoodsUnit");
    recorder.fail_at = recorder.steps + 2;  // its close
    Close_Recordset(rs);
    CHECK(rs == nullptr);
    CHECK(recorder.trace(Detail::recordsets) ==
          std::vector<std::string>{"execute select * from GoodsUnit", "release unit", "close unit"});
}

struct UnitFixture {
    UnitFixture() {
        for (const char16_t* row : {u"'G1','box',12", u"'G1','half',0.5", u"'G1','third',0.33333", u"'G1','nought',0",
                                    u"'G1','unknown',null", u"'O''Neil','瓶',6", u"'G1','odd','abc'"}) {
            database->connection().execute(Text(u"insert into GoodsUnit(id,Unit,UnitConverter) values(") + row + u")");
        }
        set_project_connection(&connection);
    }

    std::unique_ptr<TestDatabase> database = make_sqlite_database();
    Recorder recorder;
    RecordingConnection connection{recorder, database->connection()};
    RecordingHooks hooks{recorder};
};

TEST_CASE_FIXTURE(UnitFixture,
                  "GoodsUnitConverter gives the stored factor to four decimals, and 1 where there is none") {
    struct Row {
        const char16_t* gid;
        const char16_t* unit;
        std::int64_t ten_thousandths;
    };
    const Row rows[] = {
        {u"G1", u"box", 120000},    {u"G1", u"half", 5000},   {u"G1", u"third", 3333},       {u"G1", u"nought", 10000},
        {u"G1", u"unknown", 10000}, {u"G1", u"piece", 10000}, {u" O'Neil ", u" 瓶 ", 60000}, {u"", u"", 10000},
    };
    for (const Row& row : rows) {
        CHECK(GoodsUnitConverter(row.gid, row.unit) == Currency::from_ten_thousandths(row.ten_thousandths));
    }
}

TEST_CASE_FIXTURE(UnitFixture, "GoodsUnitConverter opens its recordset itself and leaves it to its release") {
    GoodsUnitConverter(u"O'Neil", u"瓶");
    CHECK(recorder.trace(Detail::recordsets) ==
          std::vector<std::string>{
              "prepare", "open select id,Unit,UnitConverter from GoodsUnit where id='O''Neil' and Unit='瓶'"});
}

TEST_CASE_FIXTURE(UnitFixture, "GoodsUnitConverter returns the number of its error as the factor, after showing it") {
    CHECK(GoodsUnitConverter(u"G1", u"odd") == Currency::from_whole(error::type_mismatch));
    CHECK(recorder.trace(Detail::statements).back() == message("GoodsUnitConverter", error::type_mismatch)[0]);
    set_project_connection(nullptr);
    recorder.events.clear();
    CHECK(GoodsUnitConverter(u"G1", u"box") == Currency::from_whole(error::no_connection));
    CHECK(recorder.trace(Detail::statements).back() == message("GoodsUnitConverter", error::no_connection)[0]);
}

TEST_CASE_FIXTURE(UnitFixture, "GoodsUnitConverter releases its recordset after its message has been dismissed") {
    recorder.on_event = [this](std::size_t index) {
        if (recorder.events[index].what != "message") return;
        CHECK(std::ranges::count(recorder.events, "free", &Event::what) == 0);
    };
    GoodsUnitConverter(u"G1", u"odd");
    const std::vector<std::string> seen = recorder.trace(Detail::everything);
    REQUIRE(seen.size() > 2);
    CHECK(seen[seen.size() - 2] == message("GoodsUnitConverter", error::type_mismatch)[0]);
    CHECK(seen.back() == "free unit");
}

TEST_CASE_FIXTURE(UnitFixture,
                  "GoodsUnitConverter without a recordset gives 91, after both helpers have shown their failure") {
    recorder.fail_at = recorder.steps + 1;
    CHECK(GoodsUnitConverter(u"G1", u"box") == Currency::from_whole(error::object_not_set));
    CHECK(recorder.trace(Detail::statements) ==
          std::vector<std::string>{message("Open_Recordset", 1004)[0],
                                   message("GoodsUnitConverter", error::object_not_set)[0]});
}

}  // namespace
}  // namespace vantlo::test
