#include "output/verify_report.h"

#include <fmt/format.h>

#include <algorithm>

#include "automation/calendar.h"
#include "automation/number_text.h"
#include "output/visible.h"
#include "output/words.h"

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
constexpr Message notes_follow   = {"另请留意（不算不符）：", "Worth a look, though no difference by itself:"};
constexpr Message more_of_them   = {"……共 {} 处", "... {} in all"};
constexpr Message line           = {"第 {} 行", "line {}"};
constexpr Message no_line        = {"现无此行", "no line now"};
constexpr Message moved_only     = {"{}：曾过账 {}", "{}: it moved {}"};
constexpr Message moved_and_says = {"{}：曾过账 {}；现为 {}", "{}: it moved {}; now it says {}"};
constexpr Message factor_changed = {"商品 {} 的单位 {}：过账时为 {}，现为 {}；涉及单据 {} 张：{}", "goods {}, unit {}: {} when posted, {} now; bills concerned {}: {}"};
constexpr Message loose_movement = {"{} 由 {} 改动（{}）：{}", "changed at {} by {} ({}): {}"};
constexpr Message from_to        = {"{} {} 改为 {}", "{} {} -> {}"};
constexpr Message row_gone       = {"无", "none"};
constexpr Message unknown_maker  = {"不明者", "somebody unknown"};
constexpr Message unknown_time   = {"不明时间", "an unknown time"};
constexpr Message more_movements = {"……共 {} 次", "... {} in all"};
constexpr Message earlier_movements = {"……以上是最近 {} 次中最早的；此前还有", "... the first of the latest {}; there are earlier ones"};
constexpr Message broken_field   = {"{} {}：{} 为{}", "{} {}: {} is {}"};
constexpr Message broken_text    = {"文本“{}”", "the text '{}'"};
constexpr Message broken_number  = {"数 {}", "the number {}"};
constexpr Message broken_binary  = {"二进制数据", "binary data"};
constexpr Message no_journal     = {
    "此数据库没有流水：是谁、何时改动了台账，以及单据在过账之后是否被改动或删除，均无从得知（见 vantlo journal on、vantlo adopt）。",
    "There is no journal of movements: who changed a row and when, and whether a bill was edited or deleted after it was\n"
    "posted, cannot be known (see vantlo journal on, vantlo adopt)."};
constexpr Message journal_is_off = {
    "流水未全部开启：此期间由谁改动了台账无从得知（见 vantlo journal status）。",
    "The journal of movements is not on: who changed a row meanwhile cannot be known (see vantlo journal status)."};
constexpr Message journal_is_broken = {
    "流水的表 StockMovement 已不存在，而触发器还在：台账的任何改动都会失败（vantlo journal on 重新开始）。",
    "The journal's table StockMovement is gone while its triggers are there: every change of the ledger fails (vantlo\n"
    "journal on begins anew)."};
constexpr Message journal_unread = {
    "此帐户无权读取流水：是谁、何时改动了台账无从得知。",
    "This account may not read the journal of movements: who changed a row and when cannot be known."};
constexpr Message bills_unnamed  = {
    "有的单据由不向流水说明单据的程序保存：不带单据的改动可能就是它们的过账。",
    "Some bills were stored by programs that do not tell the journal which bill they post: a change without a bill may be\n"
    "the posting of one of them."};
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
    {Cause::broken_value,     {"字段内容不合其列",                 "A field holds what its column is not for"}},
    {Cause::cannot_judge,     {"单据无法读取或过账，其行无从判断", "Rows of a bill that cannot be read or posted cannot be judged"}},
    {Cause::unit_factor,      {"单位换算率在过账之后被改动",       "The factor of a unit was changed after bills were posted"}},
    {Cause::edited_bill,      {"单据在过账之后被改动",             "A bill was edited after it was posted"}},
    {Cause::deleted_bill,     {"单据未冲回即被删除",               "A bill was deleted without being taken back"}},
    {Cause::not_posted,       {"单据未过账",                       "A stored bill is not posted"}},
    {Cause::posted_in_part,   {"单据只过账了一部分",               "A bill is posted in part"}},
    {Cause::posted_twice,     {"单据过账了两次",                   "A bill is posted twice"}},
    {Cause::not_reversed,     {"单据已冲回，台账仍含其数量",       "A bill was taken back, but its posting is there still"}},
    {Cause::reversed_twice,   {"单据冲回了两次",                   "A bill is taken back twice"}},
    {Cause::not_in_journal,   {"台账与流水不符，流水与单据相符",   "The ledger is not what its movements and the bills say"}},
    {Cause::changed_outside,  {"台账在单据之外被改动",             "The ledger was changed outside any bill"}},
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
    {Remark::not_in_journal,       {"台账与单据相符，但流水缺少其变动",       "Rows agree with the bills, but the journal lacks what changed them"}},
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
        if (finding.event || finding.bill) {
            text_ += "   " + (finding.event ? bill(*finding.event) : name(*finding.bill));
            if (finding.cause == Cause::posted_in_part) {
                text_ += "  " + say(language_, words::steps_there, finding.steps_there, finding.steps);
            }
            text_ += "\n";
        }
        if (!finding.reason.empty()) text_ += "     " + finding.reason + "\n";
        if (finding.unit) add(*finding.unit, finding.unit_events);
        for (const EditedRow& row : finding.edited) add(row, finding.event);
        for (const BrokenValue& value : finding.broken) text_ += "   " + broken_value_text(value, language_) + "\n";
        for (const Difference& rows : finding.differences) add(rows);
    }

    void add(const UnitChange& unit, const std::vector<std::size_t>& bills) {
        const auto factor = [](double number) { return to_utf8(number_text(number)); };
        text_ += "   " +
                 say(language_, words::factor_changed, to_utf8(unit.goods), to_utf8(unit.unit),
                     factor(unit.factor_then), factor(unit.factor_now), bills.size(), names(bills)) +
                 "\n";
    }

    void add(const EditedRow& row, const std::optional<std::size_t>& event) {
        const std::string where = event ? lines_of(row.key, *event) : visible(to_utf8(condition_of(row.key)));
        text_ +=
            "     " +
            (row.says == Amounts{} ? say(language_, words::moved_only, where, shown(row.moved))
                                   : say(language_, words::moved_and_says, where, shown(row.moved), shown(row.says))) +
            "\n";
    }

    /// The lines of a bill that have the goods of a key.
    [[nodiscard]] std::string lines_of(const LedgerKey& key, std::size_t event) const {
        std::string numbers;
        const std::vector<Record>& lines = timeline_.events[event].bill.lines;
        for (std::size_t i = 0; i < lines.size(); ++i) {
            const std::optional<Text> goods = text_or_nothing(lines[i].value(u"Gid"));
            if (!goods || !key.parts[1] || trim_blanks(*goods) != trim_blanks(*key.parts[1])) continue;
            numbers += (numbers.empty() ? "" : ", ") + std::to_string(i + 1);
        }
        return numbers.empty() ? words::no_line.in(language_) : say(language_, words::line, numbers);
    }

    [[nodiscard]] std::string shown(const Amounts& amounts) const {
        return say(language_, words::amounts, shown(amounts[0]), shown(amounts[1]), shown(amounts[2]));
    }

    [[nodiscard]] static std::string shown(std::int64_t quantity) {
        return to_utf8(number_text(Currency::from_ten_thousandths(quantity)));
    }

    void add(const Difference& rows) {
        text_ += "   " + visible(to_utf8(condition_of(rows.key))) + "\n";
        add(words::stored_row, rows.stored);
        add(words::expected_row, rows.expected);
        text_ += "     " + touches(rows.events) + "\n";
        constexpr std::size_t shown_at_most = 6;
        const auto& [latest, has_earlier] = rows.loose;
        for (std::size_t i = 0; i < std::min(latest.size(), shown_at_most); ++i) add(latest[i]);
        const Message& more = has_earlier ? words::earlier_movements : words::more_movements;
        if (latest.size() > shown_at_most) text_ += "     " + say(language_, more, latest.size()) + "\n";
    }

    void add(const LooseMovement& movement) {
        std::string by = to_utf8(movement.user);
        if (!movement.program.empty()) by += (by.empty() ? "" : ", ") + to_utf8(movement.program);
        if (by.empty()) by = words::unknown_maker.in(language_);
        const Message* const titles[] = {&vantlo::words::received, &vantlo::words::issued, &vantlo::words::on_hand};
        std::string changes;
        for (std::size_t i = 0; i < movement.change.size(); ++i) {
            const Variant& after = movement.after[i];
            const bool is_quantity = !after.is<Null>() && is_of_type(after, ColumnType::single);
            if (movement.change[i] == 0 && (is_quantity || after.is<Null>())) continue;
            const std::int64_t sum = is_quantity ? to_currency(after).ten_thousandths() : 0;
            changes +=
                (changes.empty() ? "" : ", ") +
                say(language_, words::from_to, titles[i]->in(language_), shown(sum - movement.change[i]),
                    is_quantity || after.is<Null>() ? (after.is<Null>() ? words::row_gone.in(language_) : shown(sum))
                                                    : value_text(after, language_));
        }
        text_ +=
            "     " +
            say(language_, words::loose_movement,
                movement.moved_at ? to_utf8(format_date_time(*movement.moved_at)) : words::unknown_time.in(language_),
                by, to_utf8(movement.action), changes) +
            "\n";
    }

    void add(const Message& name, const std::vector<LedgerEntry>& entries) {
        if (entries.empty()) text_ += fmt::format("     {}  {}\n", name.in(language_), words::no_row.in(language_));
        for (const LedgerEntry& entry : entries) {
            const auto quantity = [&](std::size_t column) {
                if (entry.quantities[column]) return shown(*entry.quantities[column]);
                const auto broken = std::ranges::find(entry.broken, quantity_columns[column], &BrokenValue::column);
                return broken == entry.broken.end() ? words::null_amount.in(language_)
                                                    : value_text(broken->value, language_);
            };
            text_ += fmt::format("     {}  {}\n", name.in(language_),
                                 say(language_, words::amounts, quantity(0), quantity(1), quantity(2)));
        }
    }

    [[nodiscard]] std::string touches(const std::vector<std::size_t>& events) const {
        return events.empty() ? words::no_bills.in(language_) : words::touched_by.in(language_) + names(events);
    }

    [[nodiscard]] std::string names(const std::vector<std::size_t>& events) const {
        constexpr std::size_t shown_at_most = 6;
        std::string names;
        for (std::size_t i = 0; i < std::min(events.size(), shown_at_most); ++i) {
            names += (i == 0 ? "" : ", ") + bill(events[i]);
        }
        if (events.size() > shown_at_most) names += say(language_, words::more_bills, events.size());
        return names;
    }

    [[nodiscard]] static std::string name(const BillName& bill) {
        return visible(to_utf8(bill.first + u" " + bill.second));
    }

    [[nodiscard]] std::string bill(std::size_t event) const {
        const BillEvent& which = timeline_.events[event];
        const bool is_saved = which.action == BillEvent::Action::save;
        return name(name_of(which.bill)) + (is_saved ? "" : words::took_back.in(language_));
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
    std::string text = fmt::format("{}\n", words::notes_follow.in(language));
    for (auto first = notes.begin(); first != notes.end();) {
        const auto last =
            std::find_if(first, notes.end(), [&](const Note& note) { return note.remark != first->remark; });
        text +=
            fmt::format("   {}\n", std::ranges::find(remarks, first->remark, &RemarkRow::remark)->wording.in(language));
        const auto count = last - first;
        for (auto note = first; note != first + std::min(count, shown_at_most); ++note) {
            text += "     " + visible(note->subject) + "\n";
        }
        if (count > shown_at_most) text += "     " + say(language, words::more_of_them, count) + "\n";
        first = last;
    }
    return text;
}

std::string what_is_unknown(const Verification& verification, Language language) {
    const auto told = [&](const Message& what) { return "\n" + std::string(what.in(language)) + "\n"; };
    const Movements& movements = verification.movements;
    if (movements.state == JournalState::absent || movements.state == JournalState::unsupported)
        return told(words::no_journal);
    if (movements.state == JournalState::broken) return told(words::journal_is_broken);
    if (!movements.is_readable) return told(words::journal_unread);
    if (movements.state != JournalState::on) return told(words::journal_is_off);
    return verification.are_all_bills_named ? std::string() : told(words::bills_unnamed);
}

std::string value_text(const Variant& value, Language language) {
    if (const Text* const text = value.get_if<Text>()) return say(language, words::broken_text, to_utf8(*text));
    const std::optional<Text> number = text_or_nothing(value);
    return number ? say(language, words::broken_number, to_utf8(*number)) : words::broken_binary.in(language);
}

std::string broken_value_text(const BrokenValue& value, Language language) {
    return visible(say(language, words::broken_field, to_utf8(value.table), to_utf8(value.row), to_utf8(value.column),
                       value_text(value.value, language)));
}

std::string cause_text(Cause cause, Language language) {
    return std::string(std::ranges::find(causes, cause, &CauseRow::cause)->wording.in(language));
}

std::string cause_in_journal(Cause cause) { return cause_text(cause, Language::english); }

std::string undo_in_journal(std::int64_t number) { return fmt::format("repair {} undone", number); }

}  // namespace vantlo
