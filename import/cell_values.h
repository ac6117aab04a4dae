#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "automation/date.h"

namespace vantlo {

/// Which of the first two parts of a date such as 03/04/2024 is the day.
enum class DateOrder { unknown, day_first, month_first };

/// How people write the values of a table's cells.
struct CellRules {
    std::optional<char> decimal = {};  ///< the mark of decimals, where it is known
    bool point_may_group = false;      ///< a lone point with three digits behind it may be one of thousands
    DateOrder date_order = DateOrder::unknown;
    bool counts_from_1904 = false;  ///< serial numbers of dates
};

/// What a cell reads as.
template <typename Value>
struct CellReading {
    enum class State {
        read,
        none,       ///< no such value
        ambiguous,  ///< the rules must say which
        comma,      ///< a number if the comma is the mark of decimals
        with_text,  ///< a number with something behind it
    };

    State state;
    Value value{};
};

/// Reads a number as people write it: with full-width digits, blanks around it and marks of thousands. A mark that can be
/// of decimals or of thousands is never guessed.
/// Returns  the number as from_chars reads it.
/// Example  `1,234.5` -> `1234.5`; `1.234,5` -> `1234.5`; `１２` -> `12`; `1,234` -> ambiguous; `2箱` -> with_text
CellReading<std::string> number_of_cell(std::string_view text, const CellRules& rules);

/// Reads a date as spreadsheets of both languages write it, a year of four digits in it, with a time or without; or a
/// spreadsheet's serial number of a day from 1954 to 2118.
/// Example  `2024年3月5日`, `2024/3/5`, `5.3.2024`, `5-Mar-2024`, `20240305`, `45356`; `03/04/2024` -> ambiguous
CellReading<Date> date_of_cell(std::string_view text, const CellRules& rules);

/// The day and time that a spreadsheet counts so; nothing for a number below 1 and for 29 February 1900, which was none.
std::optional<Date> date_of_serial(double serial, bool counts_from_1904);

/// The letters of ASCII in lower case, all else as it is.
std::string lower_case(std::string_view text);

/// Without the blanks around it: those of ASCII, no-break and ideographic ones.
std::string_view without_blanks(std::string_view text);

}  // namespace vantlo
