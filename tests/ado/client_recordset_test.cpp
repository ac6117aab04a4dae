#include <doctest/doctest.h>

#include <string>
#include <vector>

#include "ado/native/native_connection.h"
#include "support/failures.h"
#include "tests/support/printing.h"

namespace vantlo::test {
namespace {

constexpr std::int32_t closed = 0;
constexpr std::int32_t open = 1;

ResultTable two_rows() { return {{u"Gid", u"数量"}, {{u"G1", 1.5F}, {u"G2", Null{}}}, true}; }

// A database that has one answer to everything, and notes what it is asked and when it ends.
class OneAnswer final : public NativeConnection {
public:
    OneAnswer(std::vector<std::string>& events, ResultTable answer) : events_(events), answer_(std::move(answer)) {}

    ResultTable run(TextView statement) override {
        events_.push_back("run " + to_utf8(statement));
        return answer_;
    }
    void begin() override {}
    void commit() override {}
    void roll_back() override {}
    [[nodiscard]] Remedy remedy() const override { return Remedy::none; }
    [[nodiscard]] const Dialect& dialect() const override { return dialect_named("unknown"); }
    [[nodiscard]] std::string engine() const override { return "none"; }

private:
    ~OneAnswer() override { events_.emplace_back("end"); }

    std::vector<std::string>& events_;
    ResultTable answer_;
};

TEST_CASE("A recordset made of a result is open on its first row and reads it to the end") {
    const RecordsetVariable recordset = make_client_recordset(two_rows());
    CHECK(recordset->state() == open);
    CHECK_FALSE(recordset->eof());
    CHECK(recordset->field(u"Gid") == Variant(u"G1"));
    CHECK(recordset->field(u"数量") == Variant(1.5F));
    recordset->move_next();
    CHECK(recordset->field(u"Gid") == Variant(u"G2"));
    CHECK(recordset->field(u"数量") == Variant(Null{}));
    CHECK_FALSE(recordset->eof());
    recordset->move_next();
    CHECK(recordset->eof());
    CHECK(recordset->state() == open);
}

TEST_CASE("A recordset finds a field without regard to case, the first of two that share the name") {
    const RecordsetVariable recordset = make_client_recordset({{u"TempQty", u"tempqty"}, {{1, 2}}, true});
    CHECK(recordset->field(u"TEMPQTY") == Variant(1));
    CHECK(recordset->field(u"tempqty") == Variant(1));
}

TEST_CASE("A recordset answers an unknown field with 3265, even at its end") {
    const RecordsetVariable recordset = make_client_recordset(two_rows());
    CHECK(caught([&] { recordset->field(u"Gi"); }).number == error::no_such_item);
    recordset->move_next();
    recordset->move_next();
    CHECK(caught([&] { recordset->field(u"Gi"); }).number == error::no_such_item);
}

TEST_CASE("A recordset at its end has no row to read or to leave: 3021") {
    const RecordsetVariable recordset = make_client_recordset({{u"Gid"}, {}, true});
    CHECK(recordset->state() == open);
    CHECK(recordset->eof());
    CHECK(caught([&] { recordset->field(u"Gid"); }).number == error::no_current_row);
    CHECK(caught([&] { recordset->move_next(); }).number == error::no_current_row);
}

TEST_CASE("A closed recordset answers every use with 3704") {
    std::vector<std::string> events;
    const Owned<OneAnswer> updates(new OneAnswer(events, {}));
    const Owned<OneAnswer> selects(new OneAnswer(events, two_rows()));

    std::vector<RecordsetVariable> recordsets;
    SUBCASE("never opened") { recordsets.push_back(make_client_recordset()); }
    SUBCASE("the result of an update") { recordsets.push_back(updates->execute(u"update")); }
    SUBCASE("opened on an update") {
        recordsets.push_back(make_client_recordset());
        recordsets[0]->set_active_connection(updates.get());
        recordsets[0]->open(u"update");
    }
    SUBCASE("a result, closed") {
        recordsets.push_back(selects->execute(u"select"));
        recordsets[0]->close();
    }
    SUBCASE("opened, then closed") {
        recordsets.push_back(make_client_recordset());
        recordsets[0]->set_active_connection(selects.get());
        recordsets[0]->open(u"select");
        recordsets[0]->close();
    }

    Recordset& recordset = *recordsets.at(0);
    CHECK(recordset.state() == closed);
    CHECK(caught([&] { static_cast<void>(recordset.eof()); }).number == error::object_closed);
    CHECK(caught([&] { recordset.move_next(); }).number == error::object_closed);
    CHECK(caught([&] { static_cast<void>(recordset.field(u"Gid")); }).number == error::object_closed);
    CHECK(caught([&] { recordset.close(); }).number == error::object_closed);
}

TEST_CASE("A recordset without a connection answers open with 3709") {
    const RecordsetVariable recordset = make_client_recordset();
    CHECK(caught([&] { recordset->open(u"select"); }).number == error::no_connection);
    recordset->set_active_connection(nullptr);
    recordset->set_cursor_location(3);
    recordset->set_cursor_type(2);
    CHECK(caught([&] { recordset->open(u"select"); }).number == error::no_connection);
}

TEST_CASE("A recordset opens through its connection's execute, and again once it is closed") {
    std::vector<std::string> events;
    const Owned<OneAnswer> connection(new OneAnswer(events, two_rows()));
    const RecordsetVariable recordset = make_client_recordset();
    recordset->set_active_connection(connection.get());
    recordset->open(u"first");
    CHECK(recordset->state() == open);
    recordset->move_next();
    CHECK(recordset->field(u"gid") == Variant(u"G2"));
    CHECK_FALSE(recordset->eof());
    CHECK(caught([&] { recordset->open(u"second"); }).number == error::object_open);

    recordset->close();
    recordset->open(u"third");
    CHECK(recordset->field(u"gid") == Variant(u"G1"));
    CHECK(events == std::vector<std::string>{"run first", "run third"});
}

TEST_CASE("A recordset made of a result is not opened over its rows") {
    const RecordsetVariable recordset = make_client_recordset(two_rows());
    CHECK(caught([&] { recordset->open(u"select"); }).number == error::object_open);
    CHECK(recordset->field(u"Gid") == Variant(u"G1"));
}

TEST_CASE("A connection ends with the last reference to it, a recordset's among them") {
    std::vector<std::string> events;
    const RecordsetVariable recordset = make_client_recordset();
    {
        const Owned<OneAnswer> connection(new OneAnswer(events, two_rows()));
        recordset->set_active_connection(connection.get());
    }
    recordset->open(u"select");
    CHECK(events == std::vector<std::string>{"run select"});
    recordset->set_active_connection(nullptr);
    CHECK(events == std::vector<std::string>{"run select", "end"});
    CHECK(recordset->field(u"Gid") == Variant(u"G1"));
}

}  // namespace
}  // namespace vantlo::test
