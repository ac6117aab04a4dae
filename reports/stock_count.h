#pragma once

#include <cstdint>

#include "bills/bill.h"
#include "reports/stock.h"

namespace vantlo {

/// What a counting sheet is called: the moment at which it was made, and, where the database kept a journal of movements,
/// the number that the next movement would have had.
/// Example  `PD20240331180000-1042-3f7a`
struct SheetName {
    Text text;
    Date made_at;  ///< local time
    std::optional<std::int64_t> next_movement;
};

/// A name for a sheet that is made now. Errors: Failure.
SheetName new_sheet_name(NativeConnection& database);

/// Returns  nothing if the text is no sheet's name.
std::optional<SheetName> sheet_name_from(const Text& text);

/// What is counted as one: goods of a model in a status.
struct CountKey {
    Text goods, model1, model2;
    std::int32_t status = 0;

    friend auto operator<=>(const CountKey&, const CountKey&) = default;
};

/// One line of a sheet that somebody has filled in.
struct CountedLine {
    CountKey key;
    std::optional<Currency> expected;  ///< as the sheet has it
    std::optional<Currency> counted;   ///< nothing: not counted, which is not 0
};

struct CountedSheet {
    SheetName name;
    Text warehouse;
    std::vector<CountedLine> lines;
};

/// How the count of a key compares with the ledger of the sheet's moment, in base units.
struct CountDifference {
    CountKey key;
    Text goods_name, goods_class, unit;
    Currency expected;  ///< at the sheet's moment
    Currency counted;
    Currency moved_since;  ///< what has come and gone since then, which the count could not see

    [[nodiscard]] Currency difference() const { return counted - expected; }
};

/// Why a sheet cannot be entered.
enum class CountObstacle {
    none,
    entered_already,   ///< its bills are stored: `names` has their ids
    unknown_goods,     ///< neither goods nor ledger know them: `names`
    moved_since,       ///< without a journal, the ledger has changed since the sheet was made: `names` has the goods
    nothing_expected,  ///< without a journal, and the sheet does not tell what was expected
    other_journal,     ///< the journal is not the one that there was when the sheet was made
};

struct CountComparison {
    CountObstacle obstacle = CountObstacle::none;
    std::vector<Text> names;
    std::vector<CountDifference> counted;  ///< every line that was counted, those that agree too
    std::size_t not_counted = 0;
};

/// Holds a sheet against the ledger of its moment. Errors: Failure.
CountComparison compare_count(NativeConnection& database, const CountedSheet& sheet);

/// The loss and overage bills that make the ledger what was counted, with what has moved since: one of each at most for each
/// status, dated by the sheet, their ids made of its name, so that no sheet is entered twice.
std::vector<Bill> count_bills(const CountedSheet& sheet, const std::vector<CountDifference>& counted);

/// The stock of a warehouse as a sheet to be filled in, by goods, models and status. `with_all_goods` adds goods of which the
/// ledger knows nothing there; without `with_expected` the sheet does not tell what should be there.
Listing make_count_sheet(NativeConnection& database, const SheetName& name, const Text& warehouse, bool with_all_goods,
                         bool with_expected);

}  // namespace vantlo
