-- The journal of stock movements for Microsoft SQL Server 2016 SP1 and later: from now on the database writes every
-- change of the ledger down by itself, whichever program makes it, in the transaction of the change. To be run as a
-- whole in one transaction by the owner of Inventory; where the journal is on already it changes nothing.
-- sqlserver-journal-off.sql ends it; after that sqlserver-journal-remove.sql removes all that it wrote.
--
-- No other user needs rights on the journal: its owner is that of the ledger, and along such a chain none are asked for.

-- Numbers come from a sequence, not from an identity: @@identity is left to the program whose statement it is.
if not exists (select * from sys.sequences where name = 'StockMovementNumber')
    create sequence StockMovementNumber as bigint start with 1;

-- One row for each ledger key that a statement changed: what it added to the three quantities, and what they are after
-- it in the rows that it changed, null where there is none. Changes are exact to four decimals; a quantity that is null
-- counts as 0 in them.
--
-- Action is what the statement did: insert, update, delete; `opening` for a row that was there when the journal began,
-- `gap` for what changed while it was off. A changed key is a movement out of the old one and a movement into the new
-- one.
if object_id('StockMovement') is null create table StockMovement (
    MovementNo     bigint not null default (next value for StockMovementNumber) primary key,
    MovedAt        datetime default current_timestamp,
    Action         nvarchar(40) collate Chinese_PRC_BIN2 not null,
    DbUser         nvarchar(255),
    Program        nvarchar(255),
    WID            nvarchar(255) collate Chinese_PRC_BIN2,
    GId            nvarchar(255) collate Chinese_PRC_BIN2,
    Model1         nvarchar(255) collate Chinese_PRC_BIN2,
    Model2         nvarchar(255) collate Chinese_PRC_BIN2,
    Status         int,
    InChange       decimal(20,4) not null,
    OutChange      decimal(20,4) not null,
    CurrentChange  decimal(20,4) not null,
    InAfter        decimal(20,4),
    OutAfter       decimal(20,4),
    CurrentAfter   decimal(20,4),
    BillKind       nvarchar(40) collate Chinese_PRC_BIN2,
    BillId         nvarchar(40) collate Chinese_PRC_BIN2,
    ItemNo         int,
    Member         nvarchar(40) collate Chinese_PRC_BIN2
);
-- Stock cards: the movements of goods, by number.
if not exists (select * from sys.indexes where name = 'StockMovementKey')
    create index StockMovementKey on StockMovement (GId, WID, MovementNo);

-- The ledger keys whose quantities are not the sum of their movements: none, as long as every change was written down.
exec(N'create or alter view LedgerWithoutMovement as
select WID, GId, Model1, Model2, Status,
       sum(LedgerIn) as LedgerIn, sum(MovedIn) as MovedIn,
       sum(LedgerOut) as LedgerOut, sum(MovedOut) as MovedOut,
       sum(LedgerCurrent) as LedgerCurrent, sum(MovedCurrent) as MovedCurrent
from (select cast(WID as nvarchar(255)) collate Chinese_PRC_BIN2 as WID,
             cast(GId as nvarchar(255)) collate Chinese_PRC_BIN2 as GId,
             cast(Model1 as nvarchar(255)) collate Chinese_PRC_BIN2 as Model1,
             cast(Model2 as nvarchar(255)) collate Chinese_PRC_BIN2 as Model2,
             Status,
             cast(coalesce(InQty, 0) as decimal(20,4)) as LedgerIn, 0 as MovedIn,
             cast(coalesce(OutQty, 0) as decimal(20,4)) as LedgerOut, 0 as MovedOut,
             cast(coalesce(CurrentQty, 0) as decimal(20,4)) as LedgerCurrent, 0 as MovedCurrent
      from Inventory
      union all
      select WID, GId, Model1, Model2, Status, 0, InChange, 0, OutChange, 0, CurrentChange
      from StockMovement) as quantities
group by WID, GId, Model1, Model2, Status
having sum(LedgerIn) <> sum(MovedIn) or sum(LedgerOut) <> sum(MovedOut) or sum(LedgerCurrent) <> sum(MovedCurrent)');

-- Nobody moves anything until the triggers stand.
declare @rows int = (select count(*) from Inventory with (tablockx, holdlock));

-- Where the journal is off: what the ledger has that no movement explains.
insert into StockMovement (Action, DbUser, Program, WID, GId, Model1, Model2, Status,
                           InChange, OutChange, CurrentChange, InAfter, OutAfter, CurrentAfter)
select 'opening', original_login(), app_name(), WID, GId, Model1, Model2, Status,
       cast(coalesce(InQty, 0) as decimal(20,4)), cast(coalesce(OutQty, 0) as decimal(20,4)),
       cast(coalesce(CurrentQty, 0) as decimal(20,4)), InQty, OutQty, CurrentQty
from Inventory
where not exists (select * from StockMovement)
  and object_id('StockMovementOfChange') is null;
insert into StockMovement (Action, DbUser, Program, WID, GId, Model1, Model2, Status,
                           InChange, OutChange, CurrentChange, InAfter, OutAfter, CurrentAfter)
select 'gap', original_login(), app_name(), WID, GId, Model1, Model2, Status,
       LedgerIn - MovedIn, LedgerOut - MovedOut, LedgerCurrent - MovedCurrent, LedgerIn, LedgerOut, LedgerCurrent
from LedgerWithoutMovement
where object_id('StockMovementOfChange') is null;

-- Once for each statement: SQL Server does not tell which new row was which old one, so that keys are compared. Nulls
-- are counted beside the sums, which would warn of each.
exec(N'create or alter trigger StockMovementOfChange on Inventory after insert, update, delete as
begin
    set nocount on;
    declare @action nvarchar(40) = case when not exists (select * from deleted) then ''insert''
                                        when not exists (select * from inserted) then ''delete''
                                        else ''update'' end;
    insert into StockMovement (Action, DbUser, Program, WID, GId, Model1, Model2, Status,
                               InChange, OutChange, CurrentChange, InAfter, OutAfter, CurrentAfter,
                               BillKind, BillId, ItemNo, Member)
    select @action, original_login(), coalesce(cast(session_context(N''vantlo.program'') as nvarchar(255)), app_name()),
           WID, GId, Model1, Model2, Status,
           sum(InNew - InOld), sum(OutNew - OutOld), sum(CurrentNew - CurrentOld),
           case when sum(InNull) = sum(RowsNew) then null else sum(InNew) end,
           case when sum(OutNull) = sum(RowsNew) then null else sum(OutNew) end,
           case when sum(CurrentNull) = sum(RowsNew) then null else sum(CurrentNew) end,
           cast(session_context(N''vantlo.bill_kind'') as nvarchar(40)),
           cast(session_context(N''vantlo.bill_id'') as nvarchar(40)),
           cast(session_context(N''vantlo.item_no'') as int),
           cast(session_context(N''vantlo.member'') as nvarchar(40))
    from (select cast(WID as nvarchar(255)) collate Chinese_PRC_BIN2 as WID,
                 cast(GId as nvarchar(255)) collate Chinese_PRC_BIN2 as GId,
                 cast(Model1 as nvarchar(255)) collate Chinese_PRC_BIN2 as Model1,
                 cast(Model2 as nvarchar(255)) collate Chinese_PRC_BIN2 as Model2,
                 Status,
                 cast(coalesce(InQty, 0) as decimal(20,4)) as InNew, 0 as InOld,
                 cast(coalesce(OutQty, 0) as decimal(20,4)) as OutNew, 0 as OutOld,
                 cast(coalesce(CurrentQty, 0) as decimal(20,4)) as CurrentNew, 0 as CurrentOld,
                 case when InQty is null then 1 else 0 end as InNull,
                 case when OutQty is null then 1 else 0 end as OutNull,
                 case when CurrentQty is null then 1 else 0 end as CurrentNull,
                 1 as RowsNew, 0 as RowsOld
          from inserted
          union all
          select cast(WID as nvarchar(255)) collate Chinese_PRC_BIN2,
                 cast(GId as nvarchar(255)) collate Chinese_PRC_BIN2,
                 cast(Model1 as nvarchar(255)) collate Chinese_PRC_BIN2,
                 cast(Model2 as nvarchar(255)) collate Chinese_PRC_BIN2,
                 Status,
                 0, cast(coalesce(InQty, 0) as decimal(20,4)),
                 0, cast(coalesce(OutQty, 0) as decimal(20,4)),
                 0, cast(coalesce(CurrentQty, 0) as decimal(20,4)),
                 0, 0, 0, 0, 1
          from deleted) as changed
    group by WID, GId, Model1, Model2, Status
    having sum(InNew - InOld) <> 0 or sum(OutNew - OutOld) <> 0 or sum(CurrentNew - CurrentOld) <> 0
        or sum(RowsNew) <> sum(RowsOld);
end');

exec(N'create or alter trigger StockMovementKept on StockMovement instead of update, delete as
throw 50001, ''a stock movement is never changed or deleted; correct the ledger instead'', 1');
