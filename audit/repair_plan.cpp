#include "audit/repair_plan.h"

#include <algorithm>

namespace vantlo {

namespace {

constexpr std::size_t warehouse_part = 0;
constexpr std::size_t goods_part = 1;

/// Whether a list of ids has that part of every row's key, blanks around it aside.
bool names_all(const std::vector<Text>& ids, const Finding& finding, std::size_t part) {
    return std::ranges::all_of(finding.differences, [&](const Difference& rows) {
        const std::optional<Text>& id = rows.key.parts[part];
        return id &&
               std::ranges::any_of(ids, [&](const Text& named) { return trim_blanks(named) == trim_blanks(*id); });
    });
}

bool is_chosen(const Finding& finding, const RepairChoice& choice, bool is_by_journal) {
    const bool is_named = is_by_journal ? finding.is_outside_bills
                                        : choice.causes.empty() || std::ranges::count(choice.causes, finding.cause) > 0;
    return is_named && (choice.goods.empty() || names_all(choice.goods, finding, goods_part)) &&
           (choice.warehouses.empty() || names_all(choice.warehouses, finding, warehouse_part));
}

bool has_no_bill(const Finding& finding) {
    return std::ranges::all_of(finding.differences, [](const Difference& rows) { return rows.events.empty(); });
}

/// Whether a bill or a unit is what was changed, as far as that is known.
bool doubts_bills(const Finding& finding) {
    constexpr Cause doubtful[] = {Cause::cannot_judge, Cause::unit_factor, Cause::edited_bill, Cause::deleted_bill};
    return std::ranges::count(doubtful, finding.cause) > 0;
}

/// Whether verify could take every bill of the database into account.
bool knows_all_bills(const Verification& verification) {
    const BillTimeline& timeline = verification.timeline;
    return timeline.lost.empty() && timeline.unknown_kind.empty() && timeline.headless.empty() &&
           timeline.unreadable.empty() && timeline.broken.empty() && verification.broken_units.empty() &&
           verification.expected.refusals.empty();
}

}  // namespace

RepairPlan plan_repairs(const Verification& verification, const RepairChoice& choice) {
    const bool is_certain = knows_all_bills(verification);
    RepairPlan plan;
    plan.is_by_journal = verification.uses_journal && choice.causes.empty();
    for (const Finding& finding : verification.findings) {
        if (finding.differences.empty()) continue;  // a bill that cannot be posted has no row
        const bool is_judged =
            finding.is_outside_bills || (is_certain && !has_no_bill(finding) && !doubts_bills(finding));
        if (!is_chosen(finding, choice, plan.is_by_journal)) {
            plan.not_chosen.push_back(finding);
        } else if (!is_judged && choice.goods.empty()) {
            plan.unjudged.push_back(finding);
        } else {
            plan.chosen.push_back(finding);
        }
    }
    return plan;
}

}  // namespace vantlo
