#include "bookkeeping/guarded_connection.h"

#include <doctest/doctest.h>

#include <optional>
#include <vector>

#include "automation/error.h"
#include "bills/task_error.h"
#include "support/failures.h"

namespace vantlo::test {
namespace {

using Statements = std::vector<std::string>;

/// A database that writes down what reaches it, and fails where a statement says so.
class NotingDatabase final : public NativeConnection {
public:
    explicit NotingDatabase(Statements& reached) : reached_(reached) {}

    ResultTable run(TextView statement) override {
        reached_.push_back(to_utf8(statement));
        if (statement == u"fail") throw Failure(error::no_such_table, "there is no such table");
        if (statement == u"exhaust") throw std::bad_alloc();
        return {{u"N"}, {{1}}, true};
    }
    void begin() override { reached_.emplace_back("begin"); }
    void commit() override { reached_.emplace_back("commit"); }
    void roll_back() override { reached_.emplace_back("roll back"); }
    [[nodiscard]] Remedy remedy() const override { return Remedy::none; }
    [[nodiscard]] const Dialect& dialect() const override { return dialect_named("sqlite"); }
    [[nodiscard]] std::string engine() const override { return "none"; }

private:
    Statements& reached_;
};

struct Guarded {
    Statements reached;
    Owned<GuardedConnection> connection{new GuardedConnection(Owned<NativeConnection>(new NotingDatabase(reached)))};
};

TEST_CASE_FIXTURE(Guarded, "GuardedConnection raises its first failure for every statement after it, and for commit") {
    connection->begin();
    SUBCASE("of a statement") {
        CHECK(caught([&] { connection->execute(u"fail"); }).number == error::no_such_table);
    }
    SUBCASE("of a query that no observer sees") {
        CHECK(caught([&] { connection->run(u"fail"); }).number == error::no_such_table);
    }
    CHECK(caught([&] { connection->execute(u"select"); }).account == "there is no such table");
    CHECK(caught([&] { connection->run(u"exhaust"); }).account == "there is no such table");
    CHECK(caught([&] { connection->commit(); }).account == "there is no such table");
    CHECK(caught([&] { connection->raise_failure(); }).number == error::no_such_table);
    connection->roll_back();
    CHECK(reached == Statements{"begin", "fail", "roll back"});
}

TEST_CASE_FIXTURE(Guarded, "GuardedConnection forgets its failure at the next begin") {
    connection->begin();
    CHECK_THROWS_AS(connection->run(u"exhaust"), std::bad_alloc);
    CHECK_THROWS_AS(connection->run(u"select"), std::bad_alloc);  // whatever it was, it stays what it was
    connection->roll_back();
    connection->begin();
    connection->raise_failure();
    CHECK(connection->execute(u"select")->field(u"N") == Variant(1));
    connection->commit();
    CHECK(reached == Statements{"begin", "exhaust", "roll back", "begin", "select", "commit"});
}

TEST_CASE_FIXTURE(Guarded, "GuardedConnection shows what execute sends, and keeps what its posting guard refuses") {
    Findings findings;
    PostingGuard posting_guard(*connection, GuardRules{}, Language::english, findings);
    Statements shown;
    connection->observe([&](TextView statement) { shown.push_back(to_utf8(statement)); }, &posting_guard);
    connection->execute(u"update A set B=1");
    connection->run(u"select");
    CHECK_THROWS_AS(connection->execute(u"update A set B=B--1"), TaskError);
    CHECK_THROWS_AS(connection->execute(u"update A set B=1"), TaskError);
    CHECK_THROWS_AS(connection->commit(), TaskError);
    CHECK(shown == Statements{"update A set B=1"});
    CHECK(reached == Statements{"update A set B=1", "select"});
}

}  // namespace
}  // namespace vantlo::test
