#pragma once

#include "automation/variant_bool.h"
#include "posting/line.h"
#include "posting/posting_frame.h"

/// The members that post the bills kept in StockBill and StockBillItems.
///
/// A member with a line object posts the line being saved; a member with a bill's identifier takes back the stored
/// lines. Every statement runs through the instance's ADOConn by way of the frame.
/// Errors   raised to the member's trap; statements already run stay applied.
namespace vantlo::posting {

// Stock bill: a receipt into the line's Receiver and an issue from its Supplier, both under status 0.

/// Posts one stock-bill line: the receipt first, then the issue.
/// Units    Unlike the other members, it multiplies in double precision and rounds the product to Currency.
void AddInventory_Db(PostingFrame& frame, Line& objBillItems);

/// Takes back every line of a stored stock bill: the receipt first, then the issue.
void ReduceInventory_Db(PostingFrame& frame, const Text& cId);

// Stock-in: a receipt into the line's Receiver under the status iCPZT.

void In_AddInventory(PostingFrame& frame, Line& objBillItems, std::int16_t iCPZT);

/// Takes back a stored stock-in bill. A class sZLID that is not empty and a main-goods flag iZYCP other than -1 limit it
/// to the lines of such goods.
void In_ReduceInventory(PostingFrame& frame, const Text& cId, const Text& sZLID, std::int16_t iZYCP,
                        std::int16_t iCPZT);

// Stock-out: an issue from the line's Supplier under the status iCPZT. bUseAbs = True posts the product's magnitude.

void Out_AddInventory(PostingFrame& frame, const Text& cId, VariantBool bUseAbs, std::int16_t iCPZT);
void Out_ReduceInventory(PostingFrame& frame, Line& objBillItems, VariantBool bUseAbs, std::int16_t iCPZT);

// Loss: an issue from the line's warehouse. Overage: a receipt into it. Both are taken back under the status in the
// header's ReferFlag, or 0 if the bill has no header.

void Loss_ReduceInventory(PostingFrame& frame, Line& objBillItems, std::int16_t iGoodsStatus);
void Loss_AddInventory(PostingFrame& frame, const Text& cId);
void Over_AddInventory(PostingFrame& frame, Line& objBillItems, std::int16_t iGoodsStatus);
void Over_ReduceInventory(PostingFrame& frame, const Text& cId);

// Sales return: a receipt of the quantity's magnitude into the line's Receiver under the line's Goodstutas.

void SaleIn_AddInventory(PostingFrame& frame, Line& objBillItems);
void SaleIn_ReduceInventory(PostingFrame& frame, const Text& cId);

}  // namespace vantlo::posting
