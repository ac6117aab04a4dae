#include "output/verify_json.h"

#include <algorithm>
#include <nlohmann/json.hpp>

#include "automation/calendar.h"
#include "automation/number_text.h"

namespace vantlo {

namespace {

using Json = nlohmann::ordered_json;

constexpr const char* key_names[] = {"warehouse", "goods", "model1", "model2", "status"};
constexpr const char* quantity_names[] = {"received", "issued", "on_hand"};
static_assert(std::size(key_names) == key_columns.size() && std::size(quantity_names) == quantity_columns.size());

struct StateName {
    JournalState state;
    const char* name;
};
constexpr StateName state_names[] = {
    {JournalState::unsupported, "unsupported"}, {JournalState::absent, "absent"}, {JournalState::off, "off"},
    {JournalState::incomplete, "incomplete"},   {JournalState::broken, "broken"}, {JournalState::on, "on"}};

Json text_or_null(const std::optional<Text>& text) { return text ? Json(to_utf8(*text)) : Json(nullptr); }

Json quantity(std::int64_t ten_thousandths) { return Currency::from_ten_thousandths(ten_thousandths).to_double(); }

Json json_of(const Amounts& amounts) {
    Json object;
    for (std::size_t i = 0; i < amounts.size(); ++i) object[quantity_names[i]] = quantity(amounts[i]);
    return object;
}

/// A whole number as such, any other status as its text.
Json status_json(const std::optional<Text>& status) {
    const std::optional<double> number = status ? double_from_text(*status) : std::nullopt;
    const bool is_whole = number && *number == static_cast<double>(static_cast<std::int64_t>(*number));
    return is_whole ? Json(static_cast<std::int64_t>(*number)) : text_or_null(status);
}

Json json_of(const LedgerKey& key) {
    Json object;
    for (std::size_t i = 0; i < key_columns.size(); ++i) {
        object[key_names[i]] = i == status_part ? status_json(key.parts[i]) : text_or_null(key.parts[i]);
    }
    return object;
}

Json json_of(const std::vector<LedgerEntry>& entries) {
    Json rows = Json::array();
    for (const LedgerEntry& entry : entries) {
        Json row;
        for (std::size_t i = 0; i < quantity_columns.size(); ++i) {
            row[quantity_names[i]] = entry.quantities[i] ? quantity(*entry.quantities[i]) : Json(nullptr);
        }
        rows.push_back(std::move(row));
    }
    return rows;
}

Json json_of(const BillName& bill) { return {{"kind", to_utf8(bill.first)}, {"id", to_utf8(bill.second)}}; }

Json json_of(const LooseMovement& movement) {
    Json object;
    object["at"] = movement.moved_at ? Json(to_utf8(format_date_time(*movement.moved_at))) : Json(nullptr);
    object["action"] = to_utf8(movement.action);
    object["user"] = to_utf8(movement.user);
    object["program"] = to_utf8(movement.program);
    object["change"] = json_of(movement.change);
    return object;
}

const char* type_of(const Variant& value) {
    if (value.is<Text>()) return "text";
    return text_or_nothing(value) ? "number" : "binary";
}

Json json_of(const BrokenValue& broken) {
    return {{"table", to_utf8(broken.table)},
            {"row", to_utf8(broken.row)},
            {"column", to_utf8(broken.column)},
            {"type", type_of(broken.value)},
            {"value", text_or_null(text_or_nothing(broken.value))}};
}

class Findings {
public:
    explicit Findings(const BillTimeline& timeline) : timeline_(timeline) {}

    [[nodiscard]] Json json_of_finding(const Finding& finding) const {
        Json object;
        object["cause"] = std::string(name_of(finding.cause));
        object["outside_bills"] = finding.is_outside_bills;
        if (finding.bill || finding.event) object["bill"] = bill_of(finding);
        if (!finding.reason.empty()) object["reason"] = finding.reason;
        if (finding.steps > 0) {
            object["steps_there"] = finding.steps_there;
            object["steps"] = finding.steps;
        }
        if (finding.unit) {
            object["unit"] = {{"goods", to_utf8(finding.unit->goods)},
                              {"unit", to_utf8(finding.unit->unit)},
                              {"factor_then", finding.unit->factor_then},
                              {"factor_now", finding.unit->factor_now}};
            object["bills"] = bills_of(finding.unit_events);
        }
        for (const EditedRow& row : finding.edited) {
            object["edited"].push_back(
                {{"key", json_of(row.key)}, {"moved", json_of(row.moved)}, {"says", json_of(row.says)}});
        }
        for (const BrokenValue& value : finding.broken) object["broken"].push_back(json_of(value));
        object["rows"] = Json::array();
        for (const Difference& rows : finding.differences) object["rows"].push_back(json_of_rows(rows));
        return object;
    }

private:
    [[nodiscard]] Json bill_of(const Finding& finding) const {
        return json_of(finding.bill ? *finding.bill : name_of(timeline_.events[*finding.event].bill));
    }

    [[nodiscard]] Json bills_of(const std::vector<std::size_t>& events) const {
        Json bills = Json::array();
        for (const std::size_t event : events) {
            Json bill = json_of(name_of(timeline_.events[event].bill));
            bill["taken_back"] = timeline_.events[event].action == BillEvent::Action::reverse;
            bills.push_back(std::move(bill));
        }
        return bills;
    }

    [[nodiscard]] Json json_of_rows(const Difference& rows) const {
        Json movements = Json::array();
        for (const LooseMovement& movement : rows.loose.latest) movements.push_back(json_of(movement));
        return {{"key", json_of(rows.key)},
                {"ledger", json_of(rows.stored)},
                {"by_bills", json_of(rows.expected)},
                {"touched_by", bills_of(rows.events)},
                {"movements_without_bill", std::move(movements)},
                {"has_earlier_movements", rows.loose.has_earlier}};
    }

    const BillTimeline& timeline_;
};

}  // namespace

std::string verify_json(const Verification& verification) {
    Json object;
    object["agrees"] = verification.findings.empty();
    object["ledger_rows"] = verification.stored.size();
    object["journal"] = std::ranges::find(state_names, verification.movements.state, &StateName::state)->name;
    object["compares_movements"] = verification.uses_journal;
    object["all_bills_named"] = verification.are_all_bills_named;
    object["findings"] = Json::array();
    const Findings findings(verification.timeline);
    for (const Finding& finding : verification.findings)
        object["findings"].push_back(findings.json_of_finding(finding));
    object["notes"] = Json::array();
    for (const Note& note : notes_of(verification)) {
        const std::string remark(name_of(note.remark));
        Json& notes = object["notes"];
        if (notes.empty() || notes.back()["remark"] != remark)
            notes.push_back({{"remark", remark}, {"subjects", Json::array()}});
        notes.back()["subjects"].push_back(note.subject);
    }
    return object.dump(2, ' ', false, Json::error_handler_t::replace) + "\n";
}

}  // namespace vantlo
