#include "audit/bill_accounts.h"

namespace vantlo {

namespace {

void drop_zeros(AmountsByKey& amounts) {
    std::erase_if(amounts, [](const auto& entry) { return entry.second == Amounts{}; });
}

}  // namespace

BillPlace place_of(const BillName& name) {
    const BillKind* const kind = find_bill_kind(to_utf8(name.first));
    return {kind == nullptr ? name.first : Text(kind->header->name), name.second};
}

AmountsByKey Effect::from(std::size_t step) const {
    AmountsByKey amounts;
    for (; step < steps.size(); ++step) add_to(amounts, steps[step].first, steps[step].second);
    drop_zeros(amounts);
    return amounts;
}

std::vector<Effect> effects_of(const Recomputation& expected, std::size_t events) {
    std::vector<Effect> effects(events);
    for (const PostingStep& step : expected.steps) {
        effects[step.event].steps.emplace_back(expected.rows[step.row].key, step.added);
    }
    return effects;
}

AmountsByKey BillAccount::surplus() const {
    AmountsByKey surplus = moved;
    for (const auto& [key, amounts] : says) add_to(surplus, key, -amounts);
    drop_zeros(surplus);
    return surplus;
}

std::map<BillPlace, BillAccount> bill_accounts(const BillTimeline& timeline, const std::vector<Effect>& effects,
                                               const Movements& movements) {
    std::map<BillPlace, BillAccount> accounts;
    for (const auto& [name, of_bill] : movements.of_bills) {
        BillAccount& account = accounts[place_of(name)];
        account.name = name;
        account.movements += of_bill.count;
        for (const auto& [key, amounts] : of_bill.moved) add_to(account.moved, key, amounts);
    }
    for (std::size_t event = 0; event < timeline.events.size(); ++event) {
        const BillName name = name_of(timeline.events[event].bill);
        BillAccount& account = accounts[place_of(name)];
        account.name = name;
        account.events.push_back(event);
        for (const auto& [key, amounts] : effects[event].from(0)) add_to(account.says, key, amounts);
    }
    for (auto& [place, account] : accounts) {
        drop_zeros(account.moved);
        drop_zeros(account.says);
    }
    return accounts;
}

}  // namespace vantlo
