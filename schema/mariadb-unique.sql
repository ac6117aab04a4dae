-- Optional: one ledger row per key, enforced. Two sessions that look a key up, find nothing and both insert it make two rows
-- without this key; with it the second insert fails, and a host that saves its bill again finds the row and updates it.
-- It fails to be made while the ledger has two rows of one key; add them up into one first.
--
-- MariaDB takes no null for equal to another: a line with a null in its key finds no row and always inserts one, with
-- the key as without it.
create unique index if not exists InventoryUniqueKey on Inventory (WID, GId, Model1, Model2, Status);
