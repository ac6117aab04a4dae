#pragma once

#include <algorithm>
#include <cmath>
#include <string>
#include <vector>

#include "ado/sqlite/sqlite_connection.h"
#include "support/failures.h"

namespace vantlo::test {

/// Columns of every affinity, kinds of keys and indexes, constraints, triggers that write and that fail, a view.
inline constexpr const char* tables_of_many_kinds = R"(
    create table A (i integer primary key, n int, m money, r real, t nvarchar(20), x, u nvarchar(20) unique,
                    check (n < 1000000));
    create table B (k nvarchar(9), n smallint not null, d date, f float, primary key (k, n)) without rowid;
    create table Log (what nvarchar(40), n);
    create index AN on A (n, t);
    create index AT on A (t collate nocase);
    create trigger Inserted after insert on B begin insert into Log values ('inserted ' || new.k, new.n); end;
    create trigger Guarded before update on B when new.n = 13 begin select raise(abort, 'thirteen'); end;
    create view V as select A.i, A.t, B.k, B.n from A, B where A.n = B.n;
)";

/// Two equal databases in memory: one connection parameterizes literals, the other sends every text unchanged.
class PairedConnections {
public:
    /// The outcome of a statement on one of them.
    struct Outcome {
        Caught failure;
        ResultTable result;
        Remedy remedy = Remedy::none;
    };

    /// Runs a script on both.
    void run_script(const std::string& script) {
        parameterizing_->run_script(script);
        plain_->run_script(script);
    }

    /// Runs a statement on both. Returns true if result, failure and remedy are the same.
    bool run(TextView statement) {
        parameterized = outcome(*parameterizing_, statement);
        plain = outcome(*plain_, statement);
        return parameterized.failure.number == plain.failure.number &&
               parameterized.failure.account == plain.failure.account && parameterized.remedy == plain.remedy &&
               parameterized.result.yields_rows == plain.result.yields_rows &&
               parameterized.result.columns == plain.result.columns &&
               std::ranges::equal(
                   parameterized.result.rows, plain.result.rows,
                   [](const auto& left, const auto& right) { return std::ranges::equal(left, right, are_same); });
    }

    /// The latest statement's, for messages.
    Outcome parameterized;
    Outcome plain;

private:
    static Outcome outcome(SqliteConnection& connection, TextView statement) {
        Outcome outcome;
        outcome.failure = caught([&] { outcome.result = connection.run(statement); });
        outcome.remedy = connection.remedy();
        return outcome;
    }

    // 0.0 == -0.0, so the signs are compared too.
    static bool are_same(const Variant& left, const Variant& right) {
        const auto* const number = left.get_if<double>();
        return left == right && (number == nullptr || std::signbit(*number) == std::signbit(*right.get_if<double>()));
    }

    Owned<SqliteConnection> parameterizing_{new SqliteConnection(":memory:")};
    Owned<SqliteConnection> plain_{new SqliteConnection(":memory:", {.parameterizes_literals = false})};
};

}  // namespace vantlo::test
