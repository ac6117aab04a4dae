#include <doctest/doctest.h>

#include <algorithm>
#include <set>
#include <span>

#include "automation/error_text.h"
#include "component/member_table.h"
#include "tests/support/scenario_check.h"

namespace vantlo::test {
namespace {

bool changes_rows(const Event& event) {
    return event.what == "execute" && (event.text.starts_with("update") || event.text.starts_with("insert"));
}

std::int64_t writes_in(const Recorder& recorder) { return std::ranges::count_if(recorder.events, changes_rows); }

std::vector<std::string> messages_of(const Recorder& recorder) {
    std::vector<std::string> messages;
    for (const Event& event : recorder.events) {
        if (event.what == "message") messages.push_back(event.text);
    }
    return messages;
}

/// Whether a message begins so.
bool shows(const Recorder& recorder, std::string_view beginning) {
    const std::vector<std::string> messages = messages_of(recorder);
    return std::ranges::any_of(messages, [&](const auto& message) { return message.starts_with(beginning); });
}

TEST_CASE("Every scenario returns its result, sends its statements and leaves its ledger") {
    const auto database = make_test_database();
    check_scenarios(all_scenarios(), *database);
}

TEST_CASE("Where a bill has several header rows, the first counts") {
    const auto database = make_sqlite_database();
    for (const Text table : {u"StockBill", u"GoodsBill"}) {  // once more, without the key that forbids such bills
        database->connection().execute(u"create table Copied as select * from " + table);
        database->connection().execute(u"drop table " + table);
        database->connection().execute(u"alter table Copied rename to " + table);
    }
    const std::vector<Scenario> told = read_scenario_folder(scenario_folder + "/without_keys");
    CHECK(!told.empty());
    check_scenarios(told, *database);
}

TEST_CASE("Where a database keeps a goods bill's status as text, look-up and update write it as a literal") {
    const auto database = make_sqlite_database();
    database->connection().run_script(
        "alter table GoodsBillItems drop column Goodstutas; alter table GoodsBillItems add column Goodstutas text");
    const std::vector<Scenario> told = read_scenario_folder(scenario_folder + "/text_statuses");
    CHECK(!told.empty());
    check_scenarios(told, *database);
}

TEST_CASE("The bills between two warehouses are taken back by a quantity that is read after its unit was looked up") {
    const auto database = make_sqlite_database();
    int told = 0;
    for (const Scenario& scenario : all_scenarios()) {
        const bool is_one = scenario.member == "ReduceInventory_Db" || scenario.member == "RG_ReduceInventory_Db" ||
                            scenario.member == "Hj_ReduceInventory_Db";
        const Recorder recorder = is_one ? run_scenario(scenario, *database).recorder : Recorder();
        bool looked_up = false;
        for (const Event& event : recorder.events) {
            if (event.what == "open" && event.recordset == "unit") looked_up = true;
            if (event.what == "next") looked_up = false;
            if (event.what != "field" || (event.text != "Qty" && event.text != "Actualqty")) continue;
            INFO(scenario.where());
            CHECK(looked_up);
            ++told;
        }
    }
    CHECK(told > 0);
}

TEST_CASE("Every posting member has scenarios") {
    std::set<std::string> told;
    for (const Scenario& scenario : all_scenarios()) told.insert(scenario.member);
    for (const Member& member : member_table()) {
        if (member.kind == MemberKind::method) CHECK_MESSAGE(told.contains(to_utf8(member.name)), to_utf8(member.name));
    }
}

/// Whose step a failure hits decides what the member makes of it.
enum class Owner { member, preparation, unit_look_up, release };

Owner owner_of(const Recorder& baseline, std::size_t index) {
    const Event& event = baseline.events[index];
    if (event.recordset == "unit") return Owner::unit_look_up;
    if (event.what == "release") return Owner::release;
    const bool closes_for_release = event.what == "close" && index > 0 && baseline.events[index - 1].what == "release";
    if (closes_for_release) return Owner::release;
    const bool prepares =
        event.what == "prepare" || event.what == "connect" || event.what == "location" || event.what == "type";
    return prepares ? Owner::preparation : Owner::member;
}

/// Whether the recordset prepared by this step is opened later: the unit look-up's right away, that of a member which
/// uses its own Open further on. The others give way to what Execute returns.
bool is_opened_later(const Recorder& baseline, std::size_t index) {
    const auto later = std::span(baseline.events).subspan(index + 1);
    const auto next =
        std::ranges::find_if(later, [](const Event& event) { return event.what == "prepare" || event.what == "open"; });
    if (next == later.end()) return false;
    return next->what == "open" || std::ranges::any_of(later, [](const Event& event) {
               return event.what == "open" && event.recordset != "unit";
           });
}

/// The events up to the one that fails, then the member's message unless it is silent, and nothing more.
std::vector<std::string> events_of_failure(const Recorder& baseline, const Recorder& failed, const Member& member) {
    std::vector<std::string> lines = baseline.trace(Detail::everything);
    lines.resize(static_cast<std::size_t>(failed.failed_event) + 1);
    if (member.on_error == OnError::tell_user) {
        lines.push_back("message " + to_utf8(member.name) + "():" + to_utf8(standard_text(failed.fail_with)));
    }
    return lines;
}

TEST_CASE("A failure of any call, read or close gives its number, at most one message, and nothing after it") {
    const auto database = make_test_database();
    int points = 0;
    for (const Scenario& scenario : all_scenarios()) {
        INFO(scenario.where());
        const Outcome whole = run_scenario(scenario, *database);
        const Member& member = *find_method(from_utf8(scenario.member));
        for (int n = 1; n <= whole.recorder.steps; ++n) {
            INFO("step " << n);
            const Outcome failed = run_scenario(scenario, *database, {.at = n});
            ++points;
            const auto hit = static_cast<std::size_t>(failed.recorder.failed_event);
            REQUIRE(hit < failed.recorder.events.size());
            switch (owner_of(whole.recorder, hit)) {
                case Owner::member:
                    CHECK(failed.result == failed.recorder.fail_with);
                    CHECK(joined(failed.recorder.trace(Detail::everything)) ==
                          joined(events_of_failure(whole.recorder, failed.recorder, member)));
                    break;
                case Owner::release:
                    CHECK(failed.result == whole.result);
                    CHECK(messages_of(failed.recorder) == messages_of(whole.recorder));
                    CHECK(failed.ledger == whole.ledger);
                    break;
                case Owner::unit_look_up:
                    // The error number serves as the factor, and the posting goes on.
                    CHECK(shows(failed.recorder, "GoodsUnitConverter():"));
                    CHECK(writes_in(failed.recorder) <= writes_in(whole.recorder));
                    break;
                case Owner::preparation:
                    CHECK(shows(failed.recorder, "Open_Recordset():"));
                    if (!is_opened_later(whole.recorder, hit)) {
                        CHECK(failed.result == whole.result);
                        CHECK(failed.ledger == whole.ledger);
                    }
                    break;
            }
        }
    }
    MESSAGE(points << " fault points of " << all_scenarios().size() << " scenarios, all of them tried");
}

}  // namespace
}  // namespace vantlo::test
