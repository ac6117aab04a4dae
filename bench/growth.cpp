// What a posted line takes in a bill of so many lines, or on a ledger of so many rows, on SQLite in memory.
//
// Usage: growth bill LINES        prints the size, the time of a line, the bytes of memory for each line of the bill
//        growth ledger ROWS       prints the size, the time of a line that moves two of the same 500 rows again and
//                                 again, that of one that moves any two of all rows, the bytes of memory for each row
//
// Times are in microseconds of processor time, the median over passes.

#include <fmt/format.h>

#include <algorithm>
#include <cstdlib>
#include <fstream>

#include "ado/sqlite/sqlite_connection.h"
#include "bench/measure.h"
#include "bench/movements.h"

namespace {

using namespace vantlo;
using namespace vantlo::bench;

constexpr std::size_t posted_at_each_size = 100'000;
constexpr std::size_t passes_at_least = 3;

/// What the process holds in memory now. Source: proc(5), the second field of statm, in pages of 4096 bytes.
double resident_bytes() {
    std::size_t total = 0, resident = 0;
    std::ifstream("/proc/self/statm") >> total >> resident;
    return static_cast<double>(resident) * 4096;
}

class GrowingShop {
public:
    explicit GrowingShop(std::size_t goods) : database_(new SqliteConnection(":memory:")), poster_(*database_) {
        run_all(*database_, shop_statements("sqlite", goods));
    }

    /// Posts lines as one bill in one transaction.
    void post(const std::vector<host::Record>& bill) {
        database_->begin();
        for (const host::Record& line : bill) poster_.post(line);
        database_->commit();
    }

private:
    Owned<SqliteConnection> database_;
    Poster poster_;
};

/// The median time of a line over bills that are posted again and again.
double microseconds_a_line(GrowingShop& shop, const std::vector<host::Record>& bill) {
    const std::size_t passes = std::max(passes_at_least, posted_at_each_size / bill.size());
    std::vector<double> times;
    for (std::size_t pass = 0; pass < passes; ++pass)
        times.push_back(seconds_of(Clock::own_processor_time, [&] { shop.post(bill); }));
    return median(times) / static_cast<double>(bill.size()) * 1e6;
}

double bytes_each(double grown, std::size_t count) { return grown / static_cast<double>(count); }

/// A bill of so many lines, on a ledger of 2000 rows.
void measure_bill(std::size_t count) {
    constexpr std::size_t goods = 125;
    GrowingShop shop(goods);
    shop.post(movements(8 * goods, goods));
    const double before = resident_bytes();
    const std::vector<host::Record> bill = movements(count, goods);
    shop.post(bill);
    const double grown = resident_bytes() - before;
    fmt::print("{} {:.1f} {:.0f}\n", count, microseconds_a_line(shop, bill), bytes_each(grown, count));
}

/// So many lines that lie far apart in the ledger.
std::vector<host::Record> scattered(std::size_t count, std::size_t goods) {
    std::vector<host::Record> lines;
    for (std::size_t i = 0; i < count; ++i) lines.push_back(movements(1, goods, i * 7919 % (8 * goods)).front());
    return lines;
}

/// A ledger of so many rows.
void measure_ledger(std::size_t rows) {
    const std::size_t goods = rows / 16;
    GrowingShop shop(goods);
    const double before = resident_bytes();
    for (std::size_t first = 0; first < 8 * goods; first += 100) {
        shop.post(movements(std::min<std::size_t>(100, 8 * goods - first), goods, first));
    }
    const double grown = resident_bytes() - before;
    const double same_rows = microseconds_a_line(shop, scattered(250, goods));
    const double any_rows = microseconds_a_line(shop, scattered(10'000, goods));
    fmt::print("{} {:.1f} {:.1f} {:.0f}\n", rows, same_rows, any_rows, bytes_each(grown, rows));
}

}  // namespace

int main(int count, char** arguments) {
    const std::string_view what = count == 3 ? arguments[1] : "";
    const std::size_t size = count == 3 ? std::strtoul(arguments[2], nullptr, 10) : 0;
    if (what == "bill" && size > 0) {
        measure_bill(size);
    } else if (what == "ledger" && size >= 16) {
        measure_ledger(size);
    } else {
        fmt::print(stderr, "Usage: growth bill LINES | growth ledger ROWS\n");
        return 2;
    }
}
