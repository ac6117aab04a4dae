#include "tests/support/killed_posting.h"

#include <doctest/doctest.h>
#include <sys/wait.h>
#include <unistd.h>

namespace vantlo::test {

bool KilledPosting::post_and_kill(int kill_at, bool before, bool in_transaction) const {
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

int KilledPosting::post(int kill_at, bool before, bool in_transaction) const {
    Recorder recorder;
    const RecordingHooks hooks(recorder);
    const auto connection = connect_();
    KillingConnection killing(*connection, kill_at, before);
    RecordedLine line(recorder, scenario_.line);
    if (in_transaction) connection->begin();
    call_member(scenario_, {killing, line});
    if (in_transaction) connection->commit();
    set_project_connection(nullptr);
    return killing.statements;
}

int check_every_kill(const Scenario& scenario, const std::function<KilledPosting()>& fresh) {
    INFO(scenario.where());
    const std::vector<std::string> before_all = fresh().ledger();
    const KilledPosting untouched = fresh();
    const int statements = untouched.post();
    const std::vector<std::string> after_all = untouched.ledger();
    REQUIRE(after_all != before_all);
    std::vector<std::string> reached = before_all;  // by the statements before the one that is killed
    for (int n = 0; n < statements; ++n) {
        INFO("statement " << n);
        const KilledPosting killed_before = fresh();
        CHECK(killed_before.post_and_kill(n, true, false));
        CHECK(killed_before.ledger() == reached);
        const KilledPosting killed_after = fresh();
        CHECK(killed_after.post_and_kill(n, false, false));
        reached = killed_after.ledger();
        for (const bool before : {true, false}) {
            const KilledPosting in_transaction = fresh();
            CHECK(in_transaction.post_and_kill(n, before, true));
            CHECK(in_transaction.ledger() == before_all);
        }
    }
    CHECK(reached == after_all);
    const KilledPosting whole = fresh();
    CHECK(!whole.post_and_kill(never, false, true));
    CHECK(whole.ledger() == after_all);
    return 4 * statements;
}

std::map<std::string, Scenario> busiest_scenarios() {
    std::map<std::string, Scenario> busiest;
    for (const Scenario& scenario : read_scenario_folder(VANTLO_SOURCE_DIR "/tests/scenarios")) {
        Scenario& known = busiest[scenario.member];
        if (scenario.result == 0 && scenario.trace.size() > known.trace.size()) known = scenario;
    }
    return busiest;
}

}  // namespace vantlo::test
