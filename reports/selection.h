#pragma once

#include <optional>
#include <string_view>
#include <vector>

#include "automation/date.h"
#include "automation/text.h"

namespace vantlo {

/// The condition that a column matches one of the patterns, ` and ` before it; empty without patterns. In a pattern `*`
/// stands for any text and `?` for one character; letters' case counts as the engine counts it.
/// Example  `and_matches(u"GId", {u"G0*", u"H1"})` -> ` and (GId like 'G0%' escape '!' or GId='H1')`
Text and_matches(TextView column, const std::vector<Text>& patterns);

/// Whether a text matches one of the patterns, compared to the letter.
bool matches_one(TextView text, const std::vector<Text>& patterns);

/// The condition that one of the columns contains the text, whatever the case of ASCII letters, ` and ` before it; empty
/// for an empty text.
Text and_contains(const std::vector<Text>& columns, const Text& text);

/// Days in a row; without a bound where one is missing.
struct Period {
    std::optional<Date> from;   ///< midnight, included
    std::optional<Date> until;  ///< midnight after the last day, excluded
};

/// The days of a year, a month or one day: `2026`, `2026-03`, `2026-03-31`, `/` as well.
/// Returns  nothing if the text is none of these.
std::optional<Period> days_of(std::string_view text);

/// The condition that a column of dates lies in the period, ` and ` before each bound.
Text and_within(TextView column, const Period& period);

}  // namespace vantlo
