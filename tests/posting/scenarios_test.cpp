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

/// A number that no failure of a scenario has, small enough that no quantity overflows with it as its factor.
constexpr ErrorNumber small_factor = 2;

TEST_CASE("Every scenario returns its result, sends its statements and leaves its ledger") {
    const auto database = make_test_database();
    check_scenarios(all_scenarios(), *database);
}

TEST_CASE(
    "Every scenario of columns with types of their own returns its result, sends its statements and leaves its "
    "ledger") {
    const auto database = make_sqlite_database();
    CHECK(!scenarios_of_column_types().empty());
    check_scenarios(scenarios_of_column_types(), *database);
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

/// What opens the recordset that a step prepares: nothing where what Execute returns takes its place. The members that
/// open one themselves open the first.
enum class OpenedBy { nothing, unit_look_up, member };

OpenedBy opened_by(const Recorder& baseline, std::size_t index) {
    const auto events = std::span(baseline.events);
    const auto later = events.subspan(index + 1);
    const auto next =
        std::ranges::find_if(later, [](const Event& event) { return event.what == "prepare" || event.what == "open"; });
    if (next == later.end()) return OpenedBy::nothing;
    if (next->what == "open" && next->recordset == "unit") return OpenedBy::unit_look_up;
    const bool is_first = std::ranges::count(events.first(index + 1), "prepare", &Event::what) == 1;
    const bool opens_its_own = std::ranges::any_of(
        later, [](const Event& event) { return event.what == "open" && event.recordset != "unit"; });
    return is_first && opens_its_own ? OpenedBy::member : OpenedBy::nothing;
}

/// How many recordsets are there before an event.
std::int64_t recordsets_before(const Recorder& recorder, std::size_t index) {
    const auto before = std::span(recorder.events).first(index);
    const auto made = std::ranges::count_if(
        before, [](const Event& event) { return event.what == "prepare" || event.what == "execute"; });
    return made - std::ranges::count(before, "free", &Event::what);
}

/// The events up to the one that fails; then the member's message unless it is silent; then, once it is dismissed, the
/// release of every recordset; and nothing more.
void check_end(const Recorder& baseline, const Recorder& failed, const Member& member) {
    std::vector<std::string> expected = baseline.trace(Detail::everything);
    const auto hit = static_cast<std::size_t>(failed.failed_event);
    expected.resize(hit + 1);
    if (member.on_error == OnError::tell_user) {
        expected.push_back("message " + to_utf8(member.name) + "():" + to_utf8(standard_text(failed.fail_with)));
    }
    std::vector<std::string> lines = failed.trace(Detail::everything);
    const std::size_t ended = std::min(expected.size(), lines.size());
    for (std::size_t i = ended; i < lines.size(); ++i) CHECK(lines[i].starts_with("free "));
    CHECK(static_cast<std::int64_t>(lines.size() - ended) == recordsets_before(baseline, hit));
    lines.resize(ended);
    CHECK(joined(lines) == joined(expected));
}

/// The statements but the unit look-ups, with a mark for each number: what another factor does not change.
std::string course_of(const Recorder& recorder) {
    std::string course;
    for (const Event& event : recorder.events) {
        if ((event.what != "execute" && event.what != "open") || event.recordset == "unit") continue;
        course += without_numbers(event.line()) + "\n";
    }
    return course;
}

/// The messages that the member itself shows.
std::vector<std::string> own_messages(const Recorder& recorder) {
    std::vector<std::string> messages = messages_of(recorder);
    std::erase_if(messages, [](const std::string& message) {
        return message.starts_with("GoodsUnitConverter():") || message.starts_with("Open_Recordset():");
    });
    return messages;
}

std::string message_of(const char* routine, ErrorNumber number) {
    return std::string(routine) + "():" + to_utf8(standard_text(number));
}

/// A posting goes on after a helper has failed and shown so: the same statements but for their quantities, the same
/// result, and no other message of its own. A product that was too large may not be so with another factor.
void check_going_on(const Outcome& whole, const Outcome& failed, const std::vector<std::string>& shown) {
    const std::vector<std::string> messages = messages_of(failed.recorder);
    for (const std::string& message : shown) CHECK(std::ranges::find(messages, message) != messages.end());
    if (whole.result == error::overflow && failed.result == 0) {
        CHECK(course_of(failed.recorder).starts_with(course_of(whole.recorder)));
        CHECK(writes_in(failed.recorder) > 0);
        return;
    }
    CHECK(failed.result == whole.result);
    CHECK(course_of(failed.recorder) == course_of(whole.recorder));
    CHECK(own_messages(failed.recorder) == own_messages(whole.recorder));
}

/// A preparation that fails shows so. What is made of its recordset later depends on the step: none was made, it has no
/// connection, or its cursor is not set.
void check_preparation(const Outcome& whole, const Outcome& failed, std::size_t hit) {
    const std::string& step = whole.recorder.events[hit].what;
    const std::string own = message_of("Open_Recordset", failed.recorder.fail_with);
    const OpenedBy opened = opened_by(whole.recorder, hit);
    if (opened == OpenedBy::nothing || step == "location" || step == "type") {
        check_going_on(whole, failed, {own});
        CHECK(failed.ledger == whole.ledger);
        return;
    }
    const ErrorNumber consequence = step == "prepare" ? error::object_not_set : error::no_connection;
    if (opened == OpenedBy::unit_look_up) {
        check_going_on(whole, failed, {own, message_of("GoodsUnitConverter", consequence)});
        return;
    }
    CHECK(failed.result == consequence);
    CHECK(messages_of(failed.recorder).front() == own);
    CHECK(messages_of(failed.recorder).size() == 2);
    CHECK(writes_in(failed.recorder) == 0);
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
            const Outcome failed = run_scenario(scenario, *database, {.at = n, .number = small_factor});
            ++points;
            const auto hit = static_cast<std::size_t>(failed.recorder.failed_event);
            REQUIRE(hit < failed.recorder.events.size());
            switch (owner_of(whole.recorder, hit)) {
                case Owner::member:
                    CHECK(failed.result == failed.recorder.fail_with);
                    check_end(whole.recorder, failed.recorder, member);
                    break;
                case Owner::release:
                    CHECK(failed.result == whole.result);
                    CHECK(messages_of(failed.recorder) == messages_of(whole.recorder));
                    CHECK(failed.ledger == whole.ledger);
                    break;
                case Owner::unit_look_up:
                    // The error number serves as the factor.
                    check_going_on(whole, failed, {message_of("GoodsUnitConverter", failed.recorder.fail_with)});
                    break;
                case Owner::preparation: check_preparation(whole, failed, hit); break;
            }
        }
    }
    MESSAGE(points << " fault points of " << all_scenarios().size() << " scenarios, all of them tried");
}

}  // namespace
}  // namespace vantlo::test
