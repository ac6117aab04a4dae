#include <doctest/doctest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <map>

#include "ado/sqlite/sqlite_connection.h"
#include "tests/support/scenario_runner.h"
#include "tests/support/temporary_folder.h"

// A process that posts a bill is killed before and after each of its statements; what is in the file afterwards is all
// or nothing inside the host's transaction, and exactly the statements before the kill without one.

namespace vantlo::test {
namespace {

/// Passes statements on, and kills its process before or after the n-th of them, counted from 0.
class KillingConnection final : public Connection {
public:
    KillingConnection(Connection& inner, int kill_at, bool before)
        : inner_(inner), kill_at_(kill_at), before_(before) {}

    void add_reference() noexcept override {}
    void release() noexcept override {}
    RecordsetVariable execute(TextView statement) override {
        const bool is_last = statements++ == kill_at_;
        if (is_last && before_) std::raise(SIGKILL);
        RecordsetVariable result = inner_.execute(statement);
        if (is_last) std::raise(SIGKILL);
        return result;
    }

    int statements = 0;

private:
    Connection& inner_;
    int kill_at_;
    bool before_;
};

constexpr int never = -1;

/// A ledger in a file, filled with what the scenario gives.
class LedgerFile {
public:
    explicit LedgerFile(const Scenario& scenario) : scenario_(scenario) {
        const auto connection = open();
        connection->run_script(schema_of("sqlite"));
        for (const TableRow& row : scenario.given) connection->execute(insert_text(row));
    }

    /// Posts in a process of its own that is killed at a statement. Returns whether it was killed.
    [[nodiscard]] bool post_and_kill(int kill_at, bool before, bool in_transaction) const {
        const pid_t child = ::fork();
        REQUIRE(child >= 0);
        if (child == 0) {
            post(kill_at, before, in_transaction);
            ::_exit(0);
        }
        int status = 0;
        REQUIRE(::waitpid(child, &status, 0) == child);
        return WIFSIGNALED(status) && WTERMSIG(status) == SIGKILL;
    }

    /// Posts in this process. Returns the number of statements that went through the connection.
    int post(int kill_at = never, bool before = false, bool in_transaction = false) const {
        Recorder recorder;
        const RecordingPlatform platform(recorder);
        const auto connection = open();
        KillingConnection killing(*connection, kill_at, before);
        RecordedLine line(recorder, scenario_.line);
        if (in_transaction) connection->begin();
        call_member(scenario_, killing, line);
        if (in_transaction) connection->commit();
        set_project_connection(nullptr);
        return killing.statements;
    }

    [[nodiscard]] std::vector<std::string> ledger() const { return read_ledger(*open()); }

private:
    /// Opens the file. Durability against power cuts is not what is tried here.
    [[nodiscard]] Owned<SqliteConnection> open() const {
        Owned<SqliteConnection> connection(new SqliteConnection(path_));
        connection->run_script("pragma synchronous = off");
        return connection;
    }

    const Scenario& scenario_;
    TemporaryFolder folder_;
    std::string path_ = folder_.file("ledger.db");
};

/// The scenario of each member that succeeds with the most statements.
std::map<std::string, Scenario> busiest_scenarios() {
    std::map<std::string, Scenario> busiest;
    for (const Scenario& scenario : read_scenario_folder(VANTLO_SOURCE_DIR "/tests/scenarios")) {
        Scenario& known = busiest[scenario.member];
        if (scenario.result == 0 && scenario.trace.size() > known.trace.size()) known = scenario;
    }
    return busiest;
}

TEST_CASE("A process killed at any statement leaves all or nothing in a transaction, the earlier statements without") {
    int kills = 0;
    for (const auto& [member, scenario] : busiest_scenarios()) {
        INFO(scenario.where());
        const LedgerFile untouched(scenario);
        const std::vector<std::string> before_all = untouched.ledger();
        const int statements = untouched.post();
        REQUIRE(untouched.ledger() != before_all);
        std::vector<std::string> reached = before_all;  // by the statements before the one that is killed
        for (int n = 0; n < statements; ++n) {
            INFO("statement " << n);
            const LedgerFile killed_before(scenario);
            CHECK(killed_before.post_and_kill(n, true, false));
            CHECK(killed_before.ledger() == reached);
            const LedgerFile killed_after(scenario);
            CHECK(killed_after.post_and_kill(n, false, false));
            reached = killed_after.ledger();
            for (const bool before : {true, false}) {
                const LedgerFile in_transaction(scenario);
                CHECK(in_transaction.post_and_kill(n, before, true));
                CHECK(in_transaction.ledger() == before_all);
            }
            kills += 4;
        }
        CHECK(reached == untouched.ledger());
        const LedgerFile whole(scenario);
        CHECK(!whole.post_and_kill(never, false, true));
        CHECK(whole.ledger() == untouched.ledger());
    }
    MESSAGE(kills << " kills");
}

}  // namespace
}  // namespace vantlo::test
