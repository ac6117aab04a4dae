-- The journal of stock movements for SQLite: from now on the database writes every change of the ledger down by itself,
-- whichever program makes it, in the transaction of the change. To be run as a whole in one transaction; where the
-- journal is on already it changes nothing. sqlite-journal-off.sql ends it; after that sqlite-journal-remove.sql
-- removes all that it wrote.

-- One row for each change of a ledger row: what it added to the three quantities, and what they are after it, null
-- where the row is gone. Changes are exact to four decimals; a quantity that is null or no number counts as 0 in them.
--
-- Action is what the row underwent: insert, update, delete; `replace` if another took its place; `opening` for a row
-- that was there when the journal began, `gap` for what changed while it was off. A changed key is a movement out of
-- the old one and a movement into the new one. SQLite knows no users: DbUser is empty.
create table if not exists StockMovement (
    MovementNo     integer primary key,
    MovedAt        datetime default current_timestamp,
    Action         nvarchar(40) not null,
    DbUser         nvarchar(255),
    Program        nvarchar(255),
    WID            nvarchar(255),
    GId            nvarchar(255),
    Model1         nvarchar(255),
    Model2         nvarchar(255),
    Status         int,
    InChange       money not null,
    OutChange      money not null,
    CurrentChange  money not null,
    InAfter        money,
    OutAfter       money,
    CurrentAfter   money,
    BillKind       nvarchar(40),
    BillId         nvarchar(40),
    ItemNo         integer,
    Member         nvarchar(40)
);
-- Stock cards: the movements of goods, of one ledger row in the order of their numbers.
create index if not exists StockMovementKey on StockMovement (GId, WID, Model1, Model2, Status);

-- What is being posted, one row at most: a program that wants its movements to name their bill writes it in its
-- transaction and deletes it before the end.
create table if not exists CurrentPosting (
    Program   nvarchar(255),
    BillKind  nvarchar(40),
    BillId    nvarchar(40),
    ItemNo    integer,
    Member    nvarchar(40)
);

-- The ledger keys whose quantities are not the sum of their movements: none, as long as every change was written down.
create view if not exists LedgerWithoutMovement as
select WID, GId, Model1, Model2, Status,
       sum(LedgerIn) / 10000.0 as LedgerIn, sum(MovedIn) / 10000.0 as MovedIn,
       sum(LedgerOut) / 10000.0 as LedgerOut, sum(MovedOut) / 10000.0 as MovedOut,
       sum(LedgerCurrent) / 10000.0 as LedgerCurrent, sum(MovedCurrent) / 10000.0 as MovedCurrent
from (select WID, GId, Model1, Model2, Status,
             cast(round(coalesce(InQty, 0) * 10000) as integer) as LedgerIn, 0 as MovedIn,
             cast(round(coalesce(OutQty, 0) * 10000) as integer) as LedgerOut, 0 as MovedOut,
             cast(round(coalesce(CurrentQty, 0) * 10000) as integer) as LedgerCurrent, 0 as MovedCurrent
      from Inventory
      union all
      select WID, GId, Model1, Model2, Status,
             0, cast(round(InChange * 10000) as integer),
             0, cast(round(OutChange * 10000) as integer),
             0, cast(round(CurrentChange * 10000) as integer)
      from StockMovement)
group by WID, GId, Model1, Model2, Status
having sum(LedgerIn) <> sum(MovedIn) or sum(LedgerOut) <> sum(MovedOut) or sum(LedgerCurrent) <> sum(MovedCurrent);

-- Where the journal is off: what the ledger has that no movement explains.
insert into StockMovement (Action, WID, GId, Model1, Model2, Status,
                           InChange, OutChange, CurrentChange, InAfter, OutAfter, CurrentAfter)
select 'opening', WID, GId, Model1, Model2, Status,
       cast(round(coalesce(InQty, 0) * 10000) as integer) / 10000.0,
       cast(round(coalesce(OutQty, 0) * 10000) as integer) / 10000.0,
       cast(round(coalesce(CurrentQty, 0) * 10000) as integer) / 10000.0,
       InQty, OutQty, CurrentQty
from Inventory
where not exists (select * from StockMovement)
  and (select count(*) from sqlite_schema where type = 'trigger' and name in
           ('StockMovementOfInsert', 'StockMovementOfUpdate', 'StockMovementOfKey', 'StockMovementOfDelete')) < 4;
insert into StockMovement (Action, WID, GId, Model1, Model2, Status,
                           InChange, OutChange, CurrentChange, InAfter, OutAfter, CurrentAfter)
select 'gap', WID, GId, Model1, Model2, Status,
       round(LedgerIn - MovedIn, 4), round(LedgerOut - MovedOut, 4), round(LedgerCurrent - MovedCurrent, 4),
       LedgerIn, LedgerOut, LedgerCurrent
from LedgerWithoutMovement
where (select count(*) from sqlite_schema where type = 'trigger' and name in
           ('StockMovementOfInsert', 'StockMovementOfUpdate', 'StockMovementOfKey', 'StockMovementOfDelete')) < 4;

create trigger if not exists StockMovementOfInsert after insert on Inventory
begin
    -- A row that `replace` put out of the way, of which no trigger is told: the last movement has its quantities.
    insert into StockMovement (Action, Program, BillKind, BillId, ItemNo, Member,
                               WID, GId, Model1, Model2, Status,
                               InChange, OutChange, CurrentChange, InAfter, OutAfter, CurrentAfter)
    select 'replace', now.Program, now.BillKind, now.BillId, now.ItemNo, now.Member,
           last.WID, last.GId, last.Model1, last.Model2, last.Status,
           -cast(round(coalesce(last.InAfter, 0) * 10000) as integer) / 10000.0,
           -cast(round(coalesce(last.OutAfter, 0) * 10000) as integer) / 10000.0,
           -cast(round(coalesce(last.CurrentAfter, 0) * 10000) as integer) / 10000.0,
           null, null, null
    from StockMovement last left join CurrentPosting now
    where last.MovementNo = (select max(MovementNo) from StockMovement
                             where GId is new.GId and WID is new.WID and Model1 is new.Model1
                               and Model2 is new.Model2 and Status is new.Status)
      and coalesce(last.InAfter, last.OutAfter, last.CurrentAfter) is not null
      and (select count(*) from Inventory
           where WID is new.WID and GId is new.GId and Model1 is new.Model1
             and Model2 is new.Model2 and Status is new.Status) = 1;
    insert into StockMovement (Action, Program, BillKind, BillId, ItemNo, Member,
                               WID, GId, Model1, Model2, Status,
                               InChange, OutChange, CurrentChange, InAfter, OutAfter, CurrentAfter)
    select 'insert', Program, BillKind, BillId, ItemNo, Member,
           new.WID, new.GId, new.Model1, new.Model2, new.Status,
           cast(round(coalesce(new.InQty, 0) * 10000) as integer) / 10000.0,
           cast(round(coalesce(new.OutQty, 0) * 10000) as integer) / 10000.0,
           cast(round(coalesce(new.CurrentQty, 0) * 10000) as integer) / 10000.0,
           new.InQty, new.OutQty, new.CurrentQty
    from (select 1) left join CurrentPosting;
end;

-- Apart from the next one, so that a statement which leaves the key alone does not pay for it. Each change is the
-- difference of two rounded quantities, so that their sum never drifts from the ledger.
create trigger if not exists StockMovementOfUpdate after update of InQty, OutQty, CurrentQty on Inventory
when (new.InQty, new.OutQty, new.CurrentQty) is not (old.InQty, old.OutQty, old.CurrentQty)
 and (new.WID, new.GId, new.Model1, new.Model2, new.Status) is (old.WID, old.GId, old.Model1, old.Model2, old.Status)
begin
    insert into StockMovement (Action, Program, BillKind, BillId, ItemNo, Member,
                               WID, GId, Model1, Model2, Status,
                               InChange, OutChange, CurrentChange, InAfter, OutAfter, CurrentAfter)
    select 'update', Program, BillKind, BillId, ItemNo, Member,
           new.WID, new.GId, new.Model1, new.Model2, new.Status,
           (cast(round(coalesce(new.InQty, 0) * 10000) as integer) -
            cast(round(coalesce(old.InQty, 0) * 10000) as integer)) / 10000.0,
           (cast(round(coalesce(new.OutQty, 0) * 10000) as integer) -
            cast(round(coalesce(old.OutQty, 0) * 10000) as integer)) / 10000.0,
           (cast(round(coalesce(new.CurrentQty, 0) * 10000) as integer) -
            cast(round(coalesce(old.CurrentQty, 0) * 10000) as integer)) / 10000.0,
           new.InQty, new.OutQty, new.CurrentQty
    from (select 1) left join CurrentPosting;
end;

create trigger if not exists StockMovementOfKey after update of WID, GId, Model1, Model2, Status on Inventory
when (new.WID, new.GId, new.Model1, new.Model2, new.Status) is not
     (old.WID, old.GId, old.Model1, old.Model2, old.Status)
begin
    insert into StockMovement (Action, Program, BillKind, BillId, ItemNo, Member,
                               WID, GId, Model1, Model2, Status,
                               InChange, OutChange, CurrentChange, InAfter, OutAfter, CurrentAfter)
    select 'update', Program, BillKind, BillId, ItemNo, Member,
           old.WID, old.GId, old.Model1, old.Model2, old.Status,
           -cast(round(coalesce(old.InQty, 0) * 10000) as integer) / 10000.0,
           -cast(round(coalesce(old.OutQty, 0) * 10000) as integer) / 10000.0,
           -cast(round(coalesce(old.CurrentQty, 0) * 10000) as integer) / 10000.0,
           null, null, null
    from (select 1) left join CurrentPosting;
    -- `update or replace`, as above.
    insert into StockMovement (Action, Program, BillKind, BillId, ItemNo, Member,
                               WID, GId, Model1, Model2, Status,
                               InChange, OutChange, CurrentChange, InAfter, OutAfter, CurrentAfter)
    select 'replace', now.Program, now.BillKind, now.BillId, now.ItemNo, now.Member,
           last.WID, last.GId, last.Model1, last.Model2, last.Status,
           -cast(round(coalesce(last.InAfter, 0) * 10000) as integer) / 10000.0,
           -cast(round(coalesce(last.OutAfter, 0) * 10000) as integer) / 10000.0,
           -cast(round(coalesce(last.CurrentAfter, 0) * 10000) as integer) / 10000.0,
           null, null, null
    from StockMovement last left join CurrentPosting now
    where last.MovementNo = (select max(MovementNo) from StockMovement
                             where GId is new.GId and WID is new.WID and Model1 is new.Model1
                               and Model2 is new.Model2 and Status is new.Status)
      and coalesce(last.InAfter, last.OutAfter, last.CurrentAfter) is not null
      and (select count(*) from Inventory
           where WID is new.WID and GId is new.GId and Model1 is new.Model1
             and Model2 is new.Model2 and Status is new.Status) = 1;
    insert into StockMovement (Action, Program, BillKind, BillId, ItemNo, Member,
                               WID, GId, Model1, Model2, Status,
                               InChange, OutChange, CurrentChange, InAfter, OutAfter, CurrentAfter)
    select 'update', Program, BillKind, BillId, ItemNo, Member,
           new.WID, new.GId, new.Model1, new.Model2, new.Status,
           cast(round(coalesce(new.InQty, 0) * 10000) as integer) / 10000.0,
           cast(round(coalesce(new.OutQty, 0) * 10000) as integer) / 10000.0,
           cast(round(coalesce(new.CurrentQty, 0) * 10000) as integer) / 10000.0,
           new.InQty, new.OutQty, new.CurrentQty
    from (select 1) left join CurrentPosting;
end;

create trigger if not exists StockMovementOfDelete after delete on Inventory
begin
    insert into StockMovement (Action, Program, BillKind, BillId, ItemNo, Member,
                               WID, GId, Model1, Model2, Status,
                               InChange, OutChange, CurrentChange, InAfter, OutAfter, CurrentAfter)
    select 'delete', Program, BillKind, BillId, ItemNo, Member,
           old.WID, old.GId, old.Model1, old.Model2, old.Status,
           -cast(round(coalesce(old.InQty, 0) * 10000) as integer) / 10000.0,
           -cast(round(coalesce(old.OutQty, 0) * 10000) as integer) / 10000.0,
           -cast(round(coalesce(old.CurrentQty, 0) * 10000) as integer) / 10000.0,
           null, null, null
    from (select 1) left join CurrentPosting;
end;

create trigger if not exists StockMovementKeptFromUpdate before update on StockMovement
begin
    select raise(abort, 'a stock movement is never changed; correct the ledger instead');
end;

create trigger if not exists StockMovementKeptFromDelete before delete on StockMovement
begin
    select raise(abort, 'a stock movement is never deleted; correct the ledger instead');
end;
