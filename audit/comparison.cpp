#include "audit/comparison.h"

#include <uninorm.h>

#include <algorithm>
#include <cstdlib>
#include <functional>
#include <limits>
#include <map>
#include <memory>
#include <set>

namespace vantlo {

namespace {

constexpr std::size_t past_all_events = std::numeric_limits<std::size_t>::max();

struct CauseName {
    Cause cause;
    std::string_view name;
};
constexpr CauseName names[] = {
    {Cause::unreadable_history, "unreadable-history"},
    {Cause::refused_bill, "refused-bill"},
    {Cause::not_posted, "not-posted"},
    {Cause::posted_in_part, "posted-in-part"},
    {Cause::posted_twice, "posted-twice"},
    {Cause::not_reversed, "not-taken-back"},
    {Cause::reversed_twice, "taken-back-twice"},
    {Cause::null_quantity, "null-quantity"},
    {Cause::duplicate_key, "duplicate-key"},
    {Cause::blanks_in_key, "blanks-in-key"},
    {Cause::width_of_key, "width-of-key"},
    {Cause::wrong_status, "wrong-status"},
    {Cause::unbalanced, "unbalanced"},
    {Cause::negative_stock, "negative-stock"},
    {Cause::missing_row, "missing-row"},
    {Cause::extra_row, "extra-row"},
    {Cause::changed_quantity, "changed-quantity"},
};
static_assert(std::size(names) == static_cast<std::size_t>(Cause::changed_quantity) + 1);

using Differences = std::map<LedgerKey, Difference>;
using AmountsByKey = std::map<LedgerKey, Amounts>;

Amounts sum_of(const std::vector<LedgerEntry>& entries) {
    Amounts sum{};
    for (const LedgerEntry& entry : entries) sum = sum + entry.amounts();
    return sum;
}

bool is_zero(const LedgerEntry& entry) { return !entry.has_null() && entry.amounts() == Amounts{}; }

std::vector<Amounts> sorted_amounts(const std::vector<LedgerEntry>& entries) {
    std::vector<Amounts> amounts;
    for (const LedgerEntry& entry : entries) amounts.push_back(entry.amounts());
    std::ranges::sort(amounts);
    return amounts;
}

bool any_null(const std::vector<LedgerEntry>& entries) { return std::ranges::any_of(entries, &LedgerEntry::has_null); }

bool agree(const Difference& rows) {
    if (any_null(rows.stored) != any_null(rows.expected)) return false;
    if (rows.stored.empty()) return std::ranges::all_of(rows.expected, is_zero);
    if (rows.expected.empty()) return rows.stored.size() == 1 && is_zero(rows.stored.front());
    return sorted_amounts(rows.stored) == sorted_amounts(rows.expected);
}

/// Blanks of every width, tabs and zero-width characters.
bool is_blank(char16_t unit) {
    constexpr TextView blanks = u" \t\r\n\u00A0\u2002\u2003\u2009\u200B\u200C\u200D\u202F\u3000\uFEFF";
    return blanks.find(unit) != TextView::npos;
}

Text without_blanks_around(const Text& text) {
    const auto first = std::ranges::find_if_not(text, is_blank);
    const auto last = std::find_if_not(text.rbegin(), std::make_reverse_iterator(first), is_blank).base();
    return {first, last};
}

// Source: Unicode's compatibility composition takes full-width letters and half-width syllables to their usual width.
Text in_usual_width(const Text& text) {
    std::size_t length = 0;
    const std::unique_ptr<std::uint16_t, decltype(&std::free)> folded(
        u16_normalize(UNINORM_NFKC, reinterpret_cast<const std::uint16_t*>(text.data()), text.size(), nullptr, &length),
        &std::free);
    if (!folded) return text;
    return {folded.get(), folded.get() + length};
}

template <typename Change>
LedgerKey with_changed_parts(const LedgerKey& key, const Change& change) {
    LedgerKey changed = key;
    for (std::optional<Text>& part : changed.parts) {
        if (part) part = change(*part);
    }
    return changed;
}

LedgerKey trimmed(const LedgerKey& key) { return with_changed_parts(key, without_blanks_around); }

LedgerKey without_status(const LedgerKey& key) {
    LedgerKey changed = key;
    changed.parts[status_part] = Text();
    return changed;
}

/// What the events of a comparison have done, by event.
struct Effect {
    std::vector<std::pair<LedgerKey, Amounts>> steps;

    /// From a step on, by key, without those that cancel out.
    [[nodiscard]] AmountsByKey from(std::size_t step) const {
        AmountsByKey amounts;
        for (; step < steps.size(); ++step) {
            Amounts& sum = amounts[steps[step].first];
            sum = sum + steps[step].second;
        }
        std::erase_if(amounts, [](const auto& entry) { return entry.second == Amounts{}; });
        return amounts;
    }
};

class Comparison {
public:
    Comparison(const std::vector<LedgerEntry>& stored, const Recomputation& expected, const BillTimeline& timeline)
        : timeline_(timeline), effects_(timeline.events.size()), is_reversed_(timeline.events.size()) {
        for (const LedgerEntry& entry : stored) rows_[entry.key].stored.push_back(entry);
        for (const LedgerEntry& entry : expected.rows) rows_[entry.key].expected.push_back(entry);
        for (const PostingStep& step : expected.steps) {
            const LedgerKey& key = expected.rows[step.row].key;
            effects_[step.event].steps.emplace_back(key, step.added);
            std::vector<std::size_t>& events = rows_[key].events;
            if (events.empty() || events.back() != step.event) events.push_back(step.event);
        }
        for (auto& [key, rows] : rows_) {
            rows.key = key;
            if (!agree(rows)) open_.emplace(key, rows);
        }
        find_reversed();
        for (const std::string& entry : timeline.unreadable)
            findings_.push_back({Cause::unreadable_history, {}, {}, 0, 0, entry});
        for (const auto& [event, reason] : expected.refusals)
            findings_.push_back({Cause::refused_bill, {}, event, 0, 0, reason});
    }

    std::vector<Finding> run() {
        find_nulls_and_duplicates();
        find_misspelt_keys();
        find_bills();
        for (const auto& [key, rows] : Differences(open_)) take(cause_by_itself(rows), {key});
        order();
        return std::move(findings_);
    }

private:
    /// Moves the differences of these keys into a finding.
    Finding& take(Cause cause, const std::vector<LedgerKey>& keys, std::optional<std::size_t> event = std::nullopt) {
        Finding finding{cause, {}, event, 0, 0, {}};
        for (const LedgerKey& key : keys) finding.differences.push_back(std::move(open_.extract(key).mapped()));
        return findings_.emplace_back(std::move(finding));
    }

    void find_nulls_and_duplicates() {
        for (const auto& [key, rows] : Differences(open_)) {
            if (any_null(rows.stored)) {
                take(Cause::null_quantity, {key});
            } else if (rows.stored.size() > std::max<std::size_t>(rows.expected.size(), 1)) {
                take(Cause::duplicate_key, {key});
            }
        }
    }

    /// Rows that no bill makes, where the same key, trimmed, lacks exactly this row's quantities.
    void find_misspelt_keys() {
        pair_misspelt_keys(Cause::blanks_in_key, trimmed);
        pair_misspelt_keys(Cause::width_of_key, look_of);
        pair_misspelt_keys(Cause::wrong_status, without_status);
    }

    template <typename Fold>
    void pair_misspelt_keys(Cause cause, const Fold& fold) {
        std::multimap<LedgerKey, LedgerKey> meant_by_fold;
        std::vector<LedgerKey> without_bill;
        for (const auto& [key, rows] : open_) {
            if (rows.expected.empty()) {
                without_bill.push_back(key);
            } else {
                meant_by_fold.emplace(fold(key), key);
            }
        }
        for (const LedgerKey& key : without_bill) {
            const auto [first, last] = meant_by_fold.equal_range(fold(key));
            const auto meant = std::find_if(first, last, [&](const auto& entry) {
                return open_.at(entry.second).surplus() == -open_.at(key).surplus();
            });
            if (meant == last) continue;
            take(cause, {meant->second, key});
            meant_by_fold.erase(meant);
        }
    }

    /// Marks the savings that a later event reversed; runs backwards, so that each saving meets its own reversal.
    void find_reversed() {
        std::set<std::pair<const BillKind*, Text>> reversed;
        for (std::size_t event = timeline_.events.size(); event-- > 0;) {
            const auto& [action, bill, is_recorded] = timeline_.events[event];
            if (action == BillEvent::Action::reverse) {
                reversed.emplace(bill.kind, bill.id);
            } else {
                is_reversed_[event] = reversed.erase({bill.kind, bill.id}) > 0;
            }
        }
    }

    /// Bills whose movement equals the difference of the rows: whole bills first, then interrupted ones. Ambiguous bills:
    /// prefer one without a history entry, then the latest.
    void find_bills() {
        std::vector<std::size_t> saved;
        for (std::size_t event = 0; event < effects_.size(); ++event) {
            if (timeline_.events[event].action == BillEvent::Action::save) saved.push_back(event);
        }
        for (const std::size_t event : saved) find_whole_bill(event);
        std::ranges::sort(saved, std::greater(),
                          [&](std::size_t event) { return std::pair(!timeline_.events[event].is_recorded, event); });
        for (const std::size_t event : saved) find_cut_off_bill(event);
    }

    void find_whole_bill(std::size_t event) {
        const AmountsByKey all = effects_[event].from(0);
        const bool is_gone = is_reversed_[event];
        if (differs_by(all, -1)) {
            take(is_gone ? Cause::reversed_twice : Cause::not_posted, keys_of(all), event);
        } else if (differs_by(all, +1)) {
            take(is_gone ? Cause::not_reversed : Cause::posted_twice, keys_of(all), event);
        }
    }

    void find_cut_off_bill(std::size_t event) {
        const std::size_t steps = effects_[event].steps.size();
        if (is_reversed_[event]) return;
        for (std::size_t step = 1; step < steps; ++step) {
            const AmountsByKey rest = effects_[event].from(step);
            if (!differs_by(rest, -1)) continue;
            Finding& finding = take(Cause::posted_in_part, keys_of(rest), event);
            finding.steps_there = step;
            finding.steps = steps;
            return;
        }
    }

    /// Whether the surplus of every one of these rows is `sign` times the amounts.
    [[nodiscard]] bool differs_by(const AmountsByKey& amounts, int sign) const {
        return !amounts.empty() && std::ranges::all_of(amounts, [&](const auto& entry) {
            const auto found = open_.find(entry.first);
            return found != open_.end() && found->second.surplus() == (sign < 0 ? -entry.second : entry.second);
        });
    }

    static std::vector<LedgerKey> keys_of(const AmountsByKey& amounts) {
        std::vector<LedgerKey> keys;
        for (const auto& [key, sum] : amounts) keys.push_back(key);
        return keys;
    }

    static Cause cause_by_itself(const Difference& rows) {
        if (rows.expected.empty()) return Cause::extra_row;
        if (rows.stored.empty()) return Cause::missing_row;
        const Amounts stored = sum_of(rows.stored);
        const Amounts expected = sum_of(rows.expected);
        if (!is_balanced(stored) && is_balanced(expected)) return Cause::unbalanced;
        if (stored[2] < 0 && expected[2] >= 0) return Cause::negative_stock;
        return Cause::changed_quantity;
    }

    void order() {
        std::map<Cause, std::size_t> first_of;
        for (const Finding& finding : findings_) {
            const auto [place, is_new] = first_of.emplace(finding.cause, finding.first_event());
            if (!is_new) place->second = std::min(place->second, finding.first_event());
        }
        std::ranges::stable_sort(findings_, {}, [&](const Finding& finding) {
            // What cannot be read puts everything below it in doubt.
            return std::tuple(finding.cause != Cause::unreadable_history, first_of[finding.cause], finding.cause,
                              finding.first_event());
        });
    }

    const BillTimeline& timeline_;
    std::vector<Effect> effects_;    // by event
    std::vector<bool> is_reversed_;  // by event
    Differences rows_;               // of all keys
    Differences open_;               // those that no finding has yet
    std::vector<Finding> findings_;
};

}  // namespace

std::string_view name_of(Cause cause) { return std::ranges::find(names, cause, &CauseName::cause)->name; }

std::optional<Cause> find_cause(std::string_view name) {
    const auto found = std::ranges::find(names, name, &CauseName::name);
    return found == std::end(names) ? std::nullopt : std::optional(found->cause);
}

std::vector<std::string> cause_names() {
    std::vector<std::string> all;
    for (const CauseName& row : names) all.emplace_back(row.name);
    return all;
}

Amounts Difference::surplus() const { return sum_of(stored) - sum_of(expected); }

std::size_t Finding::first_event() const {
    if (event) return *event;
    std::size_t first = past_all_events;
    for (const Difference& rows : differences) {
        if (!rows.events.empty()) first = std::min(first, rows.events.front());
    }
    return first;
}

std::vector<Finding> compare(const std::vector<LedgerEntry>& stored, const Recomputation& expected,
                             const BillTimeline& timeline) {
    return Comparison(stored, expected, timeline).run();
}

LedgerKey look_of(const LedgerKey& key) { return with_changed_parts(trimmed(key), in_usual_width); }

}  // namespace vantlo
