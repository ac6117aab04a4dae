-- Removes the journal of stock movements, after mariadb-journal-off.sql: all that it wrote is gone.
drop table if exists StockMovement;
