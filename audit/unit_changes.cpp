#include "audit/unit_changes.h"

#include <algorithm>
#include <cmath>
#include <set>

namespace vantlo {

namespace {

/// Goods and one of their units.
using GoodsUnit = std::pair<Text, Text>;

std::map<GoodsUnit, double> read_factors(NativeConnection& database) {
    std::map<GoodsUnit, double> factors;
    const RecordsetVariable rows = database.execute(u"select id,Unit,UnitConverter from GoodsUnit");
    for (; !rows->eof(); rows->move_next()) {
        const std::optional<Text> goods = text_or_nothing(rows->field(u"id"));
        const std::optional<Text> unit = text_or_nothing(rows->field(u"Unit"));
        const Variant factor = rows->field(u"UnitConverter");
        if (!goods || !unit || factor.is<Null>() || !is_of_type(factor, ColumnType::single)) continue;
        factors.emplace(GoodsUnit{*goods, *unit}, to_double(factor));
    }
    return factors;
}

constexpr TextView quantity_fields[] = {u"Actualqty", u"Qty", u"UQty"};

/// What a header or line is counted in; nothing where it does not tell.
std::optional<GoodsUnit> unit_of(const Record& record) {
    const Variant* const goods = record.find(u"Gid");
    const Variant* const unit = record.find(u"Unit");
    if (goods == nullptr || unit == nullptr) return std::nullopt;
    const std::optional<Text> goods_text = text_or_nothing(*goods);
    const std::optional<Text> unit_text = text_or_nothing(*unit);
    if (!goods_text || !unit_text) return std::nullopt;
    return GoodsUnit{trim_blanks(*goods_text), trim_blanks(*unit_text)};
}

/// What a bill's lines are counted in, and the main item of its header.
std::set<GoodsUnit> units_of(const Bill& bill) {
    std::set<GoodsUnit> units;
    const auto add = [&](const Record& record) {
        if (std::optional<GoodsUnit> unit = unit_of(record)) units.insert(*std::move(unit));
    };
    add(bill.header);
    for (const Record& line : bill.lines) add(line);
    return units;
}

/// A number with as few decimals as the error allows.
struct Rounded {
    double number;
    int decimals;
};

Rounded roundest(double number, double error) {
    double scale = 1;
    for (int decimals = 0; decimals <= 6; ++decimals, scale *= 10) {
        const double rounded = std::round(number * scale) / scale;
        if (std::abs(rounded - number) <= error) return {rounded, decimals};
    }
    return {number, 7};
}

/// What a bill's lines in one unit add up to, without signs, and how many they are.
struct Lines {
    double quantity = 0;
    std::size_t count = 0;
};

Lines lines_in(const Bill& bill, const GoodsUnit& unit) {
    Lines lines;
    const auto add = [&](const Record& record) {
        if (unit_of(record) != unit) return;
        for (const Record::Field& field : record.fields()) {
            const bool is_quantity = std::ranges::any_of(
                quantity_fields, [&](TextView name) { return equal_ignoring_case(name, field.column); });
            if (!is_quantity || field.value.is<Null>() || !is_of_type(field.value, ColumnType::single)) continue;
            lines.quantity += std::abs(to_double(field.value));
            ++lines.count;
            return;
        }
    };
    add(bill.header);
    for (const Record& line : bill.lines) add(line);
    return lines;
}

constexpr double quantum = 0.0001;  // of the ledger's quantities

class UnitChanges {
public:
    UnitChanges(NativeConnection& database, Verification& verification, Language language)
        : database_(database), verification_(verification), language_(language), factors_(read_factors(database)) {
        for (std::size_t i = 0; i < verification.findings.size(); ++i) {
            const Finding& finding = verification.findings[i];
            if (finding.cause != Cause::edited_bill || !finding.event) continue;
            if (const auto saved = saved_once(*finding.event)) {
                edited_.push_back({i, *saved, units_of(verification.timeline.events[*saved].bill)});
            }
        }
    }

    void find() {
        if (edited_.empty()) return;
        now_ = effects_of(verification_.expected, verification_.timeline.events.size());
        for (const EditedBill& bill : edited_) suppose(bill);
        // Each round drops a unit that a bill speaks against.
        while (!then_.empty()) {
            const std::vector<bool> is_explained = explained_bills();
            std::set<GoodsUnit> refuted;
            for (std::size_t i = 0; i < edited_.size(); ++i) {
                if (!is_explained[i]) refuted.insert(edited_[i].units.begin(), edited_[i].units.end());
            }
            if (std::erase_if(then_, [&](const auto& unit) { return refuted.contains(unit.first); }) == 0) break;
        }
        if (!then_.empty()) regroup();
    }

private:
    struct EditedBill {
        std::size_t finding;
        std::size_t saved;  ///< the event that posted it; that of the finding is its taking back, if it was taken back
        std::set<GoodsUnit> units;
    };

    [[nodiscard]] const Finding& finding_of(const EditedBill& bill) const {
        return verification_.findings[bill.finding];
    }

    /// The event that saved the bill whose last event is this, if it was saved once, and taken back at most once.
    [[nodiscard]] std::optional<std::size_t> saved_once(std::size_t last) const {
        const std::vector<BillEvent>& events = verification_.timeline.events;
        const BillName name = name_of(events[last].bill);
        std::vector<std::size_t> of_bill;
        for (std::size_t i = 0; i < events.size(); ++i) {
            if (name_of(events[i].bill) == name) of_bill.push_back(i);
        }
        const bool is_saved_first = events[of_bill.front()].action == BillEvent::Action::save;
        const bool is_taken_back = of_bill.size() == 2 && events[last].action == BillEvent::Action::reverse;
        return is_saved_first && (of_bill.size() == 1 || is_taken_back) ? std::optional(of_bill.front()) : std::nullopt;
    }

    [[nodiscard]] bool is_taken_back(const EditedBill& bill) const { return bill.saved != *finding_of(bill).event; }

    /// What posting the bill moved in a row that differs: of one taken back, the rest of what it moved in all.
    [[nodiscard]] Amounts moved_when_posted(const EditedBill& bill, const EditedRow& row) const {
        if (!is_taken_back(bill)) return row.moved;
        const AmountsByKey taken_back = now_[*finding_of(bill).event].from(0);
        const auto found = taken_back.find(row.key);
        return found == taken_back.end() ? row.moved : row.moved - found->second;
    }

    /// What posting it would move now.
    [[nodiscard]] Amounts would_move(const EditedBill& bill, const EditedRow& row) const {
        const AmountsByKey posted = now_[bill.saved].from(0);
        const auto found = posted.find(row.key);
        return found == posted.end() ? Amounts{} : found->second;
    }

    /// A unit that is not stored, and a factor of 0, count as 1.
    [[nodiscard]] double factor_now(const GoodsUnit& unit) const {
        const auto found = factors_.find(unit);
        return found == factors_.end() || found->second == 0 ? 1 : found->second;
    }

    void suppose(const EditedBill& bill) {
        for (const GoodsUnit& unit : bill.units) {
            if (unit.second.empty() || then_.contains(unit)) continue;
            const auto row = std::ranges::find_if(
                finding_of(bill).edited, [&](const EditedRow& edited) { return edited.key.parts[1] == unit.first; });
            if (row == finding_of(bill).edited.end()) continue;
            const std::optional<Rounded> then = factor_then(bill, *row, unit);
            if (then && then->number != factor_now(unit) && is_likely(bill, *row, unit, *then))
                then_.emplace(unit, then->number);
        }
    }

    [[nodiscard]] const Bill& bill_of(const EditedBill& bill) const {
        return verification_.timeline.events[bill.saved].bill;
    }

    /// The factor under which a bill would have moved what it did in a row; nothing where the row does not tell.
    [[nodiscard]] std::optional<Rounded> factor_then(const EditedBill& bill, const EditedRow& row,
                                                     const GoodsUnit& unit) const {
        const double moved = largest(moved_when_posted(bill, row));
        const double says = largest(would_move(bill, row));
        if (moved == 0) return std::nullopt;
        const double now = factor_now(unit);
        if (says != 0) return roundest(now * moved / says, now * quantum / says * (1 + moved / says));
        const double quantity = lines_in(bill_of(bill), unit).quantity;  // a broken factor moves nothing
        if (quantity == 0) return std::nullopt;
        return roundest(moved / quantity, quantum / quantity);
    }

    /// One line alone is rather a unit's change than an edited quantity if the factor is the rounder number of the two, and
    /// if no other bill in the unit is as it was. Those saved since a bill was taken back are.
    [[nodiscard]] bool is_likely(const EditedBill& bill, const EditedRow& row, const GoodsUnit& unit,
                                 const Rounded& then) const {
        std::size_t lines = 0;
        for (const EditedBill& other : edited_) lines += lines_in(bill_of(other), unit).count;
        if (lines > 1) return true;
        const bool has_others =
            !is_taken_back(bill) && std::ranges::any_of(verification_.timeline.events, [&](const BillEvent& event) {
                return name_of(event.bill) != name_of(bill_of(bill)) && lines_in(event.bill, unit).count > 0;
            });
        const double now = factor_now(unit);
        return !has_others &&
               then.decimals < roundest(largest(moved_when_posted(bill, row)) / now, quantum / now).decimals;
    }

    static double largest(const Amounts& amounts) {
        std::int64_t found = 0;
        for (const std::int64_t amount : amounts) found = std::max(found, std::abs(amount));
        return static_cast<double>(found) * quantum;
    }

    /// Which of the bills would have moved what they did, had the supposed factors been there.
    [[nodiscard]] std::vector<bool> explained_bills() const {
        BillTimeline timeline;
        std::vector<UnitFactor> factors;
        for (const EditedBill& bill : edited_) {
            timeline.events.push_back(verification_.timeline.events[bill.saved]);
        }
        for (const auto& [unit, factor] : then_) factors.push_back({unit.first, unit.second, factor});
        const Recomputation posted =
            recompute(database_, timeline, language_, verification_.movements.opening, factors);
        const std::vector<Effect> then = effects_of(posted, edited_.size());
        std::vector<bool> is_explained;
        for (std::size_t i = 0; i < edited_.size(); ++i) {
            AmountsByKey moved = now_[edited_[i].saved].from(0);
            for (const EditedRow& row : finding_of(edited_[i]).edited)
                moved.insert_or_assign(row.key, moved_when_posted(edited_[i], row));
            std::erase_if(moved, [](const auto& entry) { return entry.second == Amounts{}; });
            is_explained.push_back(then[i].from(0) == moved);
        }
        return is_explained;
    }

    /// Puts the findings of all bills of one unit together.
    void regroup() {
        std::map<GoodsUnit, Finding> of_units;
        std::set<std::size_t> taken;
        for (const EditedBill& bill : edited_) {
            const auto unit = std::ranges::find_if(bill.units, [&](const GoodsUnit& u) { return then_.contains(u); });
            if (unit == bill.units.end()) continue;
            Finding& own = verification_.findings[bill.finding];
            Finding& of_unit = of_units.emplace(*unit, Finding{Cause::unit_factor, {}, {}, 0, 0, {}}).first->second;
            of_unit.unit = {unit->first, unit->second, then_.at(*unit), factor_now(*unit)};
            of_unit.unit_events.push_back(*own.event);
            std::ranges::move(own.differences, std::back_inserter(of_unit.differences));
            taken.insert(bill.finding);
        }
        std::vector<Finding> findings;
        for (auto& [unit, finding] : of_units) {
            std::ranges::sort(finding.unit_events);
            std::ranges::sort(finding.differences, {}, &Difference::key);
            findings.push_back(std::move(finding));
        }
        for (std::size_t i = 0; i < verification_.findings.size(); ++i) {
            if (!taken.contains(i)) findings.push_back(std::move(verification_.findings[i]));
        }
        verification_.findings = std::move(findings);
    }

    NativeConnection& database_;
    Verification& verification_;
    Language language_;
    std::map<GoodsUnit, double> factors_;
    std::vector<Effect> now_;  ///< of each event, with the factors as they are
    std::vector<EditedBill> edited_;
    std::map<GoodsUnit, double> then_;
};

}  // namespace

void find_unit_changes(NativeConnection& database, Verification& verification, Language language) {
    UnitChanges(database, verification, language).find();
}

}  // namespace vantlo
