#pragma once

#include <limits>
#include <string>
#include <vector>

#include "automation/error_text.h"
#include "output/csv_field.h"
#include "reports/listing.h"

namespace vantlo {

/// The formats of lists, as `--format` names them.
inline const std::vector<std::string> list_formats = {"table", "json", "jsonl", "csv"};

/// The format of a list.
struct ListFormat {
    std::string name = "table";
    CsvCells cells = CsvCells::for_spreadsheets;
};

/// Rows of a list: so many, from one of them on.
struct ShownRows {
    std::size_t first = 0;
    std::size_t count = std::numeric_limits<std::size_t>::max();
};

/// The shown rows of a list in one of the formats, in UTF-8. A table is for people: titles in their language, below it the
/// sums over all rows of the quantities whose names are in `summed`, one for each unit if the list has a column `unit`. The
/// others are for programs: English names, exact quantities with a point, times as `yyyy-MM-dd HH:mm:ss`.
std::string list_text(const Listing& list, ShownRows shown, const ListFormat& format, Language language,
                      bool has_colour, const std::vector<std::string_view>& summed = {});

/// The title of a column in the user's language.
std::string title_of(std::string_view column, Language language);

/// A kind of bill as people read it: in Chinese by its Chinese name.
std::string kind_for_people(const std::string& name, Language language);

/// A cell as tables and CSV show it.
std::string cell_text(const Variant& cell);

}  // namespace vantlo
