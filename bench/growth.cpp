// What a posted line takes in a bill of so many lines, or on a ledger of so many rows, on SQLite in memory.
//
// Usage: growth bill LINES        prints the size, the time of a line, the bytes of memory for each line of the bill
//        growth ledger ROWS       prints the size, the time of a line that moves two of the same 500 rows again and
//                                 again, that of one that moves any two of all rows, the bytes of memory for each row
//        growth baseline ROWS        the same of the baseline, which issues the same statements as plain text
//
// Times are in microseconds of processor time, the median over passes.

#include <fmt/format.h>

#include <algorithm>
#include <cstdlib>
#include <fstream>

#include "ado/sqlite/sqlite_connection.h"
#include "bench/baseline_connection.h"
#include "bench/measure.h"

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

/// A database in memory that knows so many goods.
Owned<SqliteConnection> open_shop(std::size_t goods) {
    Owned<SqliteConnection> shop(new SqliteConnection(":memory:"));
    run_all(*shop, shop_statements(dialect_named("sqlite"), goods));
    return shop;
}

/// The median time of a line, over repeated postings of a bill of so many lines.
template <typename Post>
double microseconds_a_line(std::size_t lines, const Post& post) {
    const std::size_t passes = std::max(passes_at_least, posted_at_each_size / lines);
    std::vector<double> times;
    for (std::size_t pass = 0; pass < passes; ++pass) times.push_back(seconds_of(Clock::own_processor_time, post));
    return median(times) / static_cast<double>(lines) * 1e6;
}

/// A bill of so many lines, on a ledger of 2000 rows.
void measure_bill(std::size_t count) {
    constexpr std::size_t goods = 125;
    const Owned<SqliteConnection> shop = open_shop(goods);
    post(*shop, *shop, movements(8 * goods, goods));
    const double before = resident_bytes();
    const BillLines bill = movements(count, goods);
    post(*shop, *shop, bill);
    const double grown = resident_bytes() - before;
    fmt::print("{} {:.1f} {:.0f}\n", count, microseconds_a_line(count, [&] { post(*shop, *shop, bill); }),
               grown / static_cast<double>(count));
}

/// So many lines that lie far apart in the ledger.
BillLines scattered(std::size_t count, std::size_t goods) {
    BillLines lines;
    for (std::size_t i = 0; i < count; ++i) lines.push_back(movements(1, goods, i * 7919 % (8 * goods)).front());
    return lines;
}

constexpr std::size_t rows_of_each_goods = 16;

/// A ledger of so many rows, or several in this process.
/// post_first   posts a bill for the first time
/// prepare      returns a function that posts the bill again
template <typename PostFirst, typename Prepare>
void measure_ledger(std::size_t rows, std::size_t ledgers, const PostFirst& post_first, const Prepare& prepare) {
    const std::size_t goods = rows / rows_of_each_goods;
    const double before = resident_bytes();
    for (std::size_t first = 0; first < 8 * goods; first += 100) {
        post_first(movements(std::min<std::size_t>(100, 8 * goods - first), goods, first));
    }
    const double bytes = (resident_bytes() - before) / static_cast<double>(ledgers * rows);
    const auto time = [&](std::size_t lines) { return microseconds_a_line(lines, prepare(scattered(lines, goods))); };
    const double same_rows = time(250);
    const double any_rows = time(10'000);
    fmt::print("{} {:.1f} {:.1f} {:.0f}\n", rows, same_rows, any_rows, bytes);
}

void measure_own_ledger(std::size_t rows) {
    const Owned<SqliteConnection> shop = open_shop(rows / rows_of_each_goods);
    measure_ledger(
        rows, 1, [&](const BillLines& bill) { post(*shop, *shop, bill); },
        [&](const BillLines& bill) { return [&shop, bill] { post(*shop, *shop, bill); }; });
}

/// The baseline has a ledger of its own, beside the one on which the component issues the statements.
void measure_baseline(std::size_t rows) {
    const std::size_t goods = rows / rows_of_each_goods;
    const Owned<SqliteConnection> shop = open_shop(goods);
    BaselineConnection baseline("sqlite::memory:");
    baseline.post(shop_statements(dialect_named("sqlite"), goods));
    measure_ledger(
        rows, 2, [&](const BillLines& bill) { baseline.post(post_and_capture(*shop, bill)); },
        [&](const BillLines& bill) {
            return [&baseline, statements = post_and_capture(*shop, bill)] { baseline.post(statements); };
        });
}

}  // namespace

int main(int count, char** arguments) {
    const std::string_view what = count == 3 ? arguments[1] : "";
    const std::size_t size = count == 3 ? std::strtoul(arguments[2], nullptr, 10) : 0;
    if (what == "bill" && size > 0) {
        measure_bill(size);
    } else if (what == "ledger" && size >= rows_of_each_goods) {
        measure_own_ledger(size);
    } else if (what == "baseline" && size >= rows_of_each_goods) {
        measure_baseline(size);
    } else {
        fmt::print(stderr, "Usage: growth bill LINES | growth ledger ROWS | growth baseline ROWS\n");
        return 2;
    }
}
