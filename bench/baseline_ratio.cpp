// The whole path of a posted line, from the line object to the ledger, beside the baseline: a C program that issues the
// very same statements. Both run in this process and take turns bill by bill; the figures are medians over the bills.
// Every bill has ten lines, and the ledger has the two rows of each line already.
//
// Usage: baseline_ratio DATABASE ROUNDS AT_MOST
//
// DATABASE is named as `vantlo` names it; what a server's database holds is lost. Prints one row of a Markdown table.
// Exit code 1 if the median ratio is beyond AT_MOST.

#include <fmt/format.h>

#include <cstdlib>
#include <stdexcept>
#include <string_view>

#include "ado/native/open_connection.h"
#include "bench/baseline_connection.h"
#include "bench/measure.h"
#include "bench/movements.h"
#include "dataaccess/sql_literals.h"

namespace {

using namespace vantlo;
using namespace vantlo::bench;

constexpr std::size_t goods = 12;
constexpr std::size_t lines_in_a_bill = 10;  // each bill is one transaction
constexpr std::size_t bills_in_a_round = 48;

std::vector<BillLines> make_bills() {
    std::vector<BillLines> bills(bills_in_a_round);
    std::size_t number = 0;
    for (const Record& line : movements(bills_in_a_round * lines_in_a_bill, goods)) {
        bills[number++ / lines_in_a_bill].push_back(line);
    }
    return bills;
}

std::vector<BillStatements> post_and_capture_all(NativeConnection& database, const std::vector<BillLines>& bills) {
    std::vector<BillStatements> statements;
    for (const BillLines& bill : bills) statements.push_back(post_and_capture(database, bill));
    return statements;
}

Currency goods_received(NativeConnection& database) {
    return to_currency(database.run(u"select sum(InQty) from Inventory").rows.at(0).at(0));
}

/// For each row of the ledger a query that finds this row and no other.
std::vector<std::string> queries_of_ledger(NativeConnection& database) {
    std::vector<std::string> queries;
    const ResultTable ledger = database.run(
        u"select WID,GId,Model1,Model2,InQty,OutQty,CurrentQty from Inventory order by WID,GId,Model1,Model2");
    for (const std::vector<Variant>& row : ledger.rows) {
        Text query = u"select 1 from Inventory where 1=1";
        for (std::size_t column = 0; column < row.size(); ++column) {
            query += u" and " + ledger.columns[column] + u"=" + GetSqlVal(row[column]);
        }
        queries.push_back(to_utf8(query));
    }
    return queries;
}

/// Errors   std::runtime_error unless the baseline's ledger has exactly these rows.
void check_ledger(BaselineConnection& baseline, const std::vector<std::string>& queries) {
    bool is_same = baseline.run("select 1 from Inventory") == static_cast<long>(queries.size());
    for (const std::string& query : queries) is_same = is_same && baseline.run(query) == 1;
    if (!is_same) throw std::runtime_error("the baseline left another ledger");
}

/// The times of each bill on both sides, measured alternately.
struct Times {
    std::vector<double> baseline, own, ratio;
};

Times take_times(NativeConnection& database, BaselineConnection& baseline, const std::vector<BillLines>& bills,
                 const std::vector<BillStatements>& statements, int rounds) {
    // A database in memory works within this process; the time of a server is elapsed time.
    const Clock clock = database.dialect().is_embedded ? Clock::own_processor_time : Clock::wall;
    Times times;
    for (int round = 0; round < rounds; ++round) {
        for (std::size_t i = 0; i < bills.size(); ++i) {
            for (std::size_t turn = 0; turn < 2; ++turn) {
                if ((i + turn) % 2 == 0) {
                    times.baseline.push_back(seconds_of(clock, [&] { baseline.post(statements[i]); }));
                } else {
                    times.own.push_back(seconds_of(clock, [&] { post(database, database, bills[i]); }));
                }
            }
            times.ratio.push_back(times.own.back() / times.baseline.back());
        }
    }
    return times;
}

int measure(const std::string& name, int rounds, double at_most) {
    const Owned<NativeConnection> database = open_connection(name);
    BaselineConnection baseline(name);
    const Dialect& dialect = database->dialect();
    run_all(*database, shop_statements(dialect, goods));
    for (const std::string& statement : shop_statements(dialect, goods)) baseline.run(statement);

    const std::vector<BillLines> bills = make_bills();
    database->run(from_utf8(dialect.empty_ledger));
    const std::vector<BillStatements> inserting = post_and_capture_all(*database, bills);
    const Currency received_in_a_round = goods_received(*database);
    const std::vector<BillStatements> updating = post_and_capture_all(*database, bills);

    const std::vector<std::string> ledger = queries_of_ledger(*database);
    baseline.run(std::string(dialect.empty_ledger));
    for (const BillStatements& bill : inserting) baseline.post(bill);
    for (const BillStatements& bill : updating) baseline.post(bill);
    check_ledger(baseline, ledger);

    const Times times = take_times(*database, baseline, bills, updating, rounds);

    // Both sides share the ledger of a server; in memory each side has its own.
    const std::int32_t times_posted = 2 + rounds * (dialect.is_embedded ? 1 : 2);
    if (goods_received(*database) != received_in_a_round * Currency::from_whole(times_posted)) {
        throw std::runtime_error("the ledger did not receive what was posted");
    }
    check_ledger(baseline, queries_of_ledger(*database));

    const auto per_line = [](double seconds) { return seconds / lines_in_a_bill * 1e6; };
    const double ratio = median(times.ratio);
    fmt::print("| {} | {:.1f} µs | {:.1f} µs | {:.2f} | {:.2f}–{:.2f} | {} |\n", database->engine(),
               per_line(median(times.baseline)), per_line(median(times.own)), ratio, quantile(times.ratio, 0.25),
               quantile(times.ratio, 0.75), at_most);
    return ratio <= at_most ? 0 : 1;
}

}  // namespace

int main(int count, char** arguments) {
    if (count != 4) {
        fmt::print(stderr, "Usage: baseline_ratio DATABASE ROUNDS AT_MOST\n");
        return 2;
    }
    try {
        return measure(arguments[1], std::atoi(arguments[2]), std::atof(arguments[3]));
    } catch (const std::exception& failure) {
        fmt::print(stderr, "baseline_ratio: {}\n", failure.what());
        return 1;
    }
}
