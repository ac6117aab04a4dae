#include "reports/selection.h"

#include <doctest/doctest.h>

#include "automation/calendar.h"
#include "reports/listing.h"

namespace vantlo {
namespace {

std::string condition(const std::vector<Text>& patterns) { return to_utf8(and_matches(u"GId", patterns)); }

std::string days(std::string_view text) {
    const std::optional<Period> period = days_of(text);
    if (!period) return "none";
    return to_utf8(format_date(*period->from) + u" " + format_date(*period->until));
}

TEST_CASE("and_matches compares plain texts, and patterns by LIKE with its own signs escaped") {
    CHECK(condition({}).empty());
    CHECK(condition({u"G1"}) == " and (GId='G1')");
    CHECK(condition({u"G0*", u"H?"}) == " and (GId like 'G0%' escape '!' or GId like 'H_' escape '!')");
    CHECK(condition({u"50%_[!*"}) == " and (GId like '50!%!_![!!%' escape '!')");
    CHECK(condition({u"O'Neil"}) == " and (GId='O''Neil')");
}

TEST_CASE("and_contains looks in every column, whatever the case of ASCII letters") {
    CHECK(and_contains({u"a"}, u"").empty());
    CHECK(to_utf8(and_contains({u"a", u"b"}, u"Ab%")) ==
          " and (lower(a) like '%ab!%%' escape '!' or lower(b) like '%ab!%%' escape '!')");
}

TEST_CASE("days_of reads a year, a month or a day, and nothing else") {
    CHECK(days("2024") == "2024-01-01 2025-01-01");
    CHECK(days("2024-02") == "2024-02-01 2024-03-01");
    CHECK(days("2024/12") == "2024-12-01 2025-01-01");
    CHECK(days("2024-02-29") == "2024-02-29 2024-03-01");
    CHECK(days("2024-3-5") == "2024-03-05 2024-03-06");
    for (const char* const text :
         {"", "24", "2024-13", "2023-02-29", "2024-02-30", "2024-", "2024-1-1-1", "x", "2024-01-x"}) {
        CHECK_MESSAGE(days(text) == "none", text);
    }
}

TEST_CASE("and_within bounds a column by the days that a period has") {
    CHECK(and_within(u"d", {}).empty());
    CHECK(to_utf8(and_within(u"d", *days_of("2024-02"))) == " and d>='2024-02-01' and d<'2024-03-01'");
}

TEST_CASE("Listing sorts numbers as numbers, texts as texts, and nothing before all") {
    Listing list{{{"name", CellType::text}, {"quantity", CellType::quantity}}, {}};
    list.rows = {{u"b", Currency::from_whole(10)}, {u"a", Currency::from_whole(9)}, {u"c", Null()}};
    const auto names = [&] {
        std::string all;
        for (const auto& row : list.rows) all += to_utf8(to_text(row[0]));
        return all;
    };
    list.sort_by(*list.find("quantity"), false);
    CHECK(names() == "cab");
    list.sort_by(*list.find("quantity"), true);
    CHECK(names() == "bac");
    list.sort_by(*list.find("name"), false);
    CHECK(names() == "abc");
    CHECK_FALSE(list.find("Name").has_value());
}

}  // namespace
}  // namespace vantlo
