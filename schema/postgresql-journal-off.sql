-- Ends the journal of stock movements: nothing is written down from now on. What it wrote stays.
drop view if exists LedgerWithoutMovement;
drop trigger if exists StockMovementOfInsert on Inventory;
drop trigger if exists StockMovementOfUpdate on Inventory;
drop trigger if exists StockMovementOfDelete on Inventory;
drop trigger if exists StockMovementOfTruncate on Inventory;
drop function if exists write_stock_movement();
drop function if exists write_stock_movements_of_truncate();
