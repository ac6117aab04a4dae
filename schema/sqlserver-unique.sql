-- Optional: one ledger row per key, enforced. Two sessions that look a key up, find nothing and both insert it make two rows
-- without this key; with it the second insert fails, and a host that saves its bill again finds the row and updates it.
-- It fails to be made while the ledger has two rows of one key; add them up into one first.
--
-- SQL Server takes nulls for equal, so rows with one are left out of the key: such a line finds no row and always inserts
-- one, with the key as without it.
if not exists (select * from sys.indexes where name = 'InventoryUniqueKey')
    create unique index InventoryUniqueKey on Inventory (WID, GId, Model1, Model2, Status)
    where WID is not null and GId is not null and Model1 is not null and Model2 is not null and Status is not null;
