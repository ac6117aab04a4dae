-- Removes the journal of stock movements, after sqlserver-journal-off.sql: all that it wrote is gone.
drop table if exists StockMovement;
drop sequence if exists StockMovementNumber;
