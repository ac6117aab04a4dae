#pragma once

#include "output/list_output.h"
#include "reports/listing.h"
#include "reports/selection.h"
#include "tool/commands/command.h"

namespace vantlo {

/// How the user wants to see a list.
struct ListOptions {
    ListFormat format;
    std::string sort;       ///< a column's name, `-` before it for the largest first; empty: the list's own order
    std::size_t limit = 0;  ///< 0: all rows
    std::size_t skip = 0;
};

/// Adds --format and --exact-cells.
void add_format_options(CLI::App& command, const CommonOptions& common, ListFormat& format);

/// Writes a list to stdout as list_text words it, in colour where stdout can.
void write_formatted(const Listing& list, ShownRows shown, const ListFormat& format, const CommonOptions& common,
                     const std::vector<std::string_view>& summed = {});

/// Adds --format, --sort, --limit and --skip.
std::shared_ptr<ListOptions> add_list_options(CLI::App& command, const CommonOptions& common);

/// Sorts a list as the options ask. Returns whether there is such a column; if not, the user is told which there are.
bool sort_list(Listing& list, const ListOptions& options, const CommonOptions& common);

/// Writes a list that is sorted already, and says how many rows are not shown; below a table stand the sums of the quantities whose columns are in `summed`, which are
/// those of all rows, shown or not.
void write_sorted(const Listing& list, const ListOptions& options, const CommonOptions& common,
                  const std::vector<std::string_view>& summed = {});

/// Both of these. Returns `usage` if there is no such column.
ExitCode write_list(Listing list, const ListOptions& options, const CommonOptions& common,
                    const std::vector<std::string_view>& summed = {});

/// Adds an option that takes several patterns, `*` and `?` in them.
void add_patterns(CLI::App& command, const std::string& name, std::vector<Text>& patterns, const std::string& about);

/// Adds an option that takes a day, a month or a year, and puts one end of its days into `bound`.
CLI::Option* add_day(CLI::App& command, const CommonOptions& common, const std::string& name,
                     std::optional<Date>& bound, std::optional<Date> Period::*end, const Message& about);

/// Adds --from and --to, each a year, month or day. The period reaches from the first day of the one to the last of the other.
void add_period(CLI::App& command, const CommonOptions& common, Period& period);

/// Refuses a database that keeps no journal of movements, with a word on how it begins one.
/// Errors   TaskError, Reason::refused
void require_journal(NativeConnection& database, const CommonOptions& common);

}  // namespace vantlo
