#include <doctest/doctest.h>

#include <algorithm>
#include <chrono>
#include <fstream>
#include <future>
#include <map>
#include <sstream>
#include <thread>

#include "automation/error.h"
#include "tests/support/servers.h"
#include "tests/support/test_database.h"

// Two sessions post 1 unit each to one ledger key, in every order of their look-ups, writes and commits, at every isolation
// level, with the unique key and without it, the row there or missing. interleavings.txt says what comes of it.

namespace vantlo::test {
namespace {

constexpr TextView where = u" where WID='W1' and GId='G1' and Model1='' and Model2='' and Status=0";

const char16_t* const insert_row =
    u"insert into Inventory(WID,GId,Model1,Model2,Status,Class,Unit,InQty,OutQty,CurrentQty,Remarks) "
    u"values('W1','G1','','',0,'C1','pcs',1,0,1,'')";

/// One of the two sessions, each step of which may have to wait for the other.
class Session {
public:
    Session(const Server& server, NativeConnection& monitor, const std::string& level)
        : connection_(server.connect()), monitor_(monitor), is_mariadb_(server.dialect == "mariadb") {
        connection_->run((is_mariadb_ ? u"set session transaction isolation level "
                                      : u"set session characteristics as transaction isolation level ") +
                         from_utf8(level));
        if (!is_mariadb_) connection_->run(u"set deadlock_timeout = '20ms'");
        id_ = to_text(only_value(*connection_, is_mariadb_ ? u"select connection_id()" : u"select pg_backend_pid()"));
    }

    void reset() {
        steps_ = 0;
        remedy_ = Remedy::none;
    }

    /// Starts the next step: look-up, write, commit. Returns when it is done or waits for a lock.
    /// A session that was stopped has no more steps.
    void start_next() {
        settle();
        if (remedy_ != Remedy::none) return;
        running_ = std::async(std::launch::async, [this, step = steps_++] { run(step); });
        while (!is_done() && !waits_for_lock()) {
        }
    }

    /// Waits until the step that was started last is done.
    void settle() {
        if (running_.valid()) running_.get();
    }

    [[nodiscard]] bool is_done() const {
        return !running_.valid() || running_.wait_for(std::chrono::milliseconds(1)) == std::future_status::ready;
    }

    /// What helps against the failure that stopped it, and `none` if it was not stopped.
    [[nodiscard]] Remedy remedy() const { return remedy_; }

private:
    void run(int step) {
        try {
            if (step == 0) {
                connection_->begin();
                found_ = !connection_->run(u"select * from Inventory" + Text(where)).rows.empty();
            } else if (step == 1) {
                connection_->run(found_ ? u"update Inventory set InQty = InQty + 1,CurrentQty = CurrentQty + 1" +
                                              Text(where)
                                        : insert_row);
            } else {
                connection_->commit();
            }
        } catch (const Failure&) {
            remedy_ = connection_->remedy();
            connection_->roll_back();
        }
    }

    bool waits_for_lock() {
        if (!is_mariadb_) {
            return to_long(only_value(monitor_,
                                      u"select count(*) from pg_stat_activity where wait_event_type = 'Lock' and "
                                      u"pid = " +
                                          id_)) != 0;
        }
        // The tables of information_schema are kept for as long as they are read more often than every 0.1 s.
        const Text status = to_text(monitor_.run(u"show engine innodb status").rows.at(0).at(2));
        const std::size_t own = status.rfind(u"thread id " + id_ + u",");
        const std::size_t transaction = status.rfind(u"---TRANSACTION", own);
        if (own == Text::npos || transaction == Text::npos) return false;
        return TextView(status).substr(transaction, own - transaction).find(u"LOCK WAIT") != TextView::npos;
    }

    Owned<OdbcConnection> connection_;
    NativeConnection& monitor_;
    bool is_mariadb_;
    Text id_;
    std::future<void> running_;
    int steps_ = 0;
    bool found_ = false;
    Remedy remedy_ = Remedy::none;
};

/// All orders of three steps of `a` and three of `b` in which `a` begins; the others are the same with the names changed.
std::vector<std::string> orders() {
    std::vector<std::string> all;
    std::string order = "aaabbb";
    do {
        if (order.front() == 'a') all.push_back(order);
    } while (std::ranges::next_permutation(order).found);
    return all;
}

class Interleavings {
public:
    Interleavings(const Server& server, const std::string& level)
        : monitor_(server.connect()), a_(server, *monitor_, level), b_(server, *monitor_, level) {}

    NativeConnection& monitor() { return *monitor_; }

    /// Runs the steps in an order, then saves again what was told to, and says what came of it.
    std::string outcome(const std::string& order, bool row_is_there) {
        monitor_->run(u"delete from Inventory");
        if (row_is_there) monitor_->run(insert_row);
        a_.reset();
        b_.reset();
        for (std::string rest = order; !rest.empty();) {
            // A step of a session that still waits gives way to the first one of the other session.
            const auto next = std::ranges::find_if(rest, [this](char name) { return session(name).is_done(); });
            if (next == rest.end()) continue;
            Session& its_session = session(*next);
            rest.erase(next);
            its_session.start_next();
        }
        a_.settle();
        b_.settle();
        const int refused = (a_.remedy() != Remedy::none ? 1 : 0) + (b_.remedy() != Remedy::none ? 1 : 0);
        for (Session* session : {&a_, &b_}) {
            if (session->remedy() != Remedy::save_again) continue;
            session->reset();
            for (int step = 0; step < 3; ++step) session->start_next();
            session->settle();
            CHECK(session->remedy() == Remedy::none);
        }
        return ledger(row_is_there) + (refused == 0 ? "" : refused == 1 ? ", one saved again" : ", both saved again");
    }

private:
    Session& session(char name) { return name == 'a' ? a_ : b_; }

    std::string ledger(bool row_was_there) {
        const ResultTable rows = monitor_->run(u"select CurrentQty from Inventory order by CurrentQty");
        const std::int32_t expected = row_was_there ? 3 : 2;
        if (rows.rows.size() == 1) return to_long(rows.rows[0][0]) == expected ? "exact" : "lost";
        return std::to_string(rows.rows.size()) + " rows";
    }

    Owned<OdbcConnection> monitor_;
    Session a_;
    Session b_;
};

std::string joined_orders(const std::vector<std::string>& all) {
    std::string text;
    for (const std::string& order : all) text += " " + order;
    return text;
}

/// What comes of all orders, as interleavings.txt tells it: each outcome with its orders.
void tell(std::ostream& told, Interleavings& interleavings, const std::string& heading, bool row_is_there) {
    std::map<std::string, std::vector<std::string>> orders_by_outcome;
    for (const std::string& order : orders()) {
        orders_by_outcome[interleavings.outcome(order, row_is_there)].push_back(order);
    }
    told << heading << (row_is_there ? ", row there" : ", row missing") << "\n";
    for (const auto& [outcome, all] : orders_by_outcome) {
        told << "    " << outcome << ":" << (all.size() == orders().size() ? " always" : joined_orders(all)) << "\n";
    }
}

TEST_CASE("Two sessions' look-ups, writes and commits on one key end as interleavings.txt says, in every order") {
    std::ifstream file(VANTLO_SOURCE_DIR "/tests/bookkeeping/interleavings.txt");
    std::string expected;
    for (std::string line; std::getline(file, line);) {
        if (!line.starts_with("#")) expected += line + "\n";
    }
    std::ostringstream told;
    for (const Server& server : servers()) {
        const Owned<OdbcConnection> owner = server.connect();
        owner->run_script(schema_of(server.dialect));
        for (const char* level : {"read committed", "repeatable read", "serializable"}) {
            Interleavings interleavings(server, level);
            const std::string heading = server.dialect + ", " + level;
            for (const bool row_is_there : {false, true}) tell(told, interleavings, heading + ", no key", row_is_there);
            interleavings.monitor().run(u"delete from Inventory");
            owner->run_script(schema_of(server.dialect + "-unique"));
            for (const bool row_is_there : {false, true})
                tell(told, interleavings, heading + ", unique key", row_is_there);
            owner->run(server.dialect == "mariadb" ? u"drop index InventoryUniqueKey on Inventory"
                                                   : u"drop index InventoryUniqueKey");
        }
        owner->run(u"delete from Inventory");
    }
    CHECK(told.str() == expected);
}

}  // namespace
}  // namespace vantlo::test
