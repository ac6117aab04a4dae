#pragma once

#include <cstdint>

#include "posting/line.h"
#include "posting/posting_frame.h"

/// The members that post status conversions, borrowing, assembly and disassembly; see posting/stock/stock.h for what
/// holds for all members.
namespace vantlo::posting {

// Status conversion: an issue from the line's Supplier under the source status, a receipt into its Receiver under the
// target status. Quantities are not converted to base units. Every update overwrites the row's remarks.

/// Posts one line of a conversion of the given kind.
void GoodsConvert_AddItems_ChangeInventory(PostingFrame& frame, Line& objBillItem, std::int32_t enumConvertType);

/// Takes back a stored conversion bill of the kind in its header's ReferFlag, or of kind 0 if it has no header.
void GoodsConvert_DelItems_ChangeInventory(PostingFrame& frame, const Text& cBillid);

// Borrowing: goods lent leave the line's Supplier, goods borrowed enter its Receiver, under the line's Goodstutas.

void BorrowOut_AddInventory(PostingFrame& frame, Line& objBillItems);
/// Posts a stored lending bill. In the lending pair the identifier posts, and the line object takes back.
void BorrowOut_ReduceInventory(PostingFrame& frame, const Text& cId);
void BorrowIn_AddInventory(PostingFrame& frame, Line& objBillItems);
void BorrowIn_ReduceInventory(PostingFrame& frame, const Text& cId);

// Assembly (ZZD) and disassembly (CXD): _ZJ posts the component rows in GoodsBillItems, _MJ the main item in GoodsBill.
// Updates use the raw Actualqty, and so do the main item's inserts; the components' inserts use the base quantity.
// A negative quantity gives two minus signs side by side in an update.

/// The result of a main-item member if the bill has no header row; nothing is posted then.
inline constexpr std::int32_t header_missing = 1;

void AddInventory_ZZD_ZJ(PostingFrame& frame, const Text& cId);
std::int32_t AddInventory_ZZD_MJ(PostingFrame& frame, const Text& cId);
void ReduceInventory_ZZD_ZJ(PostingFrame& frame, const Text& cId);
std::int32_t ReduceInventory_ZZD_MJ(PostingFrame& frame, const Text& cId);

void AddInventory_CXD_ZJ(PostingFrame& frame, const Text& cId);
/// An update sets InQty to OutQty less the bill's quantity and leaves OutQty as it is. Hosts rely on it.
std::int32_t AddInventory_CXD_MJ(PostingFrame& frame, const Text& cId);
void ReduceInventory_CXD_ZJ(PostingFrame& frame, const Text& cId);
std::int32_t ReduceInventory_CXD_MJ(PostingFrame& frame, const Text& cId);

}  // namespace vantlo::posting
