#pragma once

#include <span>
#include <string_view>
#include <vector>

#include "bills/bill.h"

namespace vantlo {

enum class BillPart { header, line };

std::span<const BillColumn> columns_of(const BillKind& kind, BillPart part);

/// What the members that post and take back a kind of bill do with its fields; tests hold it against the members.
///
/// The fields are those of bill files, separated by blanks, those of the header with a point before them.
struct FieldUse {
    std::string_view kind;
    std::string_view warehouses;        ///< ids of the warehouses whose stock moves
    std::string_view ignored;           ///< read by other kinds in these tables, and not by this one
    std::string_view minus_minus = {};  ///< negative, they put two minus signs side by side when the bill is taken back
    bool converts_quantities = true;    ///< of lines, by the factors of their units

    /// Whether a line moves a row that it inserts by the quantity by which it would update one: both converted, or neither.
    bool inserts_as_it_updates = true;

    [[nodiscard]] bool is_warehouse(BillPart part, std::string_view field) const;
    [[nodiscard]] bool is_ignored(BillPart part, std::string_view field) const;
    [[nodiscard]] bool puts_minus_signs_together(BillPart part) const;
};

/// All kinds, in the order of bill_kinds().
std::span<const FieldUse> field_uses();

/// Errors   std::out_of_range for a kind that is none of bill_kinds().
const FieldUse& field_use_of(const BillKind& kind);

/// A field that a bill lacks although its kind posts to the warehouse in it, or has although its kind ignores it.
struct FieldFault {
    BillPart part;
    std::size_t line;  ///< from 1; 0 for the header
    std::string_view field;
    bool is_missing;
};

/// The faults of a bill, the header's first.
std::vector<FieldFault> field_faults(const Bill& bill);

/// Whether a column of a record counts as left out: not there, null, a text of blanks, the number 0.
bool is_left_out(const Record& record, TextView column);

}  // namespace vantlo
