-- Removes the journal of stock movements, after postgresql-journal-off.sql: all that it wrote is gone.
drop table if exists StockMovement;
drop function if exists keep_stock_movement();
