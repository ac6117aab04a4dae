#pragma once

#include <string>
#include <vector>

// The ways in which real life spoils a shop's data: rows, bills, units, headers, history, journal, other hosts, interrupted
// programs, restores of old backups.

namespace vantlo::test {

/// What becomes of the ledger when all is repaired that may be repaired without being named.
enum class Repaired {
    mended,     ///< it is as it was before
    untouched,  ///< it stays as it is: what spoilt it is no safe thing to undo, or it was right all the time
    in_part,    ///< every row is either as it was before or untouched
};

/// One way, on the shop of spoilt_shop_bills.
struct WayToSpoil {
    const char* name;
    const char* dialect;  ///< the only one on which it can happen; empty for all
    std::vector<const char*> statements;
    std::vector<std::string> causes;  ///< that verify names, in alphabetical order; none if ledger and bills agree
    Repaired repaired;
    bool has_journal = true;
};

// `archive` is saved before the journal begins, beside opening stock of which there is no bill (OPEN, 8 in W1).
inline constexpr const char* spoilt_shop_archive = R"({
  "units": [{"goods": "G1", "unit": "box", "factor": 10}, {"goods": "G2", "unit": "dozen", "factor": 12}],
  "bills": [
    {"kind": "stock-in", "id": "R0", "date": "2024-02-01", "lines": [
      {"goods": "G0", "quantity": 6, "receiver": "W1"}]}]})";
inline constexpr const char* spoilt_shop_bills = R"({"bills": [
    {"kind": "stock-in", "id": "R1", "date": "2024-03-01", "lines": [
      {"goods": "G1", "unit": "box", "quantity": 2, "receiver": "W1"},
      {"goods": "G2", "quantity": 7, "receiver": "W1"}]},
    {"kind": "stock-in", "id": "R2", "date": "2024-03-02", "lines": [
      {"goods": "G1", "unit": "box", "quantity": 3, "receiver": "W1"}]},
    {"kind": "stock-in", "id": "R3", "date": "2024-03-02", "lines": [
      {"goods": "G2", "unit": "dozen", "quantity": 1, "receiver": "W1"},
      {"goods": "G3", "quantity": 5, "receiver": "W1"}]},
    {"kind": "stock-out", "id": "C1", "date": "2024-03-03", "lines": [
      {"goods": "G1", "quantity": 5, "supplier": "W1"}]},
    {"kind": "stock", "id": "M1", "date": "2024-03-04", "lines": [
      {"goods": "G1", "quantity": 4, "receiver": "W2", "supplier": "W1"}]},
    {"kind": "borrow-out", "id": "B1", "date": "2024-03-05", "lines": [
      {"goods": "G3", "quantity": 2, "supplier": "W1", "status": 0}]},
    {"kind": "stock-in", "id": "X1", "date": "2024-03-05", "lines": [
      {"goods": "G4", "quantity": 9, "receiver": "W1"}]}]})";

// clang-format off
inline const std::vector<WayToSpoil>& ways_to_spoil() {
    using enum Repaired;
    static const std::vector<WayToSpoil> all = {
        // Rows of the ledger
        {"more received and on hand", "", {"update Inventory set InQty=InQty+1,CurrentQty=CurrentQty+1 where GId='G1' and WID='W1'"}, {"changed-outside"}, mended},
        {"less on hand than received less issued", "", {"update Inventory set CurrentQty=CurrentQty-3 where GId='G2'"}, {"changed-outside"}, mended},
        {"a ten-thousandth too much", "", {"update Inventory set InQty=InQty+0.0001,CurrentQty=CurrentQty+0.0001 where GId='G3'"}, {"changed-outside"}, mended},
        {"stock that became negative", "", {"update Inventory set OutQty=OutQty+900,CurrentQty=CurrentQty-900 where GId='G3'"}, {"negative-stock"}, mended},
        {"all stock set to zero at the end of the year", "", {"update Inventory set CurrentQty=0"}, {"changed-outside"}, mended},
        {"all quantities doubled", "", {"update Inventory set InQty=InQty*2,OutQty=OutQty*2,CurrentQty=CurrentQty*2 where GId<>'OPEN' and GId<>'G0'"}, {"changed-outside"}, mended},
        {"two hosts read, and the later overwrote the earlier", "", {"update Inventory set InQty=20,CurrentQty=11 where GId='G1' and WID='W1'"}, {"changed-outside"}, mended},
        {"a row deleted", "", {"delete from Inventory where GId='G2'"}, {"changed-outside"}, mended},
        {"all rows deleted", "", {"delete from Inventory"}, {"changed-outside"}, mended},
        {"a row that somebody made", "", {"insert into Inventory(WID,GId,Model1,Model2,Status,InQty,OutQty,CurrentQty) values('W9','G9','','',0,3,1,2)"}, {"changed-outside"}, mended},
        {"a row there twice", "", {"insert into Inventory select * from Inventory where GId='G2'"}, {"duplicate-key"}, mended},
        {"a row split into two", "", {"update Inventory set InQty=10,CurrentQty=10 where GId='G2'", "insert into Inventory(WID,GId,Model1,Model2,Status,InQty,OutQty,CurrentQty) values('W1','G2','','',0,9,0,9)"}, {"duplicate-key"}, mended},
        {"a blank behind a key", "", {"update Inventory set GId='G2 ' where GId='G2'"}, {"blanks-in-key"}, mended},
        {"a key in full-width characters", "", {"update Inventory set GId='Ｇ２' where GId='G2'"}, {"width-of-key"}, mended},
        {"another status", "", {"update Inventory set Status=7 where GId='G2'"}, {"wrong-status"}, mended},
        {"a row moved to another warehouse", "", {"update Inventory set WID='W3' where GId='G2'"}, {"changed-outside"}, mended},
        {"two rows' goods swapped", "", {"update Inventory set GId='swap' where GId='G2' and WID='W1'", "update Inventory set GId='G2' where GId='G3' and WID='W1'", "update Inventory set GId='G3' where GId='swap'"}, {"changed-outside"}, mended},
        {"a quantity that became null", "", {"update Inventory set OutQty=null where GId='G1' and WID='W1'"}, {"null-quantity"}, mended},
        {"all quantities null", "", {"update Inventory set InQty=null,OutQty=null,CurrentQty=null where GId='G3'"}, {"null-quantity"}, mended},
        {"a model that became null", "", {"update Inventory set Model1=null where GId='G2'"}, {"changed-outside"}, mended},
        {"opening stock changed", "", {"update Inventory set InQty=80,CurrentQty=80 where GId='OPEN'"}, {"changed-outside"}, mended},
        {"opening stock deleted", "", {"delete from Inventory where GId='OPEN'"}, {"changed-outside"}, mended},
        {"stock of an archived year changed", "", {"update Inventory set InQty=7 where GId='G0'"}, {"changed-outside"}, mended},
        {"a text as a quantity", "sqlite", {"update Inventory set InQty='many' where GId='G2'"}, {"broken-value"}, untouched},
        {"binary data as a quantity", "sqlite", {"update Inventory set InQty=x'0102' where GId='G2'"}, {"broken-value"}, untouched},
        {"a quantity beyond its range", "sqlite", {"update Inventory set InQty=1e300 where GId='G2'"}, {"broken-value"}, untouched},
        {"NaN as a quantity", "postgresql", {"update Inventory set InQty='NaN' where GId='G2'"}, {"broken-value"}, untouched},
        {"binary data as a key", "sqlite", {"update Inventory set GId=x'0102' where GId='G2'"}, {"broken-value", "changed-outside"}, in_part},
        {"a status beyond a Long", "sqlite", {"update Inventory set Status=99999999999 where GId='G2'"}, {"wrong-status"}, mended},
        {"a text as a status", "sqlite", {"update Inventory set Status='x' where GId='G2'"}, {"wrong-status"}, mended},
        // Bills
        {"a line's quantity edited", "", {"update StockBillItems set Actualqty=4 where BillId='R1' and ItemNo=2"}, {"edited-bill"}, untouched},
        {"a line's goods edited", "", {"update StockBillItems set Gid='G3' where BillId='R1' and ItemNo=2"}, {"edited-bill"}, untouched},
        {"a line's warehouse edited", "", {"update StockBillItems set Receiver='W2' where BillId='R1' and ItemNo=2"}, {"edited-bill"}, untouched},
        {"a line's unit edited", "", {"update StockBillItems set Unit='dozen' where BillId='R1' and ItemNo=2"}, {"edited-bill"}, untouched},
        {"a line's model edited", "", {"update StockBillItems set Model1='red' where BillId='R1' and ItemNo=2"}, {"edited-bill"}, untouched},
        {"a line added", "", {"insert into StockBillItems(BillId,ItemNo,Gid,Unit,Actualqty,Receiver,Model1,Model2) values('R2',2,'G3','',4,'W1','','')"}, {"edited-bill"}, untouched},
        {"a line deleted", "", {"delete from StockBillItems where BillId='R1' and ItemNo=2"}, {"edited-bill"}, untouched},
        {"a bill's status edited", "", {"update StockBill set ReferFlag=1 where Id='R2'"}, {"edited-bill"}, untouched},
        {"a bill made another kind", "", {"update StockBill set Kind='stock-out' where Id='R2'"}, {"edited-bill"}, untouched},
        {"a bill of no kind", "", {"update StockBill set Kind='gift' where Id='R2'"}, {"edited-bill"}, untouched},
        {"a bill of one kind less", "", {"update StockBill set Kind=null where Id='R2'"}, {"edited-bill"}, untouched},
        {"a bill's date edited", "", {"update StockBill set BillDate='2023-01-01' where Id='R2'"}, {}, untouched},
        {"a bill's remarks edited", "", {"update StockBill set Remarks='?' where Id='R2'"}, {}, untouched},
        {"a header deleted", "", {"delete from StockBill where Id='R1'"}, {"deleted-bill"}, untouched},
        {"lines deleted", "", {"delete from StockBillItems where BillId='R1'"}, {"edited-bill"}, untouched},
        {"a bill deleted", "", {"delete from StockBill where Id='R1'", "delete from StockBillItems where BillId='R1'"}, {"deleted-bill"}, untouched},
        {"a borrow bill deleted", "", {"delete from GBorrow", "delete from GBorrowItems"}, {"deleted-bill"}, untouched},
        {"all stock bills deleted", "", {"delete from StockBill", "delete from StockBillItems"}, {"deleted-bill"}, untouched},
        {"a header under another id", "", {"update StockBill set Id='R9' where Id='R2'"}, {"deleted-bill"}, untouched},
        {"a bill under another id", "", {"update StockBill set Id='R9' where Id='R2'", "update StockBillItems set BillId='R9' where BillId='R2'"}, {"deleted-bill"}, untouched},
        {"a bill copied under another id", "", {"insert into StockBill(Id,Kind,BillDate,ReferFlag) select 'R9',Kind,'2099-01-01',ReferFlag from StockBill where Id='R2'", "insert into StockBillItems(BillId,ItemNo,Gid,Unit,Actualqty,Receiver,Model1,Model2) select 'R9',ItemNo,Gid,Unit,Actualqty,Receiver,Model1,Model2 from StockBillItems where BillId='R2'"}, {"not-posted"}, untouched},
        {"a line's quantity null", "", {"update StockBillItems set Actualqty=null where BillId='R1' and ItemNo=2"}, {"cannot-judge", "refused-bill"}, untouched},
        {"a text as a line's quantity", "sqlite", {"update StockBillItems set Actualqty='two' where BillId='R1' and ItemNo=2"}, {"broken-value", "cannot-judge", "refused-bill"}, untouched},
        {"NaN as a line's quantity", "postgresql", {"update StockBillItems set Actualqty='NaN' where BillId='R1' and ItemNo=2"}, {"broken-value", "cannot-judge", "refused-bill"}, untouched},
        {"binary data as a line's goods", "sqlite", {"update StockBillItems set Gid=x'0102' where BillId='R1' and ItemNo=2"}, {"broken-value", "cannot-judge", "refused-bill"}, untouched},
        {"binary data as a header's id", "sqlite", {"update StockBill set Id=x'0102' where Id='R2'"}, {"broken-value", "deleted-bill"}, untouched},
        {"a quantity that no ledger holds", "", {"update StockBillItems set Actualqty=3e38 where BillId='R2'"}, {"cannot-judge", "refused-bill"}, untouched},
        {"an edited bill beside a changed row", "", {"update StockBillItems set Actualqty=4 where BillId='R1' and ItemNo=2", "update Inventory set InQty=InQty+1,CurrentQty=CurrentQty+1 where GId='G3'"}, {"changed-outside", "edited-bill"}, mended},
        {"an edited bill on a changed row", "", {"update StockBillItems set Actualqty=4 where BillId='R1' and ItemNo=2", "update Inventory set InQty=InQty+1,CurrentQty=CurrentQty+1 where GId='G2'"}, {"edited-bill"}, untouched},
        {"an archived bill deleted", "", {"delete from StockBill where Id='R0'", "delete from StockBillItems where BillId='R0'"}, {}, untouched},
        {"an archived bill edited", "", {"update StockBillItems set Actualqty=4 where BillId='R0'"}, {}, untouched},
        // Units
        {"a factor corrected", "", {"update GoodsUnit set UnitConverter=99 where id='G1'"}, {"unit-factor"}, untouched},
        {"a factor halved", "", {"update GoodsUnit set UnitConverter=5 where id='G1'"}, {"unit-factor"}, untouched},
        {"a factor with decimals", "", {"update GoodsUnit set UnitConverter=12.5 where id='G2'"}, {"unit-factor"}, untouched},
        {"a factor of 0", "", {"update GoodsUnit set UnitConverter=0 where id='G1'"}, {"unit-factor"}, untouched},
        {"a factor that became null", "", {"update GoodsUnit set UnitConverter=null where id='G1'"}, {"unit-factor"}, untouched},
        {"a unit deleted", "", {"delete from GoodsUnit where id='G1'"}, {"unit-factor"}, untouched},
        {"all units deleted", "", {"delete from GoodsUnit"}, {"edited-bill", "unit-factor"}, untouched},
        {"two factors corrected", "", {"update GoodsUnit set UnitConverter=UnitConverter*3"}, {"unit-factor"}, untouched},
        {"a factor corrected, and one of its bills edited", "", {"update GoodsUnit set UnitConverter=99 where id='G1'", "update StockBillItems set Actualqty=4 where BillId='R2'"}, {"edited-bill"}, untouched},
        {"a text as a factor", "sqlite", {"update GoodsUnit set UnitConverter='ten' where id='G1'"}, {"broken-value", "edited-bill"}, untouched},
        {"NaN as a factor", "postgresql", {"update GoodsUnit set UnitConverter='NaN' where id='G1'"}, {"broken-value", "edited-bill"}, untouched},
        // The history
        {"the history emptied", "", {"delete from BillHistory where BillId<>'R0'"}, {}, untouched},
        {"an entry of the history deleted", "", {"delete from BillHistory where BillId='R1'"}, {}, untouched},
        {"an entry of the history broken", "", {"update BillHistory set Content='{' where Content is not null"}, {"unreadable-history"}, untouched},
        {"an entry of the history broken, beside a changed row", "", {"update BillHistory set Content='{' where Content is not null", "update Inventory set InQty=InQty+1 where GId='G2'"}, {"changed-outside", "unreadable-history"}, mended},
        {"binary data in the history", "sqlite", {"update BillHistory set Content=x'0102' where Content is not null"}, {"broken-value", "unreadable-history"}, untouched},
        // Other hosts, interrupted programs
        {"a host stored a bill and did not post it", "", {"insert into StockBill(Id,Kind,BillDate,ReferFlag) values('H1','stock-in','2099-01-01',0)", "insert into StockBillItems(BillId,ItemNo,Gid,Unit,Actualqty,Receiver,Model1,Model2) values('H1',1,'G7','',4,'W1','','')"}, {"not-posted"}, untouched},
        {"a host posted a bill without naming it", "", {"insert into StockBill(Id,Kind,BillDate,ReferFlag) values('H1','stock-in','2099-01-01',0)", "insert into StockBillItems(BillId,ItemNo,Gid,Unit,Actualqty,Receiver,Model1,Model2) values('H1',1,'G2','',4,'W1','','')", "update Inventory set InQty=InQty+4,CurrentQty=CurrentQty+4 where GId='G2'"}, {}, untouched},
        {"a host posted a back-dated bill without naming it", "", {"insert into StockBill(Id,Kind,BillDate,ReferFlag) values('H1','stock-in','2020-01-01',0)", "insert into StockBillItems(BillId,ItemNo,Gid,Unit,Actualqty,Receiver,Model1,Model2) values('H1',1,'G2','',4,'W1','','')", "update Inventory set InQty=InQty+4,CurrentQty=CurrentQty+4 where GId='G2'"}, {}, untouched},
        {"a host posted a bill twice", "", {"insert into StockBill(Id,Kind,BillDate,ReferFlag) values('H1','stock-in','2099-01-01',0)", "insert into StockBillItems(BillId,ItemNo,Gid,Unit,Actualqty,Receiver,Model1,Model2) values('H1',1,'G2','',4,'W1','','')", "update Inventory set InQty=InQty+8,CurrentQty=CurrentQty+8 where GId='G2'"}, {"posted-twice"}, untouched},
        {"a host was killed after the first line", "", {"insert into StockBill(Id,Kind,BillDate,ReferFlag) values('H1','stock-in','2099-01-01',0)", "insert into StockBillItems(BillId,ItemNo,Gid,Unit,Actualqty,Receiver,Model1,Model2) values('H1',1,'G2','',4,'W1','','')", "insert into StockBillItems(BillId,ItemNo,Gid,Unit,Actualqty,Receiver,Model1,Model2) values('H1',2,'G3','',4,'W1','','')", "update Inventory set InQty=InQty+4,CurrentQty=CurrentQty+4 where GId='G2'"}, {"posted-in-part"}, untouched},
        {"a row changed in a shop where a host names no bills", "", {"insert into StockBill(Id,Kind,BillDate,ReferFlag) values('H1','stock-in','2099-01-01',0)", "insert into StockBillItems(BillId,ItemNo,Gid,Unit,Actualqty,Receiver,Model1,Model2) values('H1',1,'G2','',4,'W1','','')", "update Inventory set InQty=InQty+4,CurrentQty=CurrentQty+4 where GId='G2'", "update Inventory set InQty=InQty+1,CurrentQty=CurrentQty+1 where GId='G3'"}, {"changed-quantity"}, untouched},
        {"a host took a bill back and deleted it", "", {"update Inventory set InQty=InQty-30,CurrentQty=CurrentQty-30 where GId='G1' and WID='W1'", "delete from StockBill where Id='R2'", "delete from StockBillItems where BillId='R2'"}, {}, untouched},
        {"a host took a bill back and was killed before deleting it", "", {"update Inventory set InQty=InQty-30,CurrentQty=CurrentQty-30 where GId='G1' and WID='W1'"}, {"changed-outside"}, mended},
        {"a bill that was taken back, posted again", "", {"update Inventory set InQty=InQty+9,CurrentQty=CurrentQty+9 where GId='G4'"}, {"not-taken-back"}, mended},
        // Backups
        {"the bills of an older backup", "", {"delete from StockBill where Id in ('M1','C1')", "delete from StockBillItems where BillId in ('M1','C1')"}, {"deleted-bill"}, untouched},
        {"the ledger of an older backup", "", {"delete from Inventory where GId in ('G1','G3')", "insert into Inventory(WID,GId,Model1,Model2,Status,InQty,OutQty,CurrentQty) values('W1','G1','','',0,50,0,50)"}, {"changed-outside"}, mended},
        {"the ledger emptied past the triggers", "mariadb", {"truncate table Inventory"}, {"not-in-journal"}, mended},
        {"the ledger of an older backup, past the triggers", "postgresql", {"set session_replication_role = replica", "update Inventory set InQty=50,OutQty=0,CurrentQty=50 where GId='G1' and WID='W1'", "set session_replication_role = origin"}, {"not-in-journal"}, mended},
        // The journal
        {"a trigger dropped, and a row changed", "sqlite", {"drop trigger StockMovementOfUpdate", "update Inventory set InQty=InQty+1 where GId='G2'"}, {"unbalanced"}, untouched},
        {"a trigger disabled, and a row changed", "postgresql", {"alter table Inventory disable trigger StockMovementOfUpdate", "update Inventory set InQty=InQty+1 where GId='G2'"}, {"unbalanced"}, untouched},
        {"the movements' table dropped", "sqlite", {"drop table StockMovement"}, {"extra-row"}, untouched},
        // Without a journal
        {"a row changed, without a journal", "", {"update Inventory set InQty=InQty+1,CurrentQty=CurrentQty+1 where GId='G2'"}, {"changed-quantity", "extra-row"}, untouched, false},
        {"a factor corrected, without a journal", "", {"update GoodsUnit set UnitConverter=99 where id='G1'"}, {"changed-quantity", "extra-row"}, untouched, false},
        {"a text as a line's quantity, without a journal", "sqlite", {"update StockBillItems set Actualqty='two' where BillId='R1' and ItemNo=2"}, {"broken-value", "cannot-judge", "extra-row", "refused-bill"}, untouched, false},
    };
    return all;
}
// clang-format on

}  // namespace vantlo::test
