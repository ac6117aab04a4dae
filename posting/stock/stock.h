#pragma once

#include "ado/connection.h"
#include "automation/variant_bool.h"
#include "posting/line.h"

/// The members that post the bills kept in StockBill and StockBillItems.
///
/// Each runs its statements through `connection`, the instance's own, and lets every failure out to the member's trap:
/// statements already run stay applied. Members given a line post the line being saved; members given an identifier
/// read the stored lines.
namespace vantlo::posting {

// Stock bill: a receipt into the line's Receiver and an issue out of its Supplier, ordinary stock (status 0).

/// Posts one stock-bill line: the receipt first, then the issue.
/// Units    The quantity is multiplied in double precision and rounded once, in this member alone.
void AddInventory_Db(Connection* connection, Line& objBillItems);

/// Takes back every line of a stored stock bill: the receipt first, then the issue.
void ReduceInventory_Db(Connection* connection, const Text& cId);

// Stock-in: a receipt into the line's Receiver under the status iCPZT.

void In_AddInventory(Connection* connection, Line& objBillItems, std::int16_t iCPZT);

/// Takes back a stored stock-in bill, or those of its lines whose goods are of class sZLID (unless empty) and carry the
/// main-goods flag iZYCP (unless -1).
void In_ReduceInventory(Connection* connection, const Text& cId, const Text& sZLID, std::int16_t iZYCP,
                        std::int16_t iCPZT);

// Stock-out: an issue out of the line's Supplier under the status iCPZT; bUseAbs posts the magnitude of the product.

/// Takes back a stored stock-out bill: the goods return to stock.
void Out_AddInventory(Connection* connection, const Text& cId, VariantBool bUseAbs, std::int16_t iCPZT);
void Out_ReduceInventory(Connection* connection, Line& objBillItems, VariantBool bUseAbs, std::int16_t iCPZT);

// Loss: an issue out of the line's warehouse. Overage: a receipt into it. Taken back under the header's ReferFlag.

void Loss_ReduceInventory(Connection* connection, Line& objBillItems, std::int16_t iGoodsStatus);
void Loss_AddInventory(Connection* connection, const Text& cId);
void Over_AddInventory(Connection* connection, Line& objBillItems, std::int16_t iGoodsStatus);
void Over_ReduceInventory(Connection* connection, const Text& cId);

// Sales return: a receipt of the magnitude into the line's Receiver under the line's own Goodstutas.

void SaleIn_AddInventory(Connection* connection, Line& objBillItems);
void SaleIn_ReduceInventory(Connection* connection, const Text& cId);

}  // namespace vantlo::posting
