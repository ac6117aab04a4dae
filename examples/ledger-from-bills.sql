-- What the ledger must hold after the bills of a shop have been saved, computed from the bill tables alone, beside what
-- it does hold. Prints the rows that differ, and nothing when ledger and bills agree.
--
-- Run with: sqlite3 -header shop.db < examples/ledger-from-bills.sql

create temp view factor as
select id, Unit, case when coalesce(UnitConverter, 0) = 0 then 1 else round(UnitConverter, 4) end as factor
from GoodsUnit;

-- One row for each side of each line: date, key, quantity in the line's unit, factor, and whether goods come in or go out.
--   how   'base'  the quantity is converted to base units
--         'raw'   it is posted as it stands
--         'first_raw'   as it stands where the ledger row is new, converted where it exists (repaired goods coming in)
--         'first_base'  converted where the ledger row is new, as it stands where it exists (components)
create temp view side as
with stock as (
    select b.Kind, b.BillDate, b.ReferFlag, i.*, coalesce(f.factor, 1) as factor
    from StockBill b join StockBillItems i on i.BillId = b.Id left join factor f on f.id = i.Gid and f.Unit = i.Unit
), repair as (
    select b.Kind, b.BillDate, b.Receiver, b.Supplier, i.*, coalesce(f.factor, 1) as factor
    from RGstockBill b join RGstockBillItems i on i.BillId = b.id left join factor f on f.id = i.Gid and f.Unit = i.Unit
), borrow as (
    select b.Kind, b.BillDate, i.*, coalesce(f.factor, 1) as factor
    from GBorrow b join GBorrowItems i on i.BillId = b.Id left join factor f on f.id = i.Gid and f.Unit = i.Unit
), part as (
    select b.Kind, b.BillDate, i.*, coalesce(f.factor, 1) as factor
    from GoodsBill b join GoodsBillItems i on i.BillId = b.Id left join factor f on f.id = i.Gid and f.Unit = i.Unit
), conversion(kind, source, target) as (values (1, 0, 1), (2, 0, 2), (3, 2, 0), (4, 2, 1), (5, 1, 2), (6, 1, 0))
select BillDate as day, Receiver as wid, Gid as gid, Model1 as m1, Model2 as m2, 0 as status, Actualqty as quantity,
       factor, 'in' as way, 'base' as how from stock where Kind = 'stock'
union all select BillDate, Supplier, Gid, Model1, Model2, 0, Actualqty, factor, 'out', 'base' from stock where Kind = 'stock'
union all select BillDate, Receiver, Gid, Model1, Model2, ReferFlag, Actualqty, factor, 'in', 'base'
    from stock where Kind in ('stock-in', 'overage')
union all select BillDate, Supplier, Gid, Model1, Model2, ReferFlag, Actualqty, factor, 'out', 'base'
    from stock where Kind in ('stock-out', 'loss')
union all select BillDate, Supplier, Gid, Model1, Model2, ReferFlag, abs(Actualqty), factor, 'out', 'base'
    from stock where Kind = 'stock-out-magnitude'
union all select BillDate, Receiver, Gid, Model1, Model2, Goodstutas, abs(Actualqty), factor, 'in', 'base'
    from stock where Kind = 'sales-return'
union all select BillDate, Supplier, Gid, Model1, Model2, source, Qty, 1, 'out', 'raw'
    from stock join conversion on conversion.kind = ReferFlag where stock.Kind = 'conversion'
union all select BillDate, Receiver, Gid, Model1, Model2, target, Qty, 1, 'in', 'raw'
    from stock join conversion on conversion.kind = ReferFlag where stock.Kind = 'conversion'
union all select BillDate, Receiver, Gid, Model1, Model2, iif(Kind = 'transfer', 1, 2), Qty, factor, 'in', 'base'
    from repair where Kind in ('return-repair', 'transfer')
union all select BillDate, Supplier, Gid, Model1, Model2, iif(Kind = 'transfer', 1, 2), Qty, factor, 'out', 'base'
    from repair where Kind in ('return-repair', 'transfer')
union all select BillDate, WID, Gid, Model1, Model2, 1, Qty, factor, iif(Kind = 'repair-in', 'in', 'out'), 'base'
    from repair where Kind in ('repair-in', 'repair-out')
union all select BillDate, StatusWID, Gid, Model1, Model2, GoodsStatus, Qty, factor, 'in', 'base'
    from repair where Kind = 'repair-in-status'
union all select BillDate, WID, Gid, Model1, Model2, GoodsStatus, Qty, factor, 'in', 'first_raw'
    from repair where Kind = 'repaired-in'
union all select BillDate, WID, Gid, Model1, Model2, GoodsStatus, Qty, factor, 'out', 'base'
    from repair where Kind = 'repaired-out'
union all select BillDate, Supplier, Gid, Model1, Model2, Goodstutas, UQty, factor, 'out', 'base'
    from borrow where Kind = 'borrow-out'
union all select BillDate, Receiver, Gid, Model1, Model2, Goodstutas, UQty, factor, 'in', 'base'
    from borrow where Kind = 'borrow-in'
union all select BillDate, WareHouseID, Gid, Model1, Model2, Goodstutas, Actualqty, factor,
    iif(Kind = 'assembly', 'out', 'in'), 'first_base' from part
union all select BillDate, WareHouseID, Gid, Model1, Model2, Goodstutas, Actualqty, 1,
    iif(Kind = 'assembly', 'in', 'out'), 'raw' from GoodsBill;

create temp table side_row as select * from side;
create index temp.side_key on side_row(wid, gid, m1, m2, status, day);

create temp table expected as
select wid, gid, m1, m2, status,
       round(sum(iif(way = 'in', moved, 0)), 4) as received,
       round(sum(iif(way = 'out', moved, 0)), 4) as issued,
       round(sum(iif(way = 'in', moved, -moved)), 4) as on_hand
from (
    select a.*, a.quantity * case how
        when 'base' then factor
        when 'raw' then 1
        else iif((how = 'first_base') = not exists (
            select 1 from side_row b
            where b.wid = a.wid and b.gid = a.gid and b.m1 = a.m1 and b.m2 = a.m2 and b.status = a.status and b.day < a.day),
            factor, 1)
        end as moved
    from side_row a)
group by wid, gid, m1, m2, status
having received <> 0 or issued <> 0 or on_hand <> 0;

create temp table held as
select WID as wid, GId as gid, Model1 as m1, Model2 as m2, Status as status, round(sum(InQty), 4) as received,
       round(sum(OutQty), 4) as issued, round(sum(CurrentQty), 4) as on_hand
from Inventory
group by WID, GId, Model1, Model2, Status
having received <> 0 or issued <> 0 or on_hand <> 0;

select 'bills' as source, * from (select * from expected except select * from held)
union all
select 'ledger', * from (select * from held except select * from expected)
order by 2, 3, 4, 5, 6, 1;
