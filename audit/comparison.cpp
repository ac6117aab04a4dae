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
    {Cause::broken_value, "broken-value"},
    {Cause::cannot_judge, "cannot-judge"},
    {Cause::unit_factor, "unit-factor"},
    {Cause::edited_bill, "edited-bill"},
    {Cause::deleted_bill, "deleted-bill"},
    {Cause::not_posted, "not-posted"},
    {Cause::posted_in_part, "posted-in-part"},
    {Cause::posted_twice, "posted-twice"},
    {Cause::not_reversed, "not-taken-back"},
    {Cause::reversed_twice, "taken-back-twice"},
    {Cause::not_in_journal, "not-in-journal"},
    {Cause::changed_outside, "changed-outside"},
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

bool any_broken(const std::vector<LedgerEntry>& entries) {
    return std::ranges::any_of(entries, [](const LedgerEntry& entry) { return !entry.broken.empty(); });
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

Amounts at(const AmountsByKey& amounts, const LedgerKey& key) {
    const auto found = amounts.find(key);
    return found == amounts.end() ? Amounts{} : found->second;
}

/// The texts of a bill's header and lines that may be warehouses or goods, by the names of their columns.
bool has_any(const Bill& bill, std::initializer_list<TextView> columns, const std::optional<Text>& wanted) {
    if (!wanted) return true;
    const auto holds = [&](const Record& record) {
        return std::ranges::any_of(columns, [&](TextView column) {
            const Variant* const value = record.find(column);
            if (value == nullptr) return false;
            const std::optional<Text> text = text_or_nothing(*value);
            return !text || trim_blanks(*text) == trim_blanks(*wanted);  // of a broken one nothing is known
        });
    };
    return holds(bill.header) || std::ranges::any_of(bill.lines, holds);
}

/// Whether a bill can have to do with a row, as far as its warehouses and goods tell.
bool may_touch(const Bill& bill, const LedgerKey& key) {
    return has_any(bill, {u"Gid"}, key.parts[1]) &&
           has_any(bill, {u"Receiver", u"Supplier", u"WID", u"StatusWID", u"WareHouseID"}, key.parts[0]);
}

/// What the movements of a bill can show, what puts most in doubt first.
constexpr Cause causes_of_accounts[] = {Cause::cannot_judge,  Cause::deleted_bill, Cause::edited_bill,
                                        Cause::not_posted,    Cause::posted_twice, Cause::not_reversed,
                                        Cause::reversed_twice};

class Comparison {
public:
    explicit Comparison(const Witnesses& witnesses)
        : timeline_(witnesses.timeline),
          refusals_(witnesses.expected.refusals),
          movements_(witnesses.movements),
          are_all_bills_named_(witnesses.are_all_bills_named),
          effects_(effects_of(witnesses.expected, timeline_.events.size())),
          is_reversed_(timeline_.events.size()) {
        for (const LedgerEntry& entry : witnesses.stored) {
            if (entry.has_no_key()) {
                for (const BrokenValue& value : entry.broken) add_broken(value);
            } else {
                rows_[entry.key].stored.push_back(entry);
            }
        }
        for (const LedgerEntry& entry : witnesses.expected.rows) rows_[entry.key].expected.push_back(entry);
        for (const PostingStep& step : witnesses.expected.steps) {
            std::vector<std::size_t>& events = rows_[witnesses.expected.rows[step.row].key].events;
            if (events.empty() || events.back() != step.event) events.push_back(step.event);
        }
        for (auto& [key, rows] : rows_) {
            rows.key = key;
            if (agree(rows)) continue;
            open_.emplace(key, rows);
            differing_.insert(key);
        }
        find_reversed();
        for (const BillTrace& entry : timeline_.unreadable) {
            const std::string bill = to_utf8(entry.bill.first + u" " + entry.bill.second);
            findings_.push_back({Cause::unreadable_history, {}, {}, 0, 0, bill + " " + entry.reason});
        }
        for (const auto& [event, reason] : refusals_)
            findings_.push_back({Cause::refused_bill, {}, event, 0, 0, reason});
        for (const BrokenValue& value : witnesses.timeline.broken) add_broken(value);
        for (const BrokenValue& value : witnesses.broken_units) add_broken(value);
        if (movements_ == nullptr) return;
        for (const auto& [place, account] : bill_accounts(timeline_, effects_, *movements_)) {
            AmountsByKey surplus = account.surplus();
            for (const auto& [key, amounts] : surplus) moved_by_bills_.insert(key);
            if (!account.moved.empty()) movers_.insert(account.events.begin(), account.events.end());
            if (surplus.empty()) continue;
            const std::optional<Cause> cause = cause_of(account);
            if (cause) unsettled_.push_back({*cause, account, std::move(surplus)});
        }
        std::ranges::stable_sort(unsettled_, std::greater(), [](const Unsettled& bill) {
            return bill.account.events.empty() ? past_all_events : bill.account.events.back();
        });
    }

    Compared run() {
        Compared compared;
        if (movements_ != nullptr && movements_->state == JournalState::on) compared.unjournaled = find_unjournaled();
        find_nulls_and_duplicates();
        for (const Cause cause : causes_of_accounts) find_by_accounts(cause);
        find_rows_of_refused_bills();
        find_misspelt_keys();
        find_bills();
        for (const auto& [key, rows] : Differences(open_)) {
            Finding& finding = take(cause_by_itself(rows), {key});
            for (const LedgerEntry& entry : rows.stored) {
                finding.broken.insert(finding.broken.end(), entry.broken.begin(), entry.broken.end());
            }
            if (!finding.broken.empty()) finding.cause = Cause::broken_value;
        }
        for (Finding& finding : findings_) judge(finding);
        order();
        compared.findings = std::move(findings_);
        return compared;
    }

private:
    /// A bill that moved something else than it says.
    struct Unsettled {
        Cause cause;
        BillAccount account;
        AmountsByKey surplus;
    };

    void add_broken(const BrokenValue& value) {
        Finding finding{Cause::broken_value, {}, {}, 0, 0, {}};
        finding.broken.push_back(value);
        findings_.push_back(std::move(finding));
    }

    /// Moves the differences of these keys into a finding.
    Finding& take(Cause cause, const std::vector<LedgerKey>& keys, std::optional<std::size_t> event = std::nullopt) {
        Finding finding{cause, {}, event, 0, 0, {}};
        for (const LedgerKey& key : keys) finding.differences.push_back(std::move(open_.extract(key).mapped()));
        return findings_.emplace_back(std::move(finding));
    }

    void find_nulls_and_duplicates() {
        for (const auto& [key, rows] : Differences(open_)) {
            if (any_broken(rows.stored)) continue;
            if (any_null(rows.stored)) {
                take(Cause::null_quantity, {key});
            } else if (rows.stored.size() > std::max<std::size_t>(rows.expected.size(), 1)) {
                take(Cause::duplicate_key, {key});
            }
        }
    }

    /// What is wrong with a bill, by what it moved; nothing if the movements alone do not tell.
    std::optional<Cause> cause_of(const BillAccount& account) const {
        const auto is_refused = [&](std::size_t event) {
            return std::ranges::count(refusals_, event, &Recomputation::Refusal::event) > 0;
        };
        if (std::ranges::any_of(account.events, is_refused)) return Cause::cannot_judge;
        if (account.events.empty()) {
            const auto has_id = [&](const BillTrace& trace) { return trace.bill.second == account.name.second; };
            return std::ranges::any_of(timeline_.unknown_kind, has_id) ? Cause::edited_bill : Cause::deleted_bill;
        }
        if (account.moved.empty())
            return is_moved_by_bills_alone(account) ? std::optional(Cause::not_posted) : std::nullopt;
        const std::size_t last = account.events.back();
        const bool is_there = timeline_.events[last].action == BillEvent::Action::save;
        if (is_there && account.events.size() == 1) {
            const AmountsByKey twice = [&] {
                AmountsByKey amounts = account.says;
                for (auto& [key, sum] : amounts) sum = sum + sum;
                return amounts;
            }();
            // A factor that was halved looks the same but for the number of movements.
            const bool is_twice = account.moved == twice && account.movements > effects_[last].steps.size();
            return is_twice ? Cause::posted_twice : Cause::edited_bill;
        }
        if (is_there) return Cause::edited_bill;
        AmountsByKey back;  // what a second taking back would have moved
        for (const auto& [key, amounts] : effects_[last].from(0)) back.emplace(key, amounts);
        if (account.moved == back) return Cause::reversed_twice;
        for (auto& [key, amounts] : back) amounts = -amounts;
        return account.moved == back ? Cause::not_reversed : Cause::edited_bill;
    }

    /// Whether nothing else than bills has changed the rows of a bill that moved nothing.
    [[nodiscard]] bool is_moved_by_bills_alone(const BillAccount& account) const {
        return std::ranges::none_of(account.says, [&](const auto& entry) {
            const LedgerKey& key = entry.first;
            return at(movements_->loose, key) != Amounts{} || at(movements_->gap, key) != Amounts{} ||
                   past_triggers(key) != Amounts{};
        });
    }

    /// What the ledger has that its movements do not.
    [[nodiscard]] Amounts past_triggers(const LedgerKey& key) const {
        const auto rows = rows_.find(key);
        const Amounts stored = rows == rows_.end() ? Amounts{} : sum_of(rows->second.stored);
        return stored - at(movements_->all, key);
    }

    std::vector<LedgerKey> find_unjournaled() const {
        std::vector<LedgerKey> keys;
        for (const auto& [key, rows] : rows_) {
            if (!open_.contains(key) && past_triggers(key) != Amounts{}) keys.push_back(key);
        }
        return keys;
    }

    /// Finds the bills of that cause, the latest first. A key of several goes to the first.
    void find_by_accounts(Cause cause) {
        for (const auto& [own_cause, account, surplus] : unsettled_) {
            if (own_cause != cause) continue;
            std::vector<LedgerKey> keys;
            bool has_difference = false;
            for (const auto& [key, amounts] : surplus) {
                if (open_.contains(key)) keys.push_back(key);
                has_difference = has_difference || differing_.contains(key);
            }
            if (!has_difference) continue;
            Finding& finding = take(cause, keys);
            finding.bill = account.name;
            if (!account.events.empty()) finding.event = account.events.back();
            for (const auto& [key, amounts] : surplus) {
                finding.edited.push_back({key, at(account.moved, key), at(account.says, key)});
            }
        }
    }

    /// Without a journal a bill that cannot be posted tells its rows by its warehouses and goods alone.
    void find_rows_of_refused_bills() {
        for (const auto& [event, reason] : refusals_) {
            if (movers_.contains(event)) continue;
            std::vector<LedgerKey> keys;
            for (const auto& [key, rows] : open_) {
                if (may_touch(timeline_.events[event].bill, key)) keys.push_back(key);
            }
            if (!keys.empty()) take(Cause::cannot_judge, keys, event);
        }
    }

    /// Says whether the journal shows that no bill changed the rows, and gives what it shows its name.
    void judge(Finding& finding) {
        if (finding.differences.empty() || movements_ == nullptr) return;
        if (movements_->state != JournalState::on || !finding.broken.empty()) return;
        finding.is_outside_bills = std::ranges::all_of(finding.differences, [&](const Difference& rows) {
            return !moved_by_bills_.contains(rows.key) && at(movements_->gap, rows.key) == Amounts{} &&
                   (are_all_bills_named_ || at(movements_->loose, rows.key) == Amounts{});
        });
        const bool has_own_name = finding.cause < Cause::unbalanced || finding.cause == Cause::negative_stock;
        if (!finding.is_outside_bills || has_own_name) return;
        const bool is_past_triggers = std::ranges::any_of(
            finding.differences, [&](const Difference& rows) { return past_triggers(rows.key) != Amounts{}; });
        finding.cause = is_past_triggers ? Cause::not_in_journal : Cause::changed_outside;
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
            const Bill& bill = timeline_.events[event].bill;
            if (timeline_.events[event].action == BillEvent::Action::reverse) {
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
        std::ranges::sort(saved, std::greater(),
                          [&](std::size_t event) { return std::pair(!timeline_.events[event].is_recorded, event); });
        for (const std::size_t event : saved) find_whole_bill(event);
        for (const std::size_t event : saved) find_cut_off_bill(event);
    }

    void find_whole_bill(std::size_t event) {
        const AmountsByKey all = effects_[event].from(0);
        const bool is_gone = is_reversed_[event];
        if (differs_by(all, -1)) {
            if (!is_gone && movers_.contains(event)) return;  // it was posted, by the journal
            take(is_gone ? Cause::reversed_twice : Cause::not_posted, keys_of(all), event);
        } else if (differs_by(all, +1)) {
            take(is_gone ? Cause::not_reversed : Cause::posted_twice, keys_of(all), event);
        }
    }

    void find_cut_off_bill(std::size_t event) {
        const std::size_t steps = effects_[event].steps.size();
        if (is_reversed_[event] || movers_.contains(event)) return;
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
            const bool is_doubtful = finding.cause == Cause::unreadable_history || finding.cause == Cause::broken_value;
            return std::tuple(!is_doubtful, is_doubtful ? std::size_t{0} : first_of[finding.cause], finding.cause,
                              finding.first_event());
        });
    }

    const BillTimeline& timeline_;
    const std::vector<Recomputation::Refusal>& refusals_;
    const Movements* movements_;
    bool are_all_bills_named_;
    std::vector<Effect> effects_;  // by event
    std::vector<Unsettled> unsettled_;
    std::set<LedgerKey> moved_by_bills_;  // what bills moved there is not what they say
    std::set<std::size_t> movers_;        // the events of bills that movements name
    std::vector<bool> is_reversed_;       // by event
    Differences rows_;                    // of all keys
    Differences open_;                    // those that no finding has yet
    std::set<LedgerKey> differing_;       // all that were open at first
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

Compared compare(const Witnesses& witnesses) { return Comparison(witnesses).run(); }

LedgerKey look_of(const LedgerKey& key) { return with_changed_parts(trimmed(key), in_usual_width); }

}  // namespace vantlo
