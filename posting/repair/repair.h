#pragma once

#include "ado/connection.h"
#include "posting/line.h"

/// The members that post the bills kept in RGstockBill and RGstockBillItems; see posting/stock/stock.h for what holds
/// for all members.
namespace vantlo::posting {

// Return and repair bill: goods of status 2 from the warehouse Supplier to the warehouse Receiver.

void RG_AddInventory_Db(Connection* connection, Line& objBillItems, const Text& Receiver, const Text& Supplier);
void RG_ReduceInventory_Db(Connection* connection, const Text& cId);

// Return and repair lines: one movement of one ledger row. In moves the received counter and Out the issued one; Add
// raises the stock on hand and Reduce lowers it. The Status members go to StatusWID under the line's GoodsStatus, their
// plain twins to WID under status 1.

void RG_In_AddInventory(Connection* connection, Line& rgsStockItemObj);
void RG_In_AddInventoryStatus(Connection* connection, Line& rgsStockItemObj);
void RG_In_ReduceInventory(Connection* connection, Line& rgsStockItemObj);
void RG_In_ReduceInventoryStatus(Connection* connection, Line& rgsStockItemObj);
void RG_Out_AddInventory(Connection* connection, Line& rgsStockItemObj);
void RG_Out_ReduceInventory(Connection* connection, Line& rgsStockItemObj);

// Transfer: goods of status 1 from the warehouse Supplier to the warehouse Receiver.

void Hj_AddInventory_Db(Connection* connection, Line& objBillItems, const Text& Receiver, const Text& Supplier);
void Hj_ReduceInventory_Db(Connection* connection, const Text& cId);

// Repaired goods: one movement of the row of WID under the line's GoodsStatus, named as the lines above.

void XFP_In_ReduceInventory(Connection* connection, Line& rgsStockItemObj);

/// Units    An inserted row takes the line's Qty as it stands, in the line's own unit; an update the base quantity.
void XFP_In_AddInventory(Connection* connection, Line& rgsStockItemObj);
void XFP_Out_ReduceInventory(Connection* connection, Line& rgsStockItemObj);
void XFP_Out_AddInventory(Connection* connection, Line& rgsStockItemObj);

}  // namespace vantlo::posting
