-- The tables of the system for SQLite. Types are declared as they are read: the adapter goes by the declared name, so
-- the names below are chosen from its table, and text columns always carry "char", without which SQLite would store a
-- text of digits as a number.

-- Warehouses; their ids are the WID of the ledger.
create table if not exists Warehouse (
    ID    nvarchar(40) not null primary key,
    Name  nvarchar(100)
);

-- Goods; GCZYCPFlag marks main goods.
create table if not exists Goods (
    ID          nvarchar(40) not null primary key,
    Name        nvarchar(200),
    Class       nvarchar(40),
    Model       nvarchar(200),
    Unit        nvarchar(40),
    GCZYCPFlag  smallint,
    Remarks     nvarchar(1000)
);

-- Units of goods: how many base units one such unit holds; 0 and null both count as 1.
create table if not exists GoodsUnit (
    id             nvarchar(40) not null,
    Unit           nvarchar(40) not null,
    UnitConverter  float,
    primary key (id, Unit)
);

-- The stock ledger: one row per warehouse, goods, models and status, which nothing enforces.
create table if not exists Inventory (
    WID         nvarchar(40),
    GId         nvarchar(40),
    Model1      nvarchar(100),
    Model2      nvarchar(100),
    Status      int,
    Class       nvarchar(40),
    Unit        nvarchar(40),
    InQty       money,
    OutQty      money,
    CurrentQty  money,
    Remarks     nvarchar(1000)
);
-- The look-up of every posting; without it the cost of one posting grows with the ledger.
create index if not exists InventoryKey on Inventory (WID, GId, Model1, Model2, Status);

-- Stock bills of all kinds; ReferFlag holds a goods status or a kind of status conversion.
create table if not exists StockBill (
    Id         nvarchar(40) not null primary key,
    Kind       nvarchar(40),
    BillDate   date,
    ReferFlag  smallint,
    Remarks    nvarchar(1000)
);

-- Lines of stock bills; Actualqty and Qty are in the line's own unit.
create table if not exists StockBillItems (
    BillId      nvarchar(40) not null,
    ItemNo      integer,
    Gid         nvarchar(40),
    Unit        nvarchar(40),
    Actualqty   real,
    Qty         real,
    Receiver    nvarchar(40),
    Supplier    nvarchar(40),
    Model1      nvarchar(100),
    Model2      nvarchar(100),
    Class       nvarchar(40),
    Goodstutas  int,
    Remarks     nvarchar(1000),
    primary key (BillId, ItemNo)
);

-- Return and repair bills, transfers and repaired goods, with the two warehouses of the whole bill.
create table if not exists RGstockBill (
    id        nvarchar(40) not null primary key,
    Kind      nvarchar(40),
    BillDate  date,
    Receiver  nvarchar(40),
    Supplier  nvarchar(40),
    Remarks   nvarchar(1000)
);

-- Lines of return and repair bills; WID and StatusWID are the warehouses of postings line by line.
create table if not exists RGstockBillItems (
    BillId       nvarchar(40) not null,
    ItemNo       integer,
    Gid          nvarchar(40),
    Qty          real,
    Unit         nvarchar(40),
    Model1       nvarchar(100),
    Model2       nvarchar(100),
    Class        nvarchar(40),
    SpRemarks    nvarchar(1000),
    WID          nvarchar(40),
    StatusWID    nvarchar(40),
    GoodsStatus  int,
    primary key (BillId, ItemNo)
);

-- Borrow bills: goods lent out and goods borrowed in.
create table if not exists GBorrow (
    Id        nvarchar(40) not null primary key,
    Kind      nvarchar(40),
    BillDate  date,
    Remarks   nvarchar(1000)
);

-- Lines of borrow bills; UQty is in the line's own unit.
create table if not exists GBorrowItems (
    BillId      nvarchar(40) not null,
    ItemNo      integer,
    Supplier    nvarchar(40),
    Receiver    nvarchar(40),
    Gid         nvarchar(40),
    Model1      nvarchar(100),
    Model2      nvarchar(100),
    Goodstutas  int,
    UQty        real,
    Unit        nvarchar(40),
    Class       nvarchar(40),
    Remarks     nvarchar(1000),
    primary key (BillId, ItemNo)
);

-- Assembly and disassembly bills: the main item is in the header. Actualqty is no decimal, whose literal is empty.
create table if not exists GoodsBill (
    Id           nvarchar(40) not null primary key,
    Kind         nvarchar(40),
    BillDate     date,
    WareHouseID  nvarchar(40),
    Gid          nvarchar(40),
    Model1       nvarchar(100),
    Model2       nvarchar(100),
    Goodstutas   int,
    Actualqty    real,
    Class        nvarchar(40),
    Unit         nvarchar(40),
    Remarks      nvarchar(1000)
);

-- Components of assembly and disassembly bills, each with its own warehouse.
create table if not exists GoodsBillItems (
    BillId       nvarchar(40) not null,
    ItemNo       integer,
    WareHouseID  nvarchar(40),
    Gid          nvarchar(40),
    Model1       nvarchar(100),
    Model2       nvarchar(100),
    Goodstutas   int,
    Actualqty    real,
    Class        nvarchar(40),
    Unit         nvarchar(40),
    Remarks      nvarchar(1000),
    primary key (BillId, ItemNo)
);

-- Markers of bills that a host saved in one transaction with its postings: a commit whose answer was lost is found here
-- before the bill is saved again. Old rows may be deleted.
create table if not exists SavedBill (
    Marker   nvarchar(64) not null primary key,
    SavedAt  datetime default current_timestamp
);

-- What hosts did with bills, in the order in which it reached the ledger: an entry is the last statement of its transaction,
-- which holds the bill's ledger rows by then. Content keeps a bill that was taken back as it was. `vantlo verify` posts all
-- again in this order; stored bills without an entry come before all others, by date and id.
create table if not exists BillHistory (
    EntryNo  integer primary key,
    Kind     nvarchar(40) not null,
    BillId   nvarchar(40) not null,
    Action   nvarchar(40) not null,
    Content  nvarchar(1000000),
    DoneAt   datetime default current_timestamp
);

-- What `vantlo repair` changed in the ledger, a row for each ledger row. The rows of one repair have its number;
-- UndoneNo is the number of the repair that this one undid. The quantities before and after are null where the row was not
-- there. BeforeRow and AfterRow have the whole row: its columns, each with its value as an SQL literal.
create table if not exists RepairJournal (
    EntryNo           integer primary key,
    RepairNo          integer,
    UndoneNo          integer,
    Cause             nvarchar(100),
    Action            nvarchar(40),
    WID               nvarchar(40),
    GId               nvarchar(40),
    Model1            nvarchar(100),
    Model2            nvarchar(100),
    Status            int,
    BeforeInQty       money,
    AfterInQty        money,
    BeforeOutQty      money,
    AfterOutQty       money,
    BeforeCurrentQty  money,
    AfterCurrentQty   money,
    BeforeRow         nvarchar(1000000),
    AfterRow          nvarchar(1000000),
    RepairedAt        datetime default current_timestamp
);

-- What `vantlo import` has posted: a row for each call of a member, in the same transaction, ItemNo 0 for calls that post a
-- whole bill. An import that is run again passes over the bills that are here; Content tells whether they are the same.
create table if not exists PostingJournal (
    Kind      nvarchar(40) not null,
    BillId    nvarchar(40) not null,
    Member    nvarchar(40) not null,
    ItemNo    integer not null,
    Content   nvarchar(100) not null,
    PostedAt  datetime default current_timestamp,
    primary key (BillId, Kind, Member, ItemNo)
);

-- How the shop's own bill tables are read, as `vantlo adopt --shop` was told: one row at most; docs/adopting.md. Without a
-- row the tables above are read.
create table if not exists ShopDescription (
    Content      nvarchar(1000000),
    DescribedAt  datetime default current_timestamp
);

-- How much is to be on hand at least, as `vantlo low` watches it, in base units. An empty warehouse or model stands for all of
-- them together.
create table if not exists StockMinimum (
    GId      nvarchar(40) not null,
    WID      nvarchar(40) not null,
    Model1   nvarchar(100) not null,
    Model2   nvarchar(100) not null,
    Status   int not null,
    Minimum  money,
    primary key (GId, WID, Model1, Model2, Status)
);
