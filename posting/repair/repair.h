#pragma once

#include "posting/line.h"
#include "posting/posting_frame.h"

/// The members that post the bills kept in RGstockBill and RGstockBillItems; see posting/stock/stock.h for what holds
/// for all members.
namespace vantlo::posting {

// Return and repair bill: goods of status 2 from the warehouse Supplier to the warehouse Receiver.

void RG_AddInventory_Db(PostingFrame& frame, Line& objBillItems, const Text& Receiver, const Text& Supplier);
void RG_ReduceInventory_Db(PostingFrame& frame, const Text& cId);

// Return and repair lines: one movement of one ledger row. In changes InQty and Out changes OutQty; Add raises CurrentQty
// and Reduce lowers it. The Status members post to StatusWID under the line's GoodsStatus, the others to WID under
// status 1.

void RG_In_AddInventory(PostingFrame& frame, Line& rgsStockItemObj);
void RG_In_AddInventoryStatus(PostingFrame& frame, Line& rgsStockItemObj);
void RG_In_ReduceInventory(PostingFrame& frame, Line& rgsStockItemObj);
void RG_In_ReduceInventoryStatus(PostingFrame& frame, Line& rgsStockItemObj);
void RG_Out_AddInventory(PostingFrame& frame, Line& rgsStockItemObj);
void RG_Out_ReduceInventory(PostingFrame& frame, Line& rgsStockItemObj);

// Transfer: goods of status 1 from the warehouse Supplier to the warehouse Receiver.

void Hj_AddInventory_Db(PostingFrame& frame, Line& objBillItems, const Text& Receiver, const Text& Supplier);
void Hj_ReduceInventory_Db(PostingFrame& frame, const Text& cId);

// Repaired goods: one movement of the row of WID under the line's GoodsStatus. In, Out, Add and Reduce mean the same.

void XFP_In_ReduceInventory(PostingFrame& frame, Line& rgsStockItemObj);

/// Units    An insert uses the line's Qty unconverted, an update the base quantity.
void XFP_In_AddInventory(PostingFrame& frame, Line& rgsStockItemObj);
void XFP_Out_ReduceInventory(PostingFrame& frame, Line& rgsStockItemObj);
void XFP_Out_AddInventory(PostingFrame& frame, Line& rgsStockItemObj);

}  // namespace vantlo::posting
