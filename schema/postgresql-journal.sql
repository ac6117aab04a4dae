-- The journal of stock movements for PostgreSQL: from now on the database writes every change of the ledger down by
-- itself, whichever program makes it, in the transaction of the change. To be run as a whole in one transaction by the
-- owner of Inventory, whose schema comes first in the search path; where the journal is on already it changes nothing.
-- postgresql-journal-off.sql ends it; after that postgresql-journal-remove.sql removes all that it wrote.

-- One row for each change of a ledger row: what it added to the three quantities, and what they are after it, null
-- where the row is gone. Changes are exact to four decimals; a quantity that is null or no number counts as 0 in them.
--
-- Action is what the row underwent: insert, update, delete, truncate; `opening` for a row that was there when the
-- journal began, `gap` for what changed while it was off. A changed key is a movement out of the old one and a movement
-- into the new one.
--
-- MovementNo is the moment in microseconds: a sequence would change what lastval() tells the program whose statement it
-- is. The movements of a ledger row are in its order; two sessions can share one on different rows.
create table if not exists StockMovement (
    MovementNo     bigint not null default (extract(epoch from clock_timestamp()) * 1000000)::bigint,
    MovedAt        timestamp(0) default clock_timestamp(),
    Action         varchar(40) not null,
    DbUser         varchar(255),
    Program        varchar(255),
    WID            text,
    GId            text,
    Model1         text,
    Model2         text,
    Status         integer,
    InChange       numeric(20,4) not null,
    OutChange      numeric(20,4) not null,
    CurrentChange  numeric(20,4) not null,
    InAfter        numeric,
    OutAfter       numeric,
    CurrentAfter   numeric,
    BillKind       varchar(40),
    BillId         varchar(40),
    ItemNo         integer,
    Member         varchar(40)
);
-- Stock cards: the movements of goods, by number.
create index if not exists StockMovementKey on StockMovement (GId, WID, MovementNo);
create index if not exists StockMovementNumber on StockMovement (MovementNo);

-- The ledger keys whose quantities are not the sum of their movements: none, as long as every change was written down.
create or replace view LedgerWithoutMovement as
select WID, GId, Model1, Model2, Status,
       sum(LedgerIn) as LedgerIn, sum(MovedIn) as MovedIn,
       sum(LedgerOut) as LedgerOut, sum(MovedOut) as MovedOut,
       sum(LedgerCurrent) as LedgerCurrent, sum(MovedCurrent) as MovedCurrent
from (select WID::text, GId::text, Model1::text, Model2::text, Status,
             case when abs(InQty::numeric) < 1e16 then round(InQty::numeric, 4) else 0 end as LedgerIn,
             case when abs(OutQty::numeric) < 1e16 then round(OutQty::numeric, 4) else 0 end as LedgerOut,
             case when abs(CurrentQty::numeric) < 1e16 then round(CurrentQty::numeric, 4) else 0 end as LedgerCurrent,
             0 as MovedIn, 0 as MovedOut, 0 as MovedCurrent
      from Inventory
      union all
      select WID, GId, Model1, Model2, Status, 0, 0, 0, InChange, OutChange, CurrentChange
      from StockMovement) as quantities
group by WID, GId, Model1, Model2, Status
having sum(LedgerIn) <> sum(MovedIn) or sum(LedgerOut) <> sum(MovedOut) or sum(LedgerCurrent) <> sum(MovedCurrent);

-- Nobody moves anything until the triggers stand.
lock table Inventory in share row exclusive mode;

-- Where the journal is off: what the ledger has that no movement explains.
insert into StockMovement (Action, DbUser, Program, WID, GId, Model1, Model2, Status,
                           InChange, OutChange, CurrentChange, InAfter, OutAfter, CurrentAfter)
select 'opening', session_user, current_setting('application_name'), WID, GId, Model1, Model2, Status,
       case when abs(InQty::numeric) < 1e16 then InQty::numeric else 0 end,
       case when abs(OutQty::numeric) < 1e16 then OutQty::numeric else 0 end,
       case when abs(CurrentQty::numeric) < 1e16 then CurrentQty::numeric else 0 end,
       InQty::numeric, OutQty::numeric, CurrentQty::numeric
from Inventory
where not exists (select * from StockMovement)
  and (select count(*) from pg_trigger where tgrelid = 'Inventory'::regclass and tgname like 'stockmovementof%') < 4;
insert into StockMovement (Action, DbUser, Program, WID, GId, Model1, Model2, Status,
                           InChange, OutChange, CurrentChange, InAfter, OutAfter, CurrentAfter)
select 'gap', session_user, current_setting('application_name'), WID, GId, Model1, Model2, Status,
       LedgerIn - MovedIn, LedgerOut - MovedOut, LedgerCurrent - MovedCurrent, LedgerIn, LedgerOut, LedgerCurrent
from LedgerWithoutMovement
where (select count(*) from pg_trigger where tgrelid = 'Inventory'::regclass and tgname like 'stockmovementof%') < 4;

-- They run with the rights of their owner, so that no other role needs any on the journal, and name its table in full,
-- so that no table of a session comes before it.
do $make$
begin
    execute format($function$
        create or replace function %1$I.write_stock_movement() returns trigger
            language plpgsql security definer set search_path = pg_catalog, pg_temp as $body$
        declare
            the_program constant text :=
                coalesce(nullif(current_setting('vantlo.program', true), ''), current_setting('application_name'));
            the_kind constant text := nullif(current_setting('vantlo.bill_kind', true), '');
            the_bill constant text := nullif(current_setting('vantlo.bill_id', true), '');
            the_item constant integer := nullif(current_setting('vantlo.item_no', true), '');
            the_member constant text := nullif(current_setting('vantlo.member', true), '');
            is_same_row boolean := false;
            in_old numeric := 0;
            out_old numeric := 0;
            current_old numeric := 0;
            in_new numeric := 0;
            out_new numeric := 0;
            current_new numeric := 0;
        begin
            if tg_op <> 'INSERT' then
                if abs(old.InQty::numeric) < 1e16 then in_old := round(old.InQty::numeric, 4); end if;
                if abs(old.OutQty::numeric) < 1e16 then out_old := round(old.OutQty::numeric, 4); end if;
                if abs(old.CurrentQty::numeric) < 1e16 then current_old := round(old.CurrentQty::numeric, 4); end if;
            end if;
            if tg_op <> 'DELETE' then
                if abs(new.InQty::numeric) < 1e16 then in_new := round(new.InQty::numeric, 4); end if;
                if abs(new.OutQty::numeric) < 1e16 then out_new := round(new.OutQty::numeric, 4); end if;
                if abs(new.CurrentQty::numeric) < 1e16 then current_new := round(new.CurrentQty::numeric, 4); end if;
            end if;
            if tg_op = 'UPDATE' then
                is_same_row := (old.WID, old.GId, old.Model1, old.Model2, old.Status) is not distinct from
                               (new.WID, new.GId, new.Model1, new.Model2, new.Status);
            end if;
            if tg_op <> 'INSERT' and not is_same_row then
                insert into %1$I.StockMovement (Action, DbUser, Program, WID, GId, Model1, Model2, Status,
                                               InChange, OutChange, CurrentChange,
                                               BillKind, BillId, ItemNo, Member)
                values (lower(tg_op), session_user, the_program,
                        old.WID, old.GId, old.Model1, old.Model2, old.Status,
                        -in_old, -out_old, -current_old,
                        the_kind, the_bill, the_item, the_member);
                in_old := 0;
                out_old := 0;
                current_old := 0;
            end if;
            if tg_op <> 'DELETE' then
                insert into %1$I.StockMovement (Action, DbUser, Program, WID, GId, Model1, Model2, Status,
                                               InChange, OutChange, CurrentChange, InAfter, OutAfter, CurrentAfter,
                                               BillKind, BillId, ItemNo, Member)
                values (lower(tg_op), session_user, the_program,
                        new.WID, new.GId, new.Model1, new.Model2, new.Status,
                        in_new - in_old, out_new - out_old, current_new - current_old,
                        new.InQty::numeric, new.OutQty::numeric, new.CurrentQty::numeric,
                        the_kind, the_bill, the_item, the_member);
            end if;
            return null;
        end $body$
    $function$, current_schema());
    execute format($function$
        create or replace function %1$I.write_stock_movements_of_truncate() returns trigger
            language plpgsql security definer set search_path = pg_catalog, pg_temp as $body$
        begin
            insert into %1$I.StockMovement (Action, DbUser, Program, WID, GId, Model1, Model2, Status,
                                           InChange, OutChange, CurrentChange)
            select 'truncate', session_user, current_setting('application_name'),
                   WID, GId, Model1, Model2, Status,
                   case when abs(InQty::numeric) < 1e16 then -InQty::numeric else 0 end,
                   case when abs(OutQty::numeric) < 1e16 then -OutQty::numeric else 0 end,
                   case when abs(CurrentQty::numeric) < 1e16 then -CurrentQty::numeric else 0 end
            from %1$I.Inventory;
            return null;
        end $body$
    $function$, current_schema());
end $make$;

create or replace function keep_stock_movement() returns trigger language plpgsql as $body$
begin
    raise exception 'a stock movement is never changed or deleted; correct the ledger instead';
end $body$;

-- Nobody else may put them on a table of his own and so write what never happened.
revoke all on function write_stock_movement(), write_stock_movements_of_truncate() from public;

drop trigger if exists StockMovementOfInsert on Inventory;
create trigger StockMovementOfInsert after insert on Inventory
    for each row execute function write_stock_movement();
drop trigger if exists StockMovementOfUpdate on Inventory;
create trigger StockMovementOfUpdate after update on Inventory
    for each row
    when ((old.WID, old.GId, old.Model1, old.Model2, old.Status, old.InQty, old.OutQty, old.CurrentQty) is distinct from
          (new.WID, new.GId, new.Model1, new.Model2, new.Status, new.InQty, new.OutQty, new.CurrentQty))
    execute function write_stock_movement();
drop trigger if exists StockMovementOfDelete on Inventory;
create trigger StockMovementOfDelete after delete on Inventory
    for each row execute function write_stock_movement();
drop trigger if exists StockMovementOfTruncate on Inventory;
create trigger StockMovementOfTruncate before truncate on Inventory
    for each statement execute function write_stock_movements_of_truncate();

drop trigger if exists StockMovementKept on StockMovement;
create trigger StockMovementKept before update or delete or truncate on StockMovement
    for each statement execute function keep_stock_movement();
