-- The tables of the system for Microsoft SQL Server 2016 and later.
--
-- Columns compare texts exactly, but for blanks at the end, which SQL Server never counts. Literals come without the N
-- prefix and pass through the code page of the *database's* collation before they reach a column: create the database
-- with a collation that has every character you use, such as Chinese_PRC_CI_AS, or, from version 2019 on,
-- Latin1_General_100_BIN2_UTF8, which has them all.

-- Warehouses; their ids are the WID of the ledger.
if object_id('Warehouse') is null create table Warehouse (
    ID    nvarchar(40) collate Chinese_PRC_BIN2 not null primary key,
    Name  nvarchar(100)
);

-- Goods; GCZYCPFlag marks main goods.
if object_id('Goods') is null create table Goods (
    ID          nvarchar(40) collate Chinese_PRC_BIN2 not null primary key,
    Name        nvarchar(200),
    Class       nvarchar(40) collate Chinese_PRC_BIN2,
    Model       nvarchar(200),
    Unit        nvarchar(40) collate Chinese_PRC_BIN2,
    GCZYCPFlag  smallint,
    Remarks     nvarchar(1000)
);

-- Units of goods: how many base units one such unit holds; 0 and null both count as 1.
if object_id('GoodsUnit') is null create table GoodsUnit (
    id             nvarchar(40) collate Chinese_PRC_BIN2 not null,
    Unit           nvarchar(40) collate Chinese_PRC_BIN2 not null,
    UnitConverter  float,
    primary key (id, Unit)
);

-- The stock ledger: one row per warehouse, goods, models and status, which nothing enforces.
if object_id('Inventory') is null create table Inventory (
    WID         nvarchar(40) collate Chinese_PRC_BIN2,
    GId         nvarchar(40) collate Chinese_PRC_BIN2,
    Model1      nvarchar(100) collate Chinese_PRC_BIN2,
    Model2      nvarchar(100) collate Chinese_PRC_BIN2,
    Status      int,
    Class       nvarchar(40) collate Chinese_PRC_BIN2,
    Unit        nvarchar(40) collate Chinese_PRC_BIN2,
    InQty       money,
    OutQty      money,
    CurrentQty  money,
    Remarks     nvarchar(1000)
);
-- The look-up of every posting; without it the cost of one posting grows with the ledger.
if not exists (select * from sys.indexes where name = 'InventoryKey')
    create index InventoryKey on Inventory (WID, GId, Model1, Model2, Status);

-- Stock bills of all kinds; ReferFlag holds a goods status or a kind of status conversion.
if object_id('StockBill') is null create table StockBill (
    Id         nvarchar(40) collate Chinese_PRC_BIN2 not null primary key,
    Kind       nvarchar(40),
    BillDate   datetime,
    ReferFlag  smallint,
    Remarks    nvarchar(1000)
);

-- Lines of stock bills; Actualqty and Qty are in the line's own unit.
if object_id('StockBillItems') is null create table StockBillItems (
    BillId      nvarchar(40) collate Chinese_PRC_BIN2 not null,
    ItemNo      int,
    Gid         nvarchar(40) collate Chinese_PRC_BIN2,
    Unit        nvarchar(40) collate Chinese_PRC_BIN2,
    Actualqty   real,
    Qty         real,
    Receiver    nvarchar(40) collate Chinese_PRC_BIN2,
    Supplier    nvarchar(40) collate Chinese_PRC_BIN2,
    Model1      nvarchar(100) collate Chinese_PRC_BIN2,
    Model2      nvarchar(100) collate Chinese_PRC_BIN2,
    Class       nvarchar(40) collate Chinese_PRC_BIN2,
    Goodstutas  int,
    Remarks     nvarchar(1000)
);
if not exists (select * from sys.indexes where name = 'StockBillItemsBill')
    create index StockBillItemsBill on StockBillItems (BillId, ItemNo);

-- Return and repair bills, transfers and repaired goods, with the two warehouses of the whole bill.
if object_id('RGstockBill') is null create table RGstockBill (
    id        nvarchar(40) collate Chinese_PRC_BIN2 not null primary key,
    Kind      nvarchar(40),
    BillDate  datetime,
    Receiver  nvarchar(40) collate Chinese_PRC_BIN2,
    Supplier  nvarchar(40) collate Chinese_PRC_BIN2,
    Remarks   nvarchar(1000)
);

-- Lines of return and repair bills; WID and StatusWID are the warehouses of postings line by line.
if object_id('RGstockBillItems') is null create table RGstockBillItems (
    BillId       nvarchar(40) collate Chinese_PRC_BIN2 not null,
    ItemNo       int,
    Gid          nvarchar(40) collate Chinese_PRC_BIN2,
    Qty          real,
    Unit         nvarchar(40) collate Chinese_PRC_BIN2,
    Model1       nvarchar(100) collate Chinese_PRC_BIN2,
    Model2       nvarchar(100) collate Chinese_PRC_BIN2,
    Class        nvarchar(40) collate Chinese_PRC_BIN2,
    SpRemarks    nvarchar(1000),
    WID          nvarchar(40) collate Chinese_PRC_BIN2,
    StatusWID    nvarchar(40) collate Chinese_PRC_BIN2,
    GoodsStatus  int
);
if not exists (select * from sys.indexes where name = 'RGstockBillItemsBill')
    create index RGstockBillItemsBill on RGstockBillItems (BillId, ItemNo);

-- Borrow bills: goods lent out and goods borrowed in.
if object_id('GBorrow') is null create table GBorrow (
    Id        nvarchar(40) collate Chinese_PRC_BIN2 not null primary key,
    Kind      nvarchar(40),
    BillDate  datetime,
    Remarks   nvarchar(1000)
);

-- Lines of borrow bills; UQty is in the line's own unit.
if object_id('GBorrowItems') is null create table GBorrowItems (
    BillId      nvarchar(40) collate Chinese_PRC_BIN2 not null,
    ItemNo      int,
    Supplier    nvarchar(40) collate Chinese_PRC_BIN2,
    Receiver    nvarchar(40) collate Chinese_PRC_BIN2,
    Gid         nvarchar(40) collate Chinese_PRC_BIN2,
    Model1      nvarchar(100) collate Chinese_PRC_BIN2,
    Model2      nvarchar(100) collate Chinese_PRC_BIN2,
    Goodstutas  int,
    UQty        real,
    Unit        nvarchar(40) collate Chinese_PRC_BIN2,
    Class       nvarchar(40) collate Chinese_PRC_BIN2,
    Remarks     nvarchar(1000)
);
if not exists (select * from sys.indexes where name = 'GBorrowItemsBill')
    create index GBorrowItemsBill on GBorrowItems (BillId, ItemNo);

-- Assembly and disassembly bills: the main item is in the header. Actualqty is no decimal, whose literal is empty.
if object_id('GoodsBill') is null create table GoodsBill (
    Id           nvarchar(40) collate Chinese_PRC_BIN2 not null primary key,
    Kind         nvarchar(40),
    BillDate     datetime,
    WareHouseID  nvarchar(40) collate Chinese_PRC_BIN2,
    Gid          nvarchar(40) collate Chinese_PRC_BIN2,
    Model1       nvarchar(100) collate Chinese_PRC_BIN2,
    Model2       nvarchar(100) collate Chinese_PRC_BIN2,
    Goodstutas   int,
    Actualqty    real,
    Class        nvarchar(40) collate Chinese_PRC_BIN2,
    Unit         nvarchar(40) collate Chinese_PRC_BIN2,
    Remarks      nvarchar(1000)
);

-- Components of assembly and disassembly bills, each with its own warehouse.
if object_id('GoodsBillItems') is null create table GoodsBillItems (
    BillId       nvarchar(40) collate Chinese_PRC_BIN2 not null,
    ItemNo       int,
    WareHouseID  nvarchar(40) collate Chinese_PRC_BIN2,
    Gid          nvarchar(40) collate Chinese_PRC_BIN2,
    Model1       nvarchar(100) collate Chinese_PRC_BIN2,
    Model2       nvarchar(100) collate Chinese_PRC_BIN2,
    Goodstutas   int,
    Actualqty    real,
    Class        nvarchar(40) collate Chinese_PRC_BIN2,
    Unit         nvarchar(40) collate Chinese_PRC_BIN2,
    Remarks      nvarchar(1000)
);
if not exists (select * from sys.indexes where name = 'GoodsBillItemsBill')
    create index GoodsBillItemsBill on GoodsBillItems (BillId, ItemNo);

-- Markers of bills that a host saved in one transaction with its postings: a commit whose answer was lost is found here
-- before the bill is saved again. Old rows may be deleted.
if object_id('SavedBill') is null create table SavedBill (
    Marker   nvarchar(64) collate Chinese_PRC_BIN2 not null primary key,
    SavedAt  datetime default current_timestamp
);

-- What hosts did with bills, in the order in which it reached the ledger: an entry is the last statement of its transaction,
-- which holds the bill's ledger rows by then. Content keeps a bill that was taken back as it was. `vantlo verify` posts all
-- again in this order; stored bills without an entry come before all others, by date and id.
if object_id('BillHistory') is null create table BillHistory (
    EntryNo  int identity primary key,
    Kind     nvarchar(40) collate Chinese_PRC_BIN2 not null,
    BillId   nvarchar(40) collate Chinese_PRC_BIN2 not null,
    Action   nvarchar(40) collate Chinese_PRC_BIN2 not null,
    Content  nvarchar(max) collate Chinese_PRC_BIN2,
    DoneAt   datetime default current_timestamp
);

-- What `vantlo repair` changed in the ledger, a row for each ledger row. The rows of one repair have its number;
-- UndoneNo is the number of the repair that this one undid. The quantities before and after are null where the row was not
-- there. BeforeRow and AfterRow have the whole row: its columns, each with its value as an SQL literal.
if object_id('RepairJournal') is null create table RepairJournal (
    EntryNo           int identity primary key,
    RepairNo          int,
    UndoneNo          int,
    Cause             nvarchar(100) collate Chinese_PRC_BIN2,
    Action            nvarchar(40) collate Chinese_PRC_BIN2,
    WID               nvarchar(40) collate Chinese_PRC_BIN2,
    GId               nvarchar(40) collate Chinese_PRC_BIN2,
    Model1            nvarchar(100) collate Chinese_PRC_BIN2,
    Model2            nvarchar(100) collate Chinese_PRC_BIN2,
    Status            int,
    BeforeInQty       money,
    AfterInQty        money,
    BeforeOutQty      money,
    AfterOutQty       money,
    BeforeCurrentQty  money,
    AfterCurrentQty   money,
    BeforeRow         nvarchar(max) collate Chinese_PRC_BIN2,
    AfterRow          nvarchar(max) collate Chinese_PRC_BIN2,
    RepairedAt        datetime default current_timestamp
);

-- What `vantlo import` has posted: a row for each call of a member, in the same transaction, ItemNo 0 for calls that post a
-- whole bill. An import that is run again passes over the bills that are here; Content tells whether they are the same.
if object_id('PostingJournal') is null create table PostingJournal (
    Kind      nvarchar(40) collate Chinese_PRC_BIN2 not null,
    BillId    nvarchar(40) collate Chinese_PRC_BIN2 not null,
    Member    nvarchar(40) collate Chinese_PRC_BIN2 not null,
    ItemNo    int not null,
    Content   nvarchar(100) collate Chinese_PRC_BIN2 not null,
    PostedAt  datetime default current_timestamp,
    primary key (BillId, Kind, Member, ItemNo)
);
-- A table that is there already may have a narrower one.
alter table PostingJournal alter column Content nvarchar(100) collate Chinese_PRC_BIN2 not null;

-- How the shop's own bill tables are read, as `vantlo adopt --shop` was told: one row at most; docs/adopting.md. Without a
-- row the tables above are read.
if object_id('ShopDescription') is null create table ShopDescription (
    Content      nvarchar(max) collate Chinese_PRC_BIN2,
    DescribedAt  datetime default current_timestamp
);

-- How much is to be on hand at least, as `vantlo low` watches it, in base units. An empty warehouse or model stands for all of
-- them together.
if object_id('StockMinimum') is null create table StockMinimum (
    GId      nvarchar(40) collate Chinese_PRC_BIN2 not null,
    WID      nvarchar(40) collate Chinese_PRC_BIN2 not null,
    Model1   nvarchar(100) collate Chinese_PRC_BIN2 not null,
    Model2   nvarchar(100) collate Chinese_PRC_BIN2 not null,
    Status   int not null,
    Minimum  money,
    primary key (GId, WID, Model1, Model2, Status)
);
