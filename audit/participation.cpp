#include "audit/participation.h"

#include <algorithm>
#include <cmath>
#include <set>

#include "audit/bill_accounts.h"
#include "audit/recomputation.h"

namespace vantlo {

namespace {

class Opening {
public:
    explicit Opening(const Movements& movements) : movements_(movements) {
        for (const auto& [name, bill] : movements.of_bills) named_.insert(place_of(name));
    }

    /// Whether something that the history knows was done after the opening.
    [[nodiscard]] bool is_before(const std::optional<Date>& done_at, const BillName& bill) const {
        const bool is_named = named_.contains(place_of(bill));
        if (!done_at) return !is_named;
        return *done_at < *movements_.opened_at || (*done_at == *movements_.opened_at && !is_named);
    }

    /// Whether a bill that the history does not know is known to have been posted after the opening.
    [[nodiscard]] bool is_known_after(const Bill& bill) const {
        if (named_.contains(place_of(name_of(bill)))) return true;
        const Variant& date = bill.header.value(u"BillDate");
        const Date* const day = date.get_if<Date>();
        return day != nullptr && std::floor(day->days) > std::floor(movements_.opened_at->days);
    }

private:
    const Movements& movements_;
    std::set<BillPlace> named_;
};

/// The bills, of those given, whose steps are all among the movements without a bill; the latest first, as each movement
/// stands for one step.
std::set<std::size_t> posted_by_others(const BillTimeline& candidates, const Movements& movements,
                                       NativeConnection& database, Language language) {
    auto steps_there = loose_steps(database);
    const Recomputation posted = recompute(database, candidates, language, movements.opening);
    std::vector<std::map<std::pair<LedgerKey, Amounts>, std::size_t>> steps(candidates.events.size());
    for (const PostingStep& step : posted.steps) {
        if (step.added != Amounts{}) ++steps[step.event][{posted.rows[step.row].key, step.added}];
    }
    std::set<std::size_t> found;
    for (std::size_t event = steps.size(); event-- > 0;) {
        const auto is_there = [&](const auto& step) {
            const auto there = steps_there.find(step.first);
            return there != steps_there.end() && there->second >= step.second;
        };
        if (steps[event].empty() || !std::ranges::all_of(steps[event], is_there)) continue;
        for (const auto& [step, count] : steps[event]) steps_there[step] -= count;
        found.insert(event);
    }
    return found;
}

}  // namespace

bool are_all_bills_named(const BillTimeline& timeline, const Movements& movements) {
    std::set<Text> known_ids;
    for (const auto& [name, bill] : movements.of_bills) known_ids.insert(name.second);
    for (const BillTrace& bill : timeline.lost) known_ids.insert(bill.bill.second);
    const auto is_known = [&](const BillTrace& trace) { return known_ids.contains(trace.bill.second); };
    return std::ranges::all_of(timeline.unknown_kind, is_known) && std::ranges::all_of(timeline.headless, is_known) &&
           std::ranges::all_of(timeline.events, [&](const BillEvent& event) {
               return event.is_recorded || movements.of_bills.contains(name_of(event.bill));
           });
}

void leave_out_before_opening(BillTimeline& timeline, const Movements& movements, NativeConnection& database,
                              Language language) {
    const Opening opening(movements);
    const auto is_before = [&](const BillTrace& trace) { return opening.is_before(trace.done_at, trace.bill); };
    std::erase_if(timeline.lost, is_before);
    std::erase_if(timeline.unreadable, is_before);

    std::vector<BillEvent> kept;
    BillTimeline unsure;
    for (BillEvent& event : timeline.events) {
        if (event.is_recorded) {
            if (!opening.is_before(event.done_at, name_of(event.bill))) kept.push_back(std::move(event));
        } else if (opening.is_known_after(event.bill)) {
            kept.push_back(std::move(event));
        } else {
            unsure.events.push_back(std::move(event));
        }
    }
    if (!unsure.events.empty() && !movements.loose.empty()) {
        std::vector<BillEvent> others;
        for (const std::size_t event : posted_by_others(unsure, movements, database, language)) {
            others.push_back(std::move(unsure.events[event]));
        }
        kept.insert(kept.begin(), std::make_move_iterator(others.begin()), std::make_move_iterator(others.end()));
    }
    timeline.events = std::move(kept);
}

}  // namespace vantlo
