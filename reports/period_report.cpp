#include "reports/period_report.h"

#include <map>

#include "automation/currency.h"
#include "automation/text_value.h"
#include "reports/names.h"

namespace vantlo {

namespace {

/// What a row stands for: a group, and the unit of its quantities.
struct RowKey {
    Text group;
    Text unit;

    friend auto operator<=>(const RowKey&, const RowKey&) = default;
};

/// Sums of quantities, in ten-thousandths.
struct Sums {
    std::int64_t opening = 0, received = 0, issued = 0, change = 0;
};

/// How rows of the ledger and of the journal are grouped. In the expressions i is the ledger or journal, g the goods.
struct Grouping {
    ReportBy by;
    std::string_view column;
    const char16_t* group;       ///< of movements
    const char16_t* stock;       ///< of the ledger; null where stock has no such group
    const char16_t* name_table;  ///< whose ID and Name tell the group's name; null if there is none
};

constexpr auto class_of_goods = u"coalesce(g.Class,'')";

// clang-format off
constexpr Grouping groupings[] = {
    {ReportBy::warehouse,   "warehouse", u"i.WID",                   u"i.WID",       u"Warehouse"},
    {ReportBy::goods,       "goods",     u"i.GId",                   u"i.GId",       u"Goods"},
    {ReportBy::goods_class, "class",     class_of_goods,             class_of_goods, nullptr},
    {ReportBy::kind,        "kind",      u"coalesce(i.BillKind,'')", nullptr,        nullptr},
    {ReportBy::day,         "day",       nullptr,                    nullptr,        nullptr},  // the engine's own expression
    {ReportBy::month,       "month",     nullptr,                    nullptr,        nullptr},
};
// clang-format on

const Grouping& grouping_of(ReportBy by) { return groupings[static_cast<int>(by)]; }

constexpr auto with_goods = u" i left join Goods g on g.ID=i.GId";
constexpr auto unit_of_goods = u"coalesce(g.Unit,'')";
/// The goods themselves, where nobody said what their quantities are counted in.
constexpr auto goods_without_unit = u"case when coalesce(g.Unit,'')='' then i.GId else '' end";

std::int64_t ten_thousandths(const Variant& sum) { return sum.is<Null>() ? 0 : to_currency(sum).ten_thousandths(); }

class PeriodReport {
public:
    PeriodReport(NativeConnection& database, const Grouping& grouping, const Period& period)
        : database_(database), grouping_(grouping), range_(movements_within(database, period)) {}

    /// What was on hand in each group of stock when the period ended: what the ledger holds, less what moved since.
    std::map<RowKey, std::int64_t> closings() {
        const Text group = grouping_.stock == nullptr ? u"''" : grouping_.stock;
        std::map<RowKey, std::int64_t> closing;
        const RecordsetVariable stock = select(u"Inventory", group, sum(u"CurrentQty") + u" as Stock", u"");
        for (; !stock->eof(); stock->move_next()) closing[key(*stock)] += ten_thousandths(stock->field(u"Stock"));
        const MovementRange since_end{range_.until, all_movements.until};
        const RecordsetVariable later = select(u"StockMovement", group, sum(u"CurrentChange") + u" as NetChange",
                                               u" where 1=1" + and_numbered(since_end));
        for (; !later->eof(); later->move_next()) closing[key(*later)] -= ten_thousandths(later->field(u"NetChange"));
        return closing;
    }

    /// What moved in the period, by the report's own groups.
    std::map<RowKey, Sums> movements() {
        const bool is_by_time = grouping_.group == nullptr;
        const Text group =
            is_by_time ? replace_all(database_.dialect().day_of_clock, u'?', u"i.MovedAt") : Text(grouping_.group);
        std::map<RowKey, Sums> moved;
        const RecordsetVariable rows = select(u"StockMovement", group,
                                              sum(u"InChange") + u" as Received," + sum(u"OutChange") + u" as Issued," +
                                                  sum(u"CurrentChange") + u" as NetChange",
                                              u" where Action<>'opening'" + and_numbered(range_));
        for (; !rows->eof(); rows->move_next()) {
            RowKey of_row = key(*rows);
            if (grouping_.by == ReportBy::month) of_row.group.resize(TextView(u"yyyy-MM").size());
            Sums& sums = moved[of_row];
            sums.received += ten_thousandths(rows->field(u"Received"));
            sums.issued += ten_thousandths(rows->field(u"Issued"));
            sums.change += ten_thousandths(rows->field(u"NetChange"));
        }
        return moved;
    }

private:
    static RowKey key(Recordset& rows) {
        const Text without_unit = text_or_empty(rows.field(u"WithoutUnit"));
        return {text_or_empty(rows.field(u"Grp")),
                without_unit.empty() ? text_or_empty(rows.field(u"Unit")) : u"? " + without_unit};
    }

    [[nodiscard]] Text sum(TextView column) const {
        return replace_all(database_.dialect().exact_sum, u'?', u"i." + Text(column));
    }

    RecordsetVariable select(TextView table, const Text& group, const Text& sums, const Text& condition) {
        const Text unit = unit_of_goods, without_unit = goods_without_unit;
        return database_.execute(u"select " + group + u" as Grp," + unit + u" as Unit," + without_unit +
                                 u" as WithoutUnit," + sums + u" from " + Text(table) + with_goods + condition +
                                 u" group by " + (group == u"''" ? Text() : group + u",") + unit + u"," + without_unit);
    }

    NativeConnection& database_;
    const Grouping& grouping_;
    MovementRange range_;
};

/// Gives each row its opening: of its own stock, or by time what the row before of the same unit closed with.
std::map<RowKey, Sums> with_openings(std::map<RowKey, Sums> rows, const std::map<RowKey, std::int64_t>& closings,
                                     const Grouping& grouping) {
    if (grouping.stock != nullptr) {
        for (const auto& [key, closing] : closings) rows[key].opening = closing - rows[key].change;
        return rows;
    }
    std::map<Text, std::int64_t> on_hand;  // of a unit
    for (const auto& [key, closing] : closings) on_hand[key.unit] += closing;
    for (const auto& [key, sums] : rows) on_hand[key.unit] -= sums.change;
    for (auto& [key, sums] : rows) {
        sums.opening = on_hand[key.unit];
        on_hand[key.unit] += sums.change;
    }
    return rows;
}

}  // namespace

Listing report_period(NativeConnection& database, ReportBy by, const Period& period) {
    const Grouping& grouping = grouping_of(by);
    PeriodReport report(database, grouping, period);
    const bool has_stock = by != ReportBy::kind;
    std::map<RowKey, Sums> rows = report.movements();
    if (has_stock) rows = with_openings(std::move(rows), report.closings(), grouping);
    const bool has_names = grouping.name_table != nullptr;
    const std::map<Text, Text> names = has_names ? read_names(database, grouping.name_table) : std::map<Text, Text>();

    Listing listing{{{grouping.column, CellType::text}}, {}};
    if (has_names) listing.columns.push_back({"name", CellType::text});
    listing.columns.push_back({"unit", CellType::text});
    if (has_stock) listing.columns.push_back({"opening", CellType::quantity});
    for (const char* const column : {"received", "issued", "adjusted"})
        listing.columns.push_back({column, CellType::quantity});
    if (has_stock) listing.columns.push_back({"closing", CellType::quantity});
    for (const auto& [key, sums] : rows) {
        const auto quantity = [](std::int64_t sum) { return Variant(Currency::from_ten_thousandths(sum)); };
        if (sums.opening == 0 && sums.received == 0 && sums.issued == 0 && sums.change == 0) continue;
        std::vector<Variant>& row = listing.rows.emplace_back();
        row.emplace_back(key.group);
        if (has_names) row.emplace_back(names.contains(key.group) ? names.at(key.group) : Text());
        row.emplace_back(key.unit);
        if (has_stock) row.push_back(quantity(sums.opening));
        row.push_back(quantity(sums.received));
        row.push_back(quantity(sums.issued));
        row.push_back(quantity(sums.change - sums.received + sums.issued));
        if (has_stock) row.push_back(quantity(sums.opening + sums.change));
    }
    return listing;
}

}  // namespace vantlo
