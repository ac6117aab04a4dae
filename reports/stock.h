#pragma once

#include "ado/native/native_connection.h"
#include "reports/listing.h"
#include "reports/selection.h"

namespace vantlo {

/// Which rows of the ledger are wanted: patterns as in and_matches; what is empty does not matter.
struct StockWanted {
    std::vector<Text> warehouses = {};
    std::vector<Text> goods = {};
    std::vector<Text> classes = {};
    std::vector<Text> models1 = {};
    std::vector<Text> models2 = {};
    std::vector<std::int32_t> statuses = {};
    bool negative = false;  ///< only rows with less than nothing on hand
    bool nonzero = false;   ///< only rows with something on hand, or less than nothing
};

/// A row of the ledger as lists show it. A quantity is a Currency, Null where the row has none, or the text of what stands
/// there instead of a number; it counts in the goods' base unit.
struct StockRow {
    Text warehouse, warehouse_name;
    Text goods, goods_name;
    Text model1, model2;
    Text status;
    Text goods_class;
    Text unit;       ///< as the ledger has it: that of the line which made the row
    Text base_unit;  ///< of the goods; empty where nobody said
    Variant received, issued, on_hand;
};

/// The wanted rows as they are now, by warehouse, goods, models and status.
/// Errors   Failure, if the ledger, the goods or the warehouses cannot be read.
std::vector<StockRow> read_stock(NativeConnection& database, const StockWanted& wanted);

/// The wanted rows as they were before a movement, that of the number or the first after it: one for each key, without those
/// whose quantities are all 0. They are the sum of the movements before it, or what there is now less those since, whichever
/// are fewer; class and unit are those of now.
/// Errors   as above, and if there is no journal of movements.
std::vector<StockRow> read_stock_before(NativeConnection& database, const StockWanted& wanted, std::int64_t movement);

/// What can be said of the stock at an earlier moment.
struct PastStock {
    std::vector<StockRow> rows;      ///< as read_stock_before has them
    std::optional<Date> known_from;  ///< the journal begins only then, later than that moment: there are no rows
    bool journal_was_off = false;    ///< at the moment or before the next movement: what changed meanwhile is not known
};

/// The wanted rows as they were at a moment, local time. Errors: as above.
PastStock read_stock_at(NativeConnection& database, const StockWanted& wanted, Date moment);

/// The rows as a list with all that is known of each.
Listing list_stock(const std::vector<StockRow>& rows);

/// A status as a cell: the whole number that it should be, else the text that the database holds; Null for none.
Variant status_cell(const Text& status);

/// The unit in which the row's quantities may be added up with others: the goods' own, where others have a unit.
/// Example  `? G9` for goods without a unit, in a ledger where other goods have one
Text unit_to_add(const StockRow& row, bool any_has_unit);

bool any_has_unit(const std::vector<StockRow>& rows);

/// What rows of the ledger are grouped by.
enum class StockGroup { warehouse, goods, goods_class, model1, model2, status };

/// The sums of the rows in groups and units: quantities of different units are never added. What is no number counts as 0.
Listing group_stock(const std::vector<StockRow>& rows, const std::vector<StockGroup>& groups);

}  // namespace vantlo
