#pragma once

#include <cstdint>

#include "ado/connection.h"
#include "posting/line.h"

/// The members that post status conversions, borrowing, assembly and disassembly; see posting/stock/stock.h for what
/// holds for all members.
namespace vantlo::posting {

// Status conversion: an issue from the line's Supplier under the source status, a receipt into its Receiver under the
// target status. Quantities stand as they are, never converted; every update overwrites the row's remarks.

/// Posts one line of a conversion of the given kind.
void GoodsConvert_AddItems_ChangeInventory(Connection* connection, Line& objBillItem, std::int32_t enumConvertType);

/// Takes back a stored conversion bill of the kind that its header's ReferFlag says.
void GoodsConvert_DelItems_ChangeInventory(Connection* connection, const Text& cBillid);

// Borrowing: goods lent out leave the line's Supplier, goods borrowed enter its Receiver, under the line's Goodstutas.

void BorrowOut_AddInventory(Connection* connection, Line& objBillItems);
/// Posts a stored lending bill: here the identifier posts and the line takes back.
void BorrowOut_ReduceInventory(Connection* connection, const Text& cId);
void BorrowIn_AddInventory(Connection* connection, Line& objBillItems);
void BorrowIn_ReduceInventory(Connection* connection, const Text& cId);

// Assembly (ZZD) and disassembly (CXD): _ZJ posts the component rows of GoodsBillItems, _MJ the main item in the header
// row of GoodsBill. Updates move the row's raw Actualqty; only the components' inserts are converted to base units. The
// quantity follows its sign directly, so that a negative one puts two minus signs side by side.

/// What a main-item member returns when the bill has no header row; nothing is done then.
inline constexpr std::int32_t header_missing = 1;

void AddInventory_ZZD_ZJ(Connection* connection, const Text& cId);
std::int32_t AddInventory_ZZD_MJ(Connection* connection, const Text& cId);
void ReduceInventory_ZZD_ZJ(Connection* connection, const Text& cId);
std::int32_t ReduceInventory_ZZD_MJ(Connection* connection, const Text& cId);

void AddInventory_CXD_ZJ(Connection* connection, const Text& cId);
/// On a row that exists, the received quantity becomes the issued one less the bill's; the issued one stays.
std::int32_t AddInventory_CXD_MJ(Connection* connection, const Text& cId);
void ReduceInventory_CXD_ZJ(Connection* connection, const Text& cId);
std::int32_t ReduceInventory_CXD_MJ(Connection* connection, const Text& cId);

}  // namespace vantlo::posting
