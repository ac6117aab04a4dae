-- Ends the journal of stock movements: nothing is written down from now on. What it wrote stays.
drop view if exists LedgerWithoutMovement;
drop trigger if exists StockMovementOfInsert;
drop trigger if exists StockMovementOfUpdate;
drop trigger if exists StockMovementOfDelete;
