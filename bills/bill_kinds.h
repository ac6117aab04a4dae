#pragma once

#include <span>
#include <string_view>

#include "automation/text.h"

namespace vantlo {

enum class ColumnType { text, single, whole_number, date };

/// One column of a bill table and the field of a bill file that fills it.
struct BillColumn {
    std::string_view field;  ///< its name in bill files
    const char16_t* column;
    ColumnType type;
};

/// A table of headers or lines.
struct BillTable {
    const char16_t* name;
    const char16_t* id_column;
    std::span<const BillColumn> columns;
};

/// What one argument of a member's call is made of.
enum class Feed {
    line,           ///< the line object; the member is called once for each line
    id,             ///< the bill's identifier
    header_status,  ///< the header's ReferFlag
    header_receiver,
    header_supplier,
    any_class,            ///< no filter by goods class
    any_main_goods_flag,  ///< no filter by main-goods flag
    magnitude,            ///< True: the magnitude of the quantity is posted
    signed_quantity,      ///< False
};

/// A call that posts a bill or takes it back.
struct MemberCall {
    const char16_t* member;
    std::span<const Feed> arguments;
};

/// A kind of bill: where it is stored, and which members of the component move the ledger for it.
struct BillKind {
    std::string_view name;          ///< as commands and files spell it
    std::string_view chinese_name;  ///< as people read it
    const BillTable* header;
    const BillTable* lines;
    const char16_t* warehouse_column;  ///< what a line object shows as WarehouseId; null if it has none
    std::span<const MemberCall> post;
    std::span<const MemberCall> reversal;
};

std::span<const BillKind> bill_kinds();

/// The kind of that name; null if there is none.
const BillKind* find_bill_kind(std::string_view name);

}  // namespace vantlo
