#include "tool/output/verify_report.h"

#include <fmt/format.h>

#include <algorithm>

#include "automation/number_text.h"
#include "tool/output/words.h"

namespace vantlo {

namespace words {

// clang-format off
constexpr Message ledger_agrees  = {"台账与单据相符：单据 {} 张，台账 {} 行。",
                                           "The ledger agrees with the bills: {:bill|bills}, {:ledger row|ledger rows}."};
constexpr Message no_bills_known = {"没有单据参加核对：不知道怎样读取单据表（见 vantlo adopt --propose）。台账只与库存流水比较；下面的“单据”是指流水。",
                                           "No bill takes part: how the bill tables are read is not known (see vantlo adopt --propose). The ledger is compared\nwith its movements alone; what follows calls them bills."};
constexpr Message ledger_differs = {"台账与单据不符：原因 {} 种，{} 处，台账 {} 行。",
                                           "The ledger differs from the bills: causes {}, cases {}, ledger rows {}."};
constexpr Message stored_row     = {"台账", "ledger"};
constexpr Message expected_row   = {"单据", "bills "};
constexpr Message no_row         = {"无此行", "no such row"};
constexpr Message amounts        = {"收入 {}  发出 {}  结存 {}", "received {}  issued {}  on hand {}"};
constexpr Message null_amount    = {"空", "null"};
constexpr Message touched_by     = {"涉及单据：", "touched by "};
constexpr Message more_bills     = {" 等 {} 张", " and others, {} in all"};
constexpr Message no_bills       = {"没有单据", "no bill"};
constexpr Message took_back      = {"（冲回）", " (taken back)"};
constexpr Message notes_follow   = {"另请留意（不算不符）：", "Worth a look, though ledger and bills agree in it:"};
constexpr Message more_of_them   = {"……共 {} 处", "... {} in all"};
constexpr Message steps_there    = {"前 {} 步已过账，共 {} 步", "the first {} of {} statements are there"};
// clang-format on

}  // namespace words

namespace {

struct CauseRow {
    Cause cause;
    Message wording;
};

// clang-format off
constexpr CauseRow causes[] = {
    {Cause::unreadable_history, {"历史记录无法读取",               "The history cannot be read"}},
    {Cause::refused_bill,     {"单据无法过账",                     "A bill cannot be posted"}},
    {Cause::not_posted,       {"单据未过账",                       "A stored bill is not posted"}},
    {Cause::posted_in_part,   {"单据只过账了一部分",               "A bill is posted in part"}},
    {Cause::posted_twice,     {"单据过账了两次",                   "A bill is posted twice"}},
    {Cause::not_reversed,     {"单据已冲回，台账仍含其数量",       "A bill was taken back, but its posting is there still"}},
    {Cause::reversed_twice,   {"单据冲回了两次",                   "A bill is taken back twice"}},
    {Cause::null_quantity,    {"数量为空",                         "A quantity is null"}},
    {Cause::duplicate_key,    {"同一键有多行",                     "Several rows have one key"}},
    {Cause::blanks_in_key,    {"键的首尾有空白",                   "A key has blanks around it"}},
    {Cause::width_of_key,     {"键的全角半角不同",                 "A key is written in another width"}},
    {Cause::wrong_status,     {"状态有误",                         "A row has the wrong status"}},
    {Cause::unbalanced,       {"收入减发出不等于结存",             "Received less issued is not on hand"}},
    {Cause::negative_stock,   {"结存为负，单据并非如此",           "Stock is negative, by the bills it is not"}},
    {Cause::missing_row,      {"台账缺行",                         "A row is missing"}},
    {Cause::extra_row,        {"台账多行，没有单据",               "A row has no bill"}},
    {Cause::changed_quantity, {"数量与单据不符",                   "A quantity is not what the bills say"}},
};

struct RemarkRow {
    Remark remark;
    Message wording;
};
constexpr RemarkRow remarks[] = {
    {Remark::negative_by_bills,    {"结存为负，单据如此",                     "Stock is negative, as the bills say"}},
    {Remark::unbalanced_by_design, {"收入减发出不等于结存，过账方法如此",     "Received less issued is not on hand, as the postings have it"}},
    {Remark::several_by_design,    {"同一键有多行，单据的键含空值",           "Several rows have one key, as bills with a null in it make them"}},
    {Remark::keys_look_alike,      {"单据把同一键写成了两种样子",             "Bills write keys that look the same in two ways"}},
    {Remark::lost_bill,            {"历史中有此单据，单据表中没有",           "The history knows a bill that is stored nowhere"}},
    {Remark::unknown_kind,         {"单据种类不明，未核对",                   "The kind of a bill is unknown, it is not compared"}},
    {Remark::headless_lines,       {"有行而无单据头，未核对",                 "Lines have no header, they are not compared"}},
    {Remark::empty_literal,        {"列的数值写不进语句，过账会失败",         "A column's values cannot be written into statements: postings fail"}},
    {Remark::loses_digits,         {"列存不下四位小数",                       "A column does not keep four decimals"}},
    {Remark::loses_characters,     {"列存不下汉字",                           "A column does not keep Chinese characters"}},
};
// clang-format on

class Report {
public:
    Report(const BillTimeline& timeline, Language language) : timeline_(timeline), language_(language) {}

    std::string text(const std::vector<Finding>& findings, std::size_t ledger_rows) {
        if (findings.empty()) {
            const auto saved = std::ranges::count(timeline_.events, BillEvent::Action::save, &BillEvent::action);
            const auto gone = static_cast<std::ptrdiff_t>(timeline_.events.size()) - saved;
            return say(language_, words::ledger_agrees, Count(saved - gone), Count(ledger_rows)) + "\n";
        }
        std::size_t number = 0;
        for (auto first = findings.begin(); first != findings.end();) {
            const auto last =
                std::find_if(first, findings.end(), [&](const Finding& f) { return f.cause != first->cause; });
            text_ += fmt::format("\n{}. {} ({})\n", ++number, cause_text(first->cause, language_), last - first);
            for (; first != last; ++first) add(*first);
        }
        return say(language_, words::ledger_differs, number, findings.size(), ledger_rows) + "\n" + text_;
    }

private:
    void add(const Finding& finding) {
        if (finding.event) {
            text_ += "   " + bill(*finding.event);
            if (finding.cause == Cause::posted_in_part) {
                text_ += "  " + say(language_, words::steps_there, finding.steps_there, finding.steps);
            }
            text_ += "\n";
        }
        if (!finding.reason.empty()) text_ += "     " + finding.reason + "\n";
        for (const Difference& rows : finding.differences) add(rows);
    }

    void add(const Difference& rows) {
        text_ += "   " + to_utf8(condition_of(rows.key)) + "\n";
        add(words::stored_row, rows.stored);
        add(words::expected_row, rows.expected);
        text_ += "     " + touches(rows.events) + "\n";
    }

    void add(const Message& name, const std::vector<LedgerEntry>& entries) {
        if (entries.empty()) text_ += fmt::format("     {}  {}\n", name.in(language_), words::no_row.in(language_));
        for (const LedgerEntry& entry : entries) {
            const auto shown = [&](std::size_t column) {
                const std::optional<std::int64_t>& quantity = entry.quantities[column];
                if (!quantity) return std::string(words::null_amount.in(language_));
                return to_utf8(number_text(Currency::from_ten_thousandths(*quantity)));
            };
            text_ += fmt::format("     {}  {}\n", name.in(language_),
                                 say(language_, words::amounts, shown(0), shown(1), shown(2)));
        }
    }

    [[nodiscard]] std::string touches(const std::vector<std::size_t>& events) const {
        constexpr std::size_t shown_at_most = 6;
        if (events.empty()) return std::string(words::no_bills.in(language_));
        std::string names;
        for (std::size_t i = 0; i < std::min(events.size(), shown_at_most); ++i) {
            names += (i == 0 ? "" : ", ") + bill(events[i]);
        }
        if (events.size() > shown_at_most) names += say(language_, words::more_bills, events.size());
        return std::string(words::touched_by.in(language_)) + names;
    }

    [[nodiscard]] std::string bill(std::size_t event) const {
        const auto& [action, bill, is_recorded] = timeline_.events[event];
        const std::string name = fmt::format("{} {}", bill.kind->name, to_utf8(bill.id));
        return action == BillEvent::Action::save ? name : name + std::string(words::took_back.in(language_));
    }

    const BillTimeline& timeline_;
    Language language_;
    std::string text_;
};

}  // namespace

std::string report_of(const std::vector<Finding>& findings, const BillTimeline& timeline, std::size_t ledger_rows,
                      Language language) {
    const std::string report = Report(timeline, language).text(findings, ledger_rows);
    return timeline.has_bills ? report : say(language, words::no_bills_known) + "\n" + report;
}

std::string report_of(const std::vector<Note>& notes, Language language) {
    constexpr std::ptrdiff_t shown_at_most = 10;
    if (notes.empty()) return {};
    std::string text = fmt::format("\n{}\n", words::notes_follow.in(language));
    for (auto first = notes.begin(); first != notes.end();) {
        const auto last =
            std::find_if(first, notes.end(), [&](const Note& note) { return note.remark != first->remark; });
        text +=
            fmt::format("   {}\n", std::ranges::find(remarks, first->remark, &RemarkRow::remark)->wording.in(language));
        const auto count = last - first;
        for (auto note = first; note != first + std::min(count, shown_at_most); ++note) {
            text += "     " + note->subject + "\n";
        }
        if (count > shown_at_most) text += "     " + say(language, words::more_of_them, count) + "\n";
        first = last;
    }
    return text;
}

std::string cause_text(Cause cause, Language language) {
    return std::string(std::ranges::find(causes, cause, &CauseRow::cause)->wording.in(language));
}

std::string cause_in_journal(Cause cause) { return cause_text(cause, Language::english); }

std::string undo_in_journal(std::int64_t number) { return fmt::format("repair {} undone", number); }

}  // namespace vantlo
