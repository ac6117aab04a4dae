#include <doctest/doctest.h>
#include <sys/types.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <fstream>
#include <map>
#include <sstream>
#include <thread>

#include "ado/native/open_connection.h"
#include "bookkeeping/bookkeeping.h"
#include "support/stock_bills.h"
#include "tests/support/recording.h"
#include "tests/support/servers.h"
#include "tests/support/test_database.h"

// One writer a node saves bills and takes some back, half of them on a ledger row that all writers share. In the middle of it
// one node is killed; it comes back while the others go on.

namespace vantlo::test {
namespace {

using namespace vantlo;
using std::chrono::milliseconds;
using std::chrono::seconds;
using std::chrono::steady_clock;

/// The nodes that tools/with-cluster has started for this run.
class Cluster {
public:
    Cluster() {
        const char* const list = std::getenv("VANTLO_NODES");
        if (list == nullptr) throw std::runtime_error("there is no cluster: run this through tools/with-cluster");
        std::istringstream lines(list);
        for (std::string node; std::getline(lines, node);) nodes_.push_back(node);
    }

    [[nodiscard]] std::size_t size() const { return nodes_.size(); }

    [[nodiscard]] Owned<NativeConnection> connect(std::size_t node) const { return open_connection(nodes_.at(node)); }

    /// All nodes, for a writer whose own one comes first.
    [[nodiscard]] std::vector<std::string> list_from(std::size_t own) const {
        std::vector<std::string> list = nodes_;
        std::ranges::rotate(list, list.begin() + static_cast<std::ptrdiff_t>(own));
        return list;
    }

    /// Ends a node's process without warning, as a power cut would. It is started again by itself.
    static void kill(std::size_t node) {
        std::ifstream file(std::string(std::getenv("VANTLO_SERVERS")) + "/node" + std::to_string(node + 1) + "/pid");
        pid_t process = 0;
        file >> process;
        REQUIRE(process > 1);
        REQUIRE(::kill(process, SIGKILL) == 0);
    }

    /// Waits until a node takes part in the cluster. Returns a connection whose reads see all that was committed anywhere.
    [[nodiscard]] Owned<NativeConnection> connect_when_ready(std::size_t node) const {
        const auto last = steady_clock::now() + seconds(60);
        for (;; std::this_thread::sleep_for(milliseconds(200))) {
            try {
                Owned<NativeConnection> connection = connect(node);
                const ResultTable state = connection->run(u"show status like 'wsrep_local_state_comment'");
                connection->run(u"set session wsrep_sync_wait = 1");
                if (state.rows.at(0).at(1) == Variant(u"Synced")) return connection;
            } catch (const Failure&) {
                if (steady_clock::now() > last) throw;
            }
            REQUIRE(steady_clock::now() < last);
        }
    }

private:
    std::vector<std::string> nodes_;
};

/// What writers have saved, as they were told.
struct Saved {
    std::map<std::string, int> moved;     ///< by goods, by the bills that are kept
    std::vector<std::string> kept_bills;  ///< their ids
    long savings = 0;                     ///< bills saved and taken back
    long retries = 0;
    milliseconds longest{0};  ///< of one saving
    std::string failure;      ///< of the bill that ended the writer's work

    void add(const Saved& other) {
        for (const auto& [goods, quantity] : other.moved) moved[goods] += quantity;
        kept_bills.insert(kept_bills.end(), other.kept_bills.begin(), other.kept_bills.end());
        savings += other.savings;
        retries += other.retries;
        longest = std::max(longest, other.longest);
        failure += other.failure;
    }
};

/// Saves bills until told to stop: every other one on the goods that all writers share, and takes every fourth back.
Saved save_bills(const std::vector<std::string>& nodes, const std::string& writer, const std::atomic<bool>& stop) {
    Saved saved;
    const auto timed = [&saved](const auto& save) {
        const auto start = steady_clock::now();
        save();
        saved.longest = std::max(saved.longest, std::chrono::duration_cast<milliseconds>(steady_clock::now() - start));
        ++saved.savings;
    };
    try {
        Bookkeeping bookkeeping(connect_in_turn(nodes));
        for (int number = 0; !stop; ++number) {
            const std::string goods = number % 2 == 0 ? "shared" : "own-" + writer.substr(0, 1);
            const std::string id = writer + "/" + std::to_string(number);
            const int quantity = 1 + number % 9;
            const Bill bill = stock_bill(from_utf8(id), from_utf8(goods), quantity, u"W1", u"W2");
            timed([&] { bookkeeping.save(bill); });
            if (number % 4 == 3) {
                timed([&] { bookkeeping.reverse(*bill.kind, bill.id); });
            } else {
                saved.moved[goods] += quantity;
                saved.kept_bills.push_back(id);
            }
        }
        saved.retries = bookkeeping.retries();
    } catch (const std::exception& failure) {
        saved.failure = failure.what();
    }
    return saved;
}

/// Lets a writer work on each node while something happens. Returns what they saved together.
template <typename Happening>
Saved write_during(const Cluster& cluster, const std::string& shift, Happening happening) {
    std::atomic<bool> stop{false};
    std::vector<Saved> saved(cluster.size());
    {
        std::vector<std::jthread> threads;
        for (std::size_t node = 0; node < cluster.size(); ++node) {
            threads.emplace_back([&, node] {
                saved[node] = save_bills(cluster.list_from(node), std::to_string(node + 1) + shift, stop);
            });
        }
        happening();
        stop = true;
    }
    Saved all;
    for (const Saved& of_writer : saved) all.add(of_writer);
    return all;
}

std::string ledger_of(const Saved& saved) {
    std::vector<std::string> rows;
    for (const auto& [goods, quantity] : saved.moved) {
        const std::string key = " " + goods + " red '' 0 | in ";
        const std::string number = std::to_string(quantity);
        rows.push_back("W1" + key + number + " out 0 current " + number + " | C1 pcs ''");
        rows.push_back("W2" + key + "0 out " + number + " current -" + number + " | C1 pcs ''");
    }
    std::ranges::sort(rows);
    return joined(rows);
}

std::vector<std::string> bills_in(NativeConnection& connection) {
    std::vector<std::string> ids;
    for (const std::vector<Variant>& row : connection.run(u"select Id from StockBill").rows) {
        ids.push_back(to_utf8(to_text(row.at(0))));
    }
    std::ranges::sort(ids);
    return ids;
}

void tell(const char* shift, const Saved& saved, seconds length) {
    MESSAGE(std::string(shift) << ": " << saved.savings << " bills saved or taken back in " << length.count() << " s, "
                               << saved.retries << " attempts made again, the slowest took " << saved.longest.count()
                               << " ms");
}

TEST_CASE("Every node of a cluster holds the same exact ledger after one was killed in mid-load and came back") {
    const Cluster cluster;
    REQUIRE(cluster.size() == 3);
    const char* const asked = std::getenv("VANTLO_CLUSTER_SECONDS");
    const seconds length(asked == nullptr ? 4 : std::atoi(asked));
    cluster.connect(0)->run_script(schema_of("mariadb"));
    cluster.connect(0)->run_script(schema_of("mariadb-unique"));
    for (std::size_t node = 0; node < cluster.size(); ++node) {
        REQUIRE(cluster.connect_when_ready(node)->run(u"select * from SavedBill").rows.empty());
    }

    const Saved before = write_during(cluster, "a", [&] { std::this_thread::sleep_for(length); });
    tell("three nodes", before, length);

    const auto start = steady_clock::now();
    const Saved during = write_during(cluster, "b", [&] {
        std::this_thread::sleep_for(length / 4);
        Cluster::kill(1);
        const Owned<NativeConnection> back = cluster.connect_when_ready(1);
        std::this_thread::sleep_for(length / 4);
    });
    tell("one node killed, and back", during, std::chrono::duration_cast<seconds>(steady_clock::now() - start));

    const Saved after = write_during(cluster, "c", [&] { std::this_thread::sleep_for(length); });
    tell("three nodes again", after, length);

    Saved all = before;
    all.add(during);
    all.add(after);
    CHECK(all.failure == "");
    CHECK(during.retries > 0);
    std::ranges::sort(all.kept_bills);
    for (std::size_t node = 0; node < cluster.size(); ++node) {
        INFO("node " << node + 1);
        const Owned<NativeConnection> connection = cluster.connect_when_ready(node);
        CHECK(joined(read_ledger(*connection)) == ledger_of(all));
        CHECK(bills_in(*connection) == all.kept_bills);
        CHECK(to_long(only_value(*connection, u"select count(*) from StockBillItems")) ==
              static_cast<std::int32_t>(all.kept_bills.size()));
        CHECK(to_long(only_value(*connection, u"select count(*) from SavedBill")) == all.savings);
    }
}

}  // namespace
}  // namespace vantlo::test
