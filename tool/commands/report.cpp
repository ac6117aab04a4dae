#include <iostream>

#include "ado/native/snapshot.h"
#include "automation/calendar.h"
#include "reports/period_report.h"
#include "tool/commands/command.h"
#include "tool/commands/list_options.h"

namespace vantlo {

namespace words {

// clang-format off
constexpr Message report_about   = {"一段时间的期初、收入、发出和期末", "Opening, received, issued and closing stock of a period"};
constexpr Message report_example = {"2024 年 3 月各仓库的收发存", "March 2024 by warehouse"};
constexpr Message report_days_example = {"今年各月", "This year's months"};
constexpr Message report_by      = {"分组：warehouse 仓库、goods 商品、class 类别、kind 单据种类、day 日、month 月", "Rows by warehouse, goods, class, kind of bill, day or month"};
constexpr Message journal_later  = {"库存流水从 {} 开始；之前的变动都计入期初。", "the journal of movements begins on {}: what moved before it counts as opening stock."};
// clang-format on

}  // namespace words

namespace {

struct Grouped {
    const char* name;
    ReportBy by;
};

constexpr Grouped groupings[] = {
    {"warehouse", ReportBy::warehouse}, {"goods", ReportBy::goods}, {"class", ReportBy::goods_class},
    {"kind", ReportBy::kind},           {"day", ReportBy::day},     {"month", ReportBy::month}};

struct Wanted {
    ReportBy by = ReportBy::warehouse;
    Period period;
};

/// Days and months follow each other, so that only what moved adds up; everything else adds up in full.
std::vector<std::string_view> summed_columns(ReportBy by) {
    if (by == ReportBy::day || by == ReportBy::month || by == ReportBy::kind) return {"received", "issued", "adjusted"};
    return {"opening", "received", "issued", "adjusted", "closing"};
}

ExitCode show_report(const CommonOptions& common, const Wanted& wanted, const ListOptions& options) {
    const auto database = common.read();
    require_journal(*database, common);
    const Snapshot snapshot(*database);
    const std::optional<Date> begins = journal_begins(*database);
    if (wanted.period.from && begins && *wanted.period.from < *begins)
        std::cerr << "vantlo: " << common.say(words::journal_later, to_utf8(ordinary_text(*begins))) << '\n';
    return write_list(report_period(*database, wanted.by, wanted.period), options, common, summed_columns(wanted.by));
}

}  // namespace

void add_report(CLI::App& app, CommandCall& call) {
    const CommonOptions& common = call.common;
    CLI::App* const command = add_command(app, common, "report", words::report_about,
                                          {{"vantlo report --from 2024-03 --to 2024-03", words::report_example},
                                           {"vantlo report --by month --from 2024", words::report_days_example}});
    const auto wanted = std::make_shared<Wanted>();
    std::map<std::string, ReportBy> names;
    for (const Grouped& grouping : groupings) names.emplace(grouping.name, grouping.by);
    add_period(*command, common, wanted->period);
    command->add_option("--by", wanted->by, common.say(words::report_by))
        ->transform(CLI::CheckedTransformer(names))
        ->type_name("GROUP");
    const auto options = add_list_options(*command, common);
    command->callback([&call, wanted, options] {
        call.work = [&common = call.common, wanted, options] { return show_report(common, *wanted, *options); };
    });
}

}  // namespace vantlo
