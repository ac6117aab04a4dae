-- Removes the journal of stock movements, after sqlite-journal-off.sql: all that it wrote is gone.
drop table if exists StockMovement;
drop table if exists CurrentPosting;
