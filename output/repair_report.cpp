#include "output/repair_report.h"

#include "automation/message.h"
#include "output/table_output.h"

namespace vantlo {

namespace words {

// clang-format off
constexpr Message number_title   = {"编号", "No"};
constexpr Message time_title     = {"时间", "Time"};
constexpr Message rows_title     = {"行数", "Rows"};
constexpr Message cause_title    = {"原因", "Cause"};
constexpr Message no_repairs     = {"还没有做过修复。", "Nothing has been repaired yet."};
constexpr Message earlier_version = {"由较早的版本修复，不能撤销", "entered by an earlier version, cannot be undone"};
constexpr Message undone_by      = {"已被 {} 号撤销", "undone by {}"};
constexpr Message row_left       = {"修复后 {}", "left  {}"};
constexpr Message row_now        = {"现在   {}", "now   {}"};
constexpr Message no_row         = {"无此行", "no such row"};
constexpr Message latest_movement = {"最近一次变动：{} {} {} {}", "last moved: {} {} {} {}"};
// clang-format on

}  // namespace words

namespace {

/// The columns in which the row differs from another, with their values; all of its quantities if there is no other.
std::string values_of(const RowImage& row, const RowImage* other) {
    std::vector<TextView> columns = {u"InQty", u"OutQty", u"CurrentQty"};
    if (other != nullptr) columns = differing_columns(row, *other);
    std::string values;
    for (const TextView column : columns) {
        const Text* const literal = row.literal(column);
        values += (values.empty() ? "" : "  ") + to_utf8(column) + "=" + (literal == nullptr ? "" : to_utf8(*literal));
    }
    return values;
}

std::string lines_of(const std::vector<RowImage>& rows, const std::vector<RowImage>& others, const Message& wording,
                     Language language) {
    if (rows.empty()) return "    " + say(language, wording, words::no_row.in(language)) + "\n";
    const bool is_pair = rows.size() == 1 && others.size() == 1;
    std::string lines;
    for (const RowImage& row : rows) {
        lines += "    " + say(language, wording, values_of(row, is_pair ? &others.front() : nullptr)) + "\n";
    }
    return lines;
}

}  // namespace

std::string report_of(const std::vector<PastRepair>& repairs, Language language) {
    if (repairs.empty()) return std::string(words::no_repairs.in(language)) + "\n";
    using Align = TableOutput::Align;
    TableOutput table({{words::number_title.in(language), Align::right},
                       {words::time_title.in(language)},
                       {words::rows_title.in(language), Align::right},
                       {words::cause_title.in(language)}});
    for (const PastRepair& repair : repairs) {
        std::string causes;
        for (const Text& cause : repair.causes) causes += (causes.empty() ? "" : "; ") + to_utf8(cause);
        const auto add_remark = [&](const std::string& remark) { causes += " (" + remark + ")"; };
        if (!repair.number) add_remark(words::earlier_version.in(language));
        if (repair.undone_by) add_remark(say(language, words::undone_by, *repair.undone_by));
        table.add_row({repair.number ? std::to_string(*repair.number) : "-", to_utf8(repair.time),
                       std::to_string(repair.rows), causes});
    }
    return table.text();
}

std::string report_of(const std::vector<MovedRows>& moved, Language language) {
    std::string report;
    for (const MovedRows& rows : moved) {
        report += "  " + to_utf8(rows.condition) + "\n";
        report += lines_of(rows.left, rows.now, words::row_left, language);
        report += lines_of(rows.now, rows.left, words::row_now, language);
        if (!rows.latest) continue;
        const auto& [time, user, program, bill] = *rows.latest;
        report += "    " +
                  say(language, words::latest_movement, to_utf8(time), to_utf8(user), to_utf8(program), to_utf8(bill)) +
                  "\n";
    }
    return report;
}

}  // namespace vantlo
