// The whole path of a posted line, from the line object to the ledger, beside the floor: a C program that issues the
// very same statements. Both run in this process and take turns; the figures are medians over the rounds.
//
// Usage: floor_ratio DATABASE ROUNDS AT_MOST
//
// DATABASE is named as `vantlo` names it; what a server's database holds is lost. Prints one row of a Markdown table.
// Exit code 1 if the median ratio is beyond AT_MOST.

#include <fmt/format.h>

#include <cstdlib>
#include <stdexcept>
#include <string_view>

#include "ado/open_connection.h"
#include "bench/floor.h"
#include "bench/measure.h"
#include "bench/movements.h"
#include "dataaccess/sql_literals.h"
#include "host/observed_connection.h"

namespace {

using namespace vantlo;
using namespace vantlo::bench;

constexpr std::size_t goods = 12;
constexpr std::size_t lines_in_a_round = 500;  // the first 96 insert their two rows, the others update them
constexpr std::size_t lines_in_a_bill = 10;     // each bill is one transaction

/// The floor on either kind of database, with a connection of its own.
class Floor {
public:
    explicit Floor(const std::string& database) : is_sqlite_(database.starts_with("sqlite:")) {
        connection_ = is_sqlite_ ? floor_open_sqlite(database.substr(7).c_str()) : floor_open_odbc(database.c_str());
        if (connection_ == nullptr) throw std::runtime_error("the floor cannot open " + database);
    }
    Floor(const Floor&) = delete;
    Floor& operator=(const Floor&) = delete;
    ~Floor() {
        if (is_sqlite_) {
            floor_close_sqlite(connection_);
        } else {
            floor_close_odbc(connection_);
        }
    }

    /// Returns  how many rows the result had.
    long run(const std::string& statement) {
        const long rows = is_sqlite_ ? floor_run_sqlite(connection_, statement.c_str())
                                     : floor_run_odbc(connection_, statement.c_str());
        if (rows < 0) throw std::runtime_error("the floor failed in " + statement);
        return rows;
    }

    /// Runs the statements of all lines, bill by bill.
    void post(const std::vector<std::vector<std::string>>& bills) {
        for (const std::vector<std::string>& bill : bills) {
            if (is_sqlite_) {
                run("begin immediate");
            } else if (floor_begin_odbc(connection_) != 0) {
                throw std::runtime_error("the floor cannot begin a transaction");
            }
            for (const std::string& statement : bill) run(statement);
            if (is_sqlite_) {
                run("commit");
            } else if (floor_commit_odbc(connection_) != 0) {
                throw std::runtime_error("the floor cannot commit");
            }
        }
    }

private:
    bool is_sqlite_;
    floor_connection* connection_;
};

void post(NativeConnection& database, const std::vector<host::Record>& lines) {
    Poster poster(database);
    for (std::size_t first = 0; first < lines.size(); first += lines_in_a_bill) {
        database.begin();
        for (std::size_t i = first; i < first + lines_in_a_bill; ++i) poster.post(lines[i]);
        database.commit();
    }
}

/// The statements of each bill as the component issues them.
std::vector<std::vector<std::string>> captured_bills(NativeConnection& database,
                                                     const std::vector<host::Record>& lines) {
    std::vector<std::vector<std::string>> bills;
    host::ObservedConnection observed(database,
                                      [&](TextView statement) { bills.back().push_back(to_utf8(statement)); });
    Poster poster(observed);
    for (std::size_t i = 0; i < lines.size(); ++i) {
        if (i % lines_in_a_bill == 0) bills.emplace_back();
        poster.post(lines[i]);
    }
    return bills;
}

/// For each row of the ledger a query that finds this row and no other.
std::vector<std::string> queries_of_ledger(NativeConnection& database) {
    std::vector<std::string> queries;
    const ResultTable ledger = database.run(u"select WID,GId,Model1,Model2,InQty,OutQty,CurrentQty from Inventory order by WID,GId,Model1,Model2");
    for (const std::vector<Variant>& row : ledger.rows) {
        Text query = u"select 1 from Inventory where 1=1";
        for (std::size_t column = 0; column < row.size(); ++column) {
            query += u" and " + ledger.columns[column] + u"=" + GetSqlVal(row[column]);
        }
        queries.push_back(to_utf8(query));
    }
    return queries;
}

/// Errors   std::runtime_error unless the floor's ledger has exactly these rows.
void check_ledger(Floor& floor, const std::vector<std::string>& queries) {
    bool is_same = floor.run("select 1 from Inventory") == static_cast<long>(queries.size());
    for (const std::string& query : queries) is_same = is_same && floor.run(query) == 1;
    if (!is_same) throw std::runtime_error("the floor left another ledger");
}

int measure(const std::string& name, int rounds, double at_most) {
    const Owned<NativeConnection> database = open_connection(name);
    Floor floor(name);
    const std::string dialect = database->dialect();
    const std::string clear = clearing_statement(dialect);
    run_all(*database, shop_statements(dialect, goods));
    for (const std::string& statement : shop_statements(dialect, goods)) floor.run(statement);

    const std::vector<host::Record> lines = movements(lines_in_a_round, goods);
    database->run(from_utf8(clear));
    const std::vector<std::vector<std::string>> bills = captured_bills(*database, lines);
    const std::vector<std::string> ledger = queries_of_ledger(*database);

    std::vector<double> floor_times, own_times, ratios;
    for (int round = 0; round < rounds; ++round) {
        for (int turn = 0; turn < 2; ++turn) {
            floor.run(clear);
            database->run(from_utf8(clear));
            if ((round + turn) % 2 == 0) {
                floor_times.push_back(seconds_of([&] { floor.post(bills); }));
                check_ledger(floor, ledger);
            } else {
                own_times.push_back(seconds_of([&] { post(*database, lines); }));
            }
        }
        ratios.push_back(own_times.back() / floor_times.back());
    }
    if (queries_of_ledger(*database) != ledger) throw std::runtime_error("the last round left another ledger");

    const auto microseconds = [](double seconds) { return seconds / lines_in_a_round * 1e6; };
    const double ratio = median(ratios);
    fmt::print("| {} | {:.1f} µs | {:.1f} µs | {:.3f} | {:.3f}–{:.3f} | {} |\n", database->engine(),
               microseconds(median(floor_times)), microseconds(median(own_times)), ratio, quantile(ratios, 0.25),
               quantile(ratios, 0.75), at_most);
    return ratio <= at_most ? 0 : 1;
}

}  // namespace

int main(int count, char** arguments) {
    if (count != 4) {
        fmt::print(stderr, "Usage: floor_ratio DATABASE ROUNDS AT_MOST\n");
        return 2;
    }
    try {
        return measure(arguments[1], std::atoi(arguments[2]), std::atof(arguments[3]));
    } catch (const std::exception& failure) {
        fmt::print(stderr, "floor_ratio: {}\n", failure.what());
        return 1;
    }
}
