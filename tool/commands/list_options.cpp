#include "tool/commands/list_options.h"

#include <unistd.h>

#include <algorithm>
#include <iostream>

#include "bookkeeping/journal.h"
#include "output/table_output.h"
#include "output/visible.h"

namespace vantlo {

namespace words {

// clang-format off
constexpr Message list_format   = {"输出格式：table、json、jsonl 或 csv", "Output: table, json, jsonl or csv"};
constexpr Message list_sort     = {"按此列排序；前面加 - 则由大到小", "Sort by this column; - before it for the largest first"};
constexpr Message list_limit    = {"最多显示这么多行", "Show so many rows at most"};
constexpr Message list_skip     = {"跳过开头这么多行", "Pass over so many rows first"};
constexpr Message rows_left     = {"还有 {} 行未显示（--skip {} 继续）。", "{:row is|rows are} not shown (--skip {} goes on)."};
constexpr Message unknown_column = {"没有“{}”这一列；有：{}", "there is no column \"{}\"; there are: {}"};
constexpr Message from_option   = {"从这一天（月、年）起，例如 2026-03-01、2026-03 或 2026", "From this day, month or year on: 2026-03-01, 2026-03 or 2026"};
constexpr Message to_option     = {"到这一天（月、年）为止，含当天", "Up to this day, month or year, which is included"};
constexpr Message is_no_day     = {"“{}”不是日期；请写 2026-03-31、2026-03 或 2026", "\"{}\" is no date; write 2026-03-31, 2026-03 or 2026"};
constexpr Message no_journal    = {"此数据库没有库存流水，无从得知以前的变动；vantlo journal on 从现在起记录。",
                                   "this database keeps no journal of movements, so nothing is known of what moved; vantlo journal on begins one."};
// clang-format on

}  // namespace words

namespace {

/// Sorts as the user asks. Returns whether there is such a column.
bool sort_as_asked(Listing& list, const std::string& sort) {
    if (sort.empty()) return true;
    const bool largest_first = sort.front() == '-';
    const std::optional<std::size_t> column = list.find(std::string_view(sort).substr(largest_first ? 1 : 0));
    if (column) list.sort_by(*column, largest_first);
    return column.has_value();
}

void report_unknown_column(const Listing& list, const std::string& sort, const CommonOptions& common) {
    std::vector<std::string> names;
    for (const ListColumn& column : list.columns) names.emplace_back(column.name);
    const std::string typed = sort.substr(sort.front() == '-' ? 1 : 0);
    std::cerr << "vantlo: " << common.say(words::unknown_column, typed, fmt::format("{}", fmt::join(names, ", ")))
              << common.did_you_mean(typed, names) << '\n';
}

}  // namespace

void add_format_options(CLI::App& command, const CommonOptions& common, ListFormat& format) {
    command.add_option("--format", format.name, common.say(words::list_format))
        ->check(CLI::IsMember(list_formats))
        ->type_name("FORMAT");
    command.add_flag_callback(
        "--exact-cells", [&format] { format.cells = CsvCells::exact; }, common.say(words::exact_cells_option));
}

void write_formatted(const Listing& list, ShownRows shown, const ListFormat& format, const CommonOptions& common,
                     const std::vector<std::string_view>& summed) {
    if (format.name == "table" &&
        wants_colour(STDOUT_FILENO)) {  // the table's own escapes; those in its cells are spelled out
        std::ostream(unfiltered(std::cout))
            << list_text(list, shown, format, common.language, true, summed) << std::flush;
    } else {
        std::cout << list_text(list, shown, format, common.language, false, summed);
    }
}

std::shared_ptr<ListOptions> add_list_options(CLI::App& command, const CommonOptions& common) {
    const auto options = std::make_shared<ListOptions>();
    add_format_options(command, common, options->format);
    command.add_option("--sort", options->sort, common.say(words::list_sort))->type_name("COLUMN");
    command.add_option("--limit", options->limit, common.say(words::list_limit))
        ->type_name("ROWS")
        ->check(CLI::NonNegativeNumber);
    command.add_option("--skip", options->skip, common.say(words::list_skip))
        ->type_name("ROWS")
        ->check(CLI::NonNegativeNumber);
    return options;
}

bool sort_list(Listing& list, const ListOptions& options, const CommonOptions& common) {
    if (sort_as_asked(list, options.sort)) return true;
    report_unknown_column(list, options.sort, common);
    return false;
}

void write_sorted(const Listing& list, const ListOptions& options, const CommonOptions& common,
                  const std::vector<std::string_view>& summed) {
    const std::size_t first = std::min(options.skip, list.rows.size());
    const std::size_t left = list.rows.size() - first;
    const std::size_t shown = options.limit == 0 ? left : std::min(options.limit, left);
    write_formatted(list, {first, shown}, options.format, common, summed);
    if (shown < left)
        std::clog << "vantlo: " << common.say(words::rows_left, Count(left - shown), first + shown) << '\n';
}

ExitCode write_list(Listing list, const ListOptions& options, const CommonOptions& common,
                    const std::vector<std::string_view>& summed) {
    if (!sort_list(list, options, common)) return ExitCode::usage;
    write_sorted(list, options, common, summed);
    return ExitCode::done;
}

void add_patterns(CLI::App& command, const std::string& name, std::vector<Text>& patterns, const std::string& about) {
    command
        .add_option_function<std::vector<std::string>>(
            name,
            [&patterns](const std::vector<std::string>& texts) {
                for (const std::string& text : texts) patterns.push_back(from_utf8(text));
            },
            about)
        ->type_name("PATTERN")
        ->allow_extra_args(false);
}

CLI::Option* add_day(CLI::App& command, const CommonOptions& common, const std::string& name,
                     std::optional<Date>& bound, std::optional<Date> Period::*end, const Message& about) {
    return command
        .add_option_function<std::string>(
            name,
            [&bound, &common, end](const std::string& text) {
                const std::optional<Period> days = days_of(text);
                if (!days) throw CLI::ValidationError(common.say(words::is_no_day, text));
                bound = (*days).*end;
            },
            common.say(about))
        ->type_name("DAY");
}

void add_period(CLI::App& command, const CommonOptions& common, Period& period) {
    add_day(command, common, "--from", period.from, &Period::from, words::from_option);
    add_day(command, common, "--to", period.until, &Period::until, words::to_option);
}

void require_journal(NativeConnection& database, const CommonOptions& common) {
    if (!has_movements(journal_state(database))) throw TaskError(Reason::refused, common.say(words::no_journal));
}

}  // namespace vantlo
