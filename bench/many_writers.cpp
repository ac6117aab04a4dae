// How many bills a second hosts can save together, on one server or on the nodes of a cluster.
//
//   tools/with-servers --durable build/native-release/bench/many_writers SECONDS
//   tools/with-cluster --durable build/native-release/bench/many_writers SECONDS
//   build/native-release/bench/many_writers SECONDS DATABASE...
//
// Each writer saves stock bills through the bookkeeping of `vantlo`, each bill in a transaction of its own. On "own rows"
// every writer has its own goods, on "shared rows" all writers move the same. The databases named, or the nodes of
// VANTLO_NODES, form one cluster: writers use them in turn. VANTLO_POSTGRESQL and VANTLO_MARIADB name a server each. The
// ledger has to be empty, and what the bench stores stays in the database.

#include <fmt/format.h>

#include <atomic>
#include <cstdlib>
#include <iostream>
#include <mutex>
#include <sstream>
#include <thread>

#include "ado/native/open_connection.h"
#include "automation/error.h"
#include "bench/measure.h"
#include "bills/schema.h"
#include "bookkeeping/bookkeeping.h"
#include "support/stock_bills.h"

namespace {

using namespace vantlo;
using namespace vantlo;

struct Load {
    int writers;
    int lines;  ///< of a bill
    bool shares_rows;
};

/// What all writers did together.
struct Measured {
    std::vector<double> milliseconds;  ///< of each bill
    long retries = 0;
    long failed = 0;  ///< bills given up after all their attempts
};

Bill make_bill(const Load& load, const std::string& id, int writer) {
    Bill bill;
    for (int i = 0; i < load.lines; ++i) {
        const std::string goods = load.shares_rows ? fmt::format("S{}", i) : fmt::format("{}-{}", writer, i);
        Bill of_one_line = test::stock_bill(from_utf8(id), from_utf8(goods), 1, u"W1", u"W2");
        of_one_line.lines.insert(of_one_line.lines.begin(), bill.lines.begin(), bill.lines.end());
        bill = std::move(of_one_line);
    }
    return bill;
}

Measured run(const std::vector<std::string>& databases, const Load& load, double seconds) {
    static int run_number = 0;
    const int number_of_run = ++run_number;
    std::mutex mutex;
    Measured all;
    {
        std::vector<std::jthread> threads;
        for (int writer = 0; writer < load.writers; ++writer) {
            threads.emplace_back([&, writer] {
                std::vector<std::string> list = databases;
                const auto own = static_cast<std::size_t>(writer) % list.size();
                std::ranges::rotate(list, list.begin() + static_cast<std::ptrdiff_t>(own));
                Bookkeeping bookkeeping(connect_in_turn(list));
                Measured measured;
                const auto start = std::chrono::steady_clock::now();
                for (int number = 0; std::chrono::steady_clock::now() - start < std::chrono::duration<double>(seconds);
                     ++number) {
                    const Bill bill = make_bill(load, fmt::format("{}-{}-{}", number_of_run, writer, number), writer);
                    try {
                        measured.milliseconds.push_back(
                            1e3 * bench::seconds_of(bench::Clock::wall, [&] { bookkeeping.save(bill); }));
                    } catch (const std::exception& failure) {
                        if (++measured.failed == 1) std::cerr << failure.what() << '\n';
                    }
                }
                const std::lock_guard lock(mutex);
                all.retries += bookkeeping.retries();
                all.failed += measured.failed;
                all.milliseconds.insert(all.milliseconds.end(), measured.milliseconds.begin(),
                                        measured.milliseconds.end());
            });
        }
    }
    return all;
}

/// Makes the tables where they are missing. Errors: Failure if the ledger has rows.
void prepare(NativeConnection& database) {
    database.run_script(schema_for(database.dialect().name));
    if (!database.run(u"select * from Inventory").rows.empty()) {
        throw Failure(error::bad_argument, "the ledger has rows: a bench would spoil it");
    }
    database.run_script(unique_key_for(database.dialect().name));
}

void measure(const std::vector<std::string>& databases, double seconds) {
    const auto database = open_connection(databases.front());
    prepare(*database);
    fmt::print("\n{}, {} node{}\n", database->engine(), databases.size(), databases.size() == 1 ? "" : "s");
    fmt::print("{:8}{:7}{:>9}{:>9}{:>9}{:>11}{:>11}{:>9}{:>8}\n", "writers", "lines", "rows", "bills/s", "lines/s",
               "median ms", "99 % ms", "again", "failed");
    for (const int lines : {1, 10, 100}) {
        for (const bool shares_rows : {false, true}) {
            for (const int writers : {1, 4, 16}) {
                const Measured measured = run(databases, {writers, lines, shares_rows}, seconds);
                const double bills = static_cast<double>(measured.milliseconds.size()) / seconds;
                fmt::print("{:<8}{:<7}{:>9}{:>9.0f}{:>9.0f}{:>11.1f}{:>11.1f}{:>9}{:>8}\n", writers, lines,
                           shares_rows ? "shared" : "own", bills, bills * lines, bench::median(measured.milliseconds),
                           bench::quantile(measured.milliseconds, 0.99), measured.retries, measured.failed);
                std::cout.flush();
            }
        }
    }
}

}  // namespace

int main(int count, char** arguments) {
    if (count < 2 || std::atof(arguments[1]) <= 0) {
        std::cerr << "usage: many_writers SECONDS [DATABASE...]\n";
        return 2;
    }
    const double seconds = std::atof(arguments[1]);
    try {
        std::vector<std::string> nodes(arguments + 2, arguments + count);
        if (const char* const list = std::getenv("VANTLO_NODES")) {
            std::istringstream lines(list);
            for (std::string node; std::getline(lines, node);) nodes.push_back(node);
        }
        if (!nodes.empty()) measure(nodes, seconds);
        for (const char* const variable : {"VANTLO_POSTGRESQL", "VANTLO_MARIADB"}) {
            if (const char* const database = std::getenv(variable)) measure({database}, seconds);
        }
    } catch (const std::exception& failure) {
        std::cerr << "many_writers: " << failure.what() << '\n';
        return 1;
    }
}
