-- The journal of stock movements for MariaDB: from now on the database writes every change of the ledger down by
-- itself, whichever program makes it, in the transaction of the change. To be run as a whole; where the journal
-- is on already it changes nothing. mariadb-journal-off.sql ends it; after that mariadb-journal-remove.sql removes all
-- that it wrote.
--
-- The triggers run with the rights of the account that makes them, which has to stay: no other account needs any on the
-- journal.

-- One row for each change of a ledger row: what it added to the three quantities, and what they are after it, null
-- where the row is gone. Changes are exact to four decimals; a quantity that is null counts as 0 in them.
--
-- Action is what the row underwent: insert, update, delete; `opening` for a row that was there when the journal began,
-- `gap` for what changed while it was off. A changed key is a movement out of the old one and a movement into the new
-- one.
create table if not exists StockMovement (
    MovementNo     bigint not null auto_increment primary key,
    MovedAt        datetime default current_timestamp,
    Action         varchar(40) not null,
    DbUser         varchar(255),
    Program        varchar(255),
    WID            varchar(255),
    GId            varchar(255),
    Model1         varchar(255),
    Model2         varchar(255),
    Status         integer,
    InChange       decimal(20,4) not null,
    OutChange      decimal(20,4) not null,
    CurrentChange  decimal(20,4) not null,
    InAfter        decimal(20,4),
    OutAfter       decimal(20,4),
    CurrentAfter   decimal(20,4),
    BillKind       varchar(40),
    BillId         varchar(40),
    ItemNo         integer,
    Member         varchar(40)
) engine = InnoDB default character set utf8mb4 collate utf8mb4_nopad_bin;
-- Stock cards: the movements of goods, by number.
create index if not exists StockMovementKey on StockMovement (GId, WID, MovementNo);

-- The ledger keys whose quantities are not the sum of their movements: none, as long as every change was written down.
create or replace view LedgerWithoutMovement as
select WID, GId, Model1, Model2, Status,
       sum(LedgerIn) as LedgerIn, sum(MovedIn) as MovedIn,
       sum(LedgerOut) as LedgerOut, sum(MovedOut) as MovedOut,
       sum(LedgerCurrent) as LedgerCurrent, sum(MovedCurrent) as MovedCurrent
from (select WID, GId, Model1, Model2, Status,
             round(coalesce(InQty, 0), 4) as LedgerIn, 0 as MovedIn,
             round(coalesce(OutQty, 0), 4) as LedgerOut, 0 as MovedOut,
             round(coalesce(CurrentQty, 0), 4) as LedgerCurrent, 0 as MovedCurrent
      from Inventory
      union all
      select WID, GId, Model1, Model2, Status, 0, InChange, 0, OutChange, 0, CurrentChange
      from StockMovement) as quantities
group by WID, GId, Model1, Model2, Status
having sum(LedgerIn) <> sum(MovedIn) or sum(LedgerOut) <> sum(MovedOut) or sum(LedgerCurrent) <> sum(MovedCurrent);

-- Nobody moves anything until the triggers stand.
lock tables Inventory write, StockMovement write, LedgerWithoutMovement read;

-- Where the journal is off: what the ledger has that no movement explains.
insert into StockMovement (Action, DbUser, WID, GId, Model1, Model2, Status,
                           InChange, OutChange, CurrentChange, InAfter, OutAfter, CurrentAfter)
select 'opening', user(), WID, GId, Model1, Model2, Status,
       round(coalesce(InQty, 0), 4), round(coalesce(OutQty, 0), 4), round(coalesce(CurrentQty, 0), 4),
       InQty, OutQty, CurrentQty
from Inventory
where not exists (select * from StockMovement)
  and (select count(*) from information_schema.triggers
       where trigger_schema = database() and trigger_name like 'StockMovementOf%') < 3;
insert into StockMovement (Action, DbUser, WID, GId, Model1, Model2, Status,
                           InChange, OutChange, CurrentChange, InAfter, OutAfter, CurrentAfter)
select 'gap', user(), WID, GId, Model1, Model2, Status,
       LedgerIn - MovedIn, LedgerOut - MovedOut, LedgerCurrent - MovedCurrent, LedgerIn, LedgerOut, LedgerCurrent
from LedgerWithoutMovement
where (select count(*) from information_schema.triggers
       where trigger_schema = database() and trigger_name like 'StockMovementOf%') < 3;

create or replace trigger StockMovementOfInsert after insert on Inventory for each row
insert into StockMovement (Action, DbUser, Program, WID, GId, Model1, Model2, Status,
                           InChange, OutChange, CurrentChange, InAfter, OutAfter, CurrentAfter,
                           BillKind, BillId, ItemNo, Member)
values ('insert', user(), @vantlo_program, new.WID, new.GId, new.Model1, new.Model2, new.Status,
        round(coalesce(new.InQty, 0), 4), round(coalesce(new.OutQty, 0), 4), round(coalesce(new.CurrentQty, 0), 4),
        new.InQty, new.OutQty, new.CurrentQty,
        @vantlo_bill_kind, @vantlo_bill_id, @vantlo_item_no, @vantlo_member);

-- Keys compare as bytes: in a ledger whose columns pass over case or blanks, a key can change into an equal one. The body
-- is a comment that MariaDB reads, as its ODBC driver crashes at semicolons outside comments.
delimiter //
create or replace trigger StockMovementOfUpdate after update on Inventory for each row
/*! begin
    if not (binary new.WID <=> binary old.WID and binary new.GId <=> binary old.GId
            and binary new.Model1 <=> binary old.Model1 and binary new.Model2 <=> binary old.Model2
            and new.Status <=> old.Status) then
        insert into StockMovement (Action, DbUser, Program, WID, GId, Model1, Model2, Status,
                                   InChange, OutChange, CurrentChange, BillKind, BillId, ItemNo, Member)
        values ('update', user(), @vantlo_program, old.WID, old.GId, old.Model1, old.Model2, old.Status,
                -round(coalesce(old.InQty, 0), 4), -round(coalesce(old.OutQty, 0), 4),
                -round(coalesce(old.CurrentQty, 0), 4),
                @vantlo_bill_kind, @vantlo_bill_id, @vantlo_item_no, @vantlo_member);
        insert into StockMovement (Action, DbUser, Program, WID, GId, Model1, Model2, Status,
                                   InChange, OutChange, CurrentChange, InAfter, OutAfter, CurrentAfter,
                                   BillKind, BillId, ItemNo, Member)
        values ('update', user(), @vantlo_program, new.WID, new.GId, new.Model1, new.Model2, new.Status,
                round(coalesce(new.InQty, 0), 4), round(coalesce(new.OutQty, 0), 4),
                round(coalesce(new.CurrentQty, 0), 4), new.InQty, new.OutQty, new.CurrentQty,
                @vantlo_bill_kind, @vantlo_bill_id, @vantlo_item_no, @vantlo_member);
    elseif not (new.InQty <=> old.InQty and new.OutQty <=> old.OutQty and new.CurrentQty <=> old.CurrentQty) then
        insert into StockMovement (Action, DbUser, Program, WID, GId, Model1, Model2, Status,
                                   InChange, OutChange, CurrentChange, InAfter, OutAfter, CurrentAfter,
                                   BillKind, BillId, ItemNo, Member)
        values ('update', user(), @vantlo_program, new.WID, new.GId, new.Model1, new.Model2, new.Status,
                round(coalesce(new.InQty, 0), 4) - round(coalesce(old.InQty, 0), 4),
                round(coalesce(new.OutQty, 0), 4) - round(coalesce(old.OutQty, 0), 4),
                round(coalesce(new.CurrentQty, 0), 4) - round(coalesce(old.CurrentQty, 0), 4),
                new.InQty, new.OutQty, new.CurrentQty,
                @vantlo_bill_kind, @vantlo_bill_id, @vantlo_item_no, @vantlo_member);
    end if;
end */
//
delimiter ;

create or replace trigger StockMovementOfDelete after delete on Inventory for each row
insert into StockMovement (Action, DbUser, Program, WID, GId, Model1, Model2, Status,
                           InChange, OutChange, CurrentChange, BillKind, BillId, ItemNo, Member)
values ('delete', user(), @vantlo_program, old.WID, old.GId, old.Model1, old.Model2, old.Status,
        -round(coalesce(old.InQty, 0), 4), -round(coalesce(old.OutQty, 0), 4),
        -round(coalesce(old.CurrentQty, 0), 4),
        @vantlo_bill_kind, @vantlo_bill_id, @vantlo_item_no, @vantlo_member);

create or replace trigger StockMovementKeptFromUpdate before update on StockMovement for each row
signal sqlstate '45000' set message_text = 'a stock movement is never changed; correct the ledger instead';

create or replace trigger StockMovementKeptFromDelete before delete on StockMovement for each row
signal sqlstate '45000' set message_text = 'a stock movement is never deleted; correct the ledger instead';

unlock tables;
