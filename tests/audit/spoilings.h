#pragma once

#include <string>
#include <vector>

#include "audit/comparison.h"
#include "component/inventory_class.h"
#include "support/stock_bills.h"
#include "tests/support/sample_shop.h"

// The faults that a ledger can have, each on different rows of the sample shop.

namespace vantlo::test {

/// A change of the sample shop's ledger, and the cause that verify must report for it.
struct Spoiling {
    Cause cause;
    const char* name;
    std::vector<TextView> statements;  ///< what was done to rows; empty for what was done with a bill
    const char16_t* bill = nullptr;    ///< a stock bill that was saved before
    bool is_reversed = false;          ///< and taken back
    int postings = 0;                  ///< additional postings of the bill; -1 for one reversal
    TextView afterwards{};             ///< a statement after all that
};

// clang-format off
inline const std::vector<Spoiling>& spoilings() {
    static const std::vector<Spoiling> all = {
        {Cause::changed_quantity, "a changed quantity",
         {u"update Inventory set InQty=InQty+1,CurrentQty=CurrentQty+1 where WID='W01' and GId='G010' and Status=0"}},
        {Cause::missing_row, "a row that was deleted", {u"delete from Inventory where WID='W01' and GId='G012' and Status=0"}},
        {Cause::extra_row, "a row that somebody made",
         {u"insert into Inventory(WID,GId,Model1,Model2,Status,Class,Unit,InQty,OutQty,CurrentQty,Remarks) "
          u"values('W01','G999','','',0,'','',3,1,2,'')"}},
        {Cause::duplicate_key, "a row that is there twice",
         {u"insert into Inventory select * from Inventory where WID='W01' and GId='G014' and Status=0"}},
        {Cause::blanks_in_key, "a key with a blank behind it",
         {u"update Inventory set GId='G019 ' where WID='W01' and GId='G019' and Status=0"}},
        {Cause::width_of_key, "a key in full-width characters",
         {u"update Inventory set GId='Ｇ０２４' where WID='W01' and GId='G024' and Status=0"}},
        {Cause::null_quantity, "a quantity that is null",
         {u"update Inventory set OutQty=null where WID='W01' and GId='G025' and Status=0"}},
        {Cause::unbalanced, "a quantity received that does not balance",
         {u"update Inventory set InQty=InQty+0.25 where WID='W01' and GId='G028' and Status=0"}},
        {Cause::negative_stock, "stock that became negative",
         {u"update Inventory set OutQty=OutQty+900,CurrentQty=CurrentQty-900 where WID='W01' and GId='G031' and Status=0"}},
        {Cause::wrong_status, "a row under the wrong status",
         {u"update Inventory set Status=7 where WID='W01' and GId='G034' and Status=0"}},
        {Cause::posted_twice, "a bill posted twice", {}, u"TWICE", false, +1},
        {Cause::not_posted, "a bill that is not posted", {}, u"UNPOSTED", false, -1},
        {Cause::posted_in_part, "a posting that a crash cut off after its first statement", {}, u"CRASH", false, -1,
         u"update Inventory set InQty=InQty+4,CurrentQty=CurrentQty+4 where WID='W-CRASH' and GId='G001'"},
        {Cause::not_reversed, "a bill posted again after it was taken back", {}, u"AGAIN", true, +1},
        {Cause::reversed_twice, "a bill taken back twice", {}, u"GONE", true, -1},
        {Cause::refused_bill, "a bill that no number holds",
         {u"insert into StockBill(Id,Kind,BillDate,ReferFlag) values('HUGE','stock-in','2024-03-05',0)",
          u"insert into StockBillItems(BillId,ItemNo,Gid,Unit,Actualqty,Receiver) values('HUGE',1,'G001','台',3e38,'W01')"}},
    };
    return all;
}
// clang-format on

/// Posts a bill of one line; with -1, reverses it.
inline void post_beside(NativeConnection& database, Bill bill, int sign) {
    Bill signed_bill = stock_bill(bill.id, u"G001", 4 * sign, u"W-" + bill.id, u"W01");
    RecordLine line(signed_bill.lines.front(), nullptr);
    Inventory_Class component;
    component.set_ADOConn(&database);
    component.call(u"AddInventory_Db", {line});
    component.set_ADOConn(nullptr);
}

inline void spoil(const Owned<NativeConnection>& database, const Spoiling& spoiling) {
    for (const TextView statement : spoiling.statements) database->run(statement);
    if (spoiling.bill == nullptr) return;
    const Bill bill = stock_bill(spoiling.bill, u"G001", 4, u"W-" + Text(spoiling.bill), u"W01");
    Bookkeeping bookkeeping([&] { return database; });
    bookkeeping.save(bill);
    if (spoiling.is_reversed) bookkeeping.reverse(*bill.kind, bill.id);
    post_beside(*database, bill, spoiling.postings);
    if (!spoiling.afterwards.empty()) database->run(spoiling.afterwards);
}

}  // namespace vantlo::test
