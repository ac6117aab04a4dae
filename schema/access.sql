-- The tables of the system for Microsoft Access. It knows no "if not exists": run this on an empty database. Texts compare
-- without regard to case, which no setting of a table changes.

-- Warehouses; their ids are the WID of the ledger.
create table Warehouse (
    ID    text(40) not null primary key,
    Name  text(100)
);

-- Goods; GCZYCPFlag marks main goods.
create table Goods (
    ID          text(40) not null primary key,
    Name        text(200),
    Class       text(40),
    Model       text(200),
    Unit        text(40),
    GCZYCPFlag  short,
    Remarks     memo
);

-- Units of goods: how many base units one such unit holds; 0 and null both count as 1.
create table GoodsUnit (
    id             text(40) not null,
    Unit           text(40) not null,
    UnitConverter  double,
    primary key (id, Unit)
);

-- The stock ledger: one row per warehouse, goods, models and status, which nothing enforces.
create table Inventory (
    WID         text(40),
    GId         text(40),
    Model1      text(100),
    Model2      text(100),
    Status      long,
    Class       text(40),
    Unit        text(40),
    InQty       currency,
    OutQty      currency,
    CurrentQty  currency,
    Remarks     memo
);
-- The look-up of every posting; without it the cost of one posting grows with the ledger.
create index InventoryKey on Inventory (WID, GId, Model1, Model2, Status);

-- Stock bills of all kinds; ReferFlag holds a goods status or a kind of status conversion.
create table StockBill (
    Id         text(40) not null primary key,
    Kind       text(40),
    BillDate   datetime,
    ReferFlag  short,
    Remarks    memo
);

-- Lines of stock bills; Actualqty and Qty are in the line's own unit.
create table StockBillItems (
    BillId      text(40) not null,
    ItemNo      long,
    Gid         text(40),
    Unit        text(40),
    Actualqty   single,
    Qty         single,
    Receiver    text(40),
    Supplier    text(40),
    Model1      text(100),
    Model2      text(100),
    Class       text(40),
    Goodstutas  long,
    Remarks     memo
);
create index StockBillItemsBill on StockBillItems (BillId, ItemNo);

-- Return and repair bills, transfers and repaired goods, with the two warehouses of the whole bill.
create table RGstockBill (
    id        text(40) not null primary key,
    Kind      text(40),
    BillDate  datetime,
    Receiver  text(40),
    Supplier  text(40),
    Remarks   memo
);

-- Lines of return and repair bills; WID and StatusWID are the warehouses of postings line by line.
create table RGstockBillItems (
    BillId       text(40) not null,
    ItemNo       long,
    Gid          text(40),
    Qty          single,
    Unit         text(40),
    Model1       text(100),
    Model2       text(100),
    Class        text(40),
    SpRemarks    memo,
    WID          text(40),
    StatusWID    text(40),
    GoodsStatus  long
);
create index RGstockBillItemsBill on RGstockBillItems (BillId, ItemNo);

-- Borrow bills: goods lent out and goods borrowed in.
create table GBorrow (
    Id        text(40) not null primary key,
    Kind      text(40),
    BillDate  datetime,
    Remarks   memo
);

-- Lines of borrow bills; UQty is in the line's own unit.
create table GBorrowItems (
    BillId      text(40) not null,
    ItemNo      long,
    Supplier    text(40),
    Receiver    text(40),
    Gid         text(40),
    Model1      text(100),
    Model2      text(100),
    Goodstutas  long,
    UQty        single,
    Unit        text(40),
    Class       text(40),
    Remarks     memo
);
create index GBorrowItemsBill on GBorrowItems (BillId, ItemNo);

-- Assembly and disassembly bills: the main item is in the header. Actualqty is no decimal, whose literal is empty.
create table GoodsBill (
    Id           text(40) not null primary key,
    Kind         text(40),
    BillDate     datetime,
    WareHouseID  text(40),
    Gid          text(40),
    Model1       text(100),
    Model2       text(100),
    Goodstutas   long,
    Actualqty    single,
    Class        text(40),
    Unit         text(40),
    Remarks      memo
);

-- Components of assembly and disassembly bills, each with its own warehouse.
create table GoodsBillItems (
    BillId       text(40) not null,
    ItemNo       long,
    WareHouseID  text(40),
    Gid          text(40),
    Model1       text(100),
    Model2       text(100),
    Goodstutas   long,
    Actualqty    single,
    Class        text(40),
    Unit         text(40),
    Remarks      memo
);
create index GoodsBillItemsBill on GoodsBillItems (BillId, ItemNo);

-- Markers of bills that a host saved in one transaction with its postings: a commit whose answer was lost is found here
-- before the bill is saved again. Old rows may be deleted.
create table SavedBill (
    Marker   text(64) not null primary key,
    SavedAt  datetime
);

-- What hosts did with bills, in the order in which it reached the ledger: an entry is the last statement of its transaction,
-- which holds the bill's ledger rows by then. Content keeps a bill that was taken back as it was. `vantlo verify` posts all
-- again in this order; stored bills without an entry come before all others, by date and id.
create table BillHistory (
    EntryNo  counter primary key,
    Kind     text(40) not null,
    BillId   text(40) not null,
    Action   text(40) not null,
    Content  memo,
    DoneAt   datetime
);

-- What `vantlo repair` changed in the ledger, a row for each ledger row. The rows of one repair have its number;
-- UndoneNo is the number of the repair that this one undid. The quantities before and after are null where the row was not
-- there. BeforeRow and AfterRow have the whole row: its columns, each with its value as an SQL literal.
create table RepairJournal (
    EntryNo           counter primary key,
    RepairNo          long,
    UndoneNo          long,
    Cause             text(100),
    Action            text(40),
    WID               text(40),
    GId               text(40),
    Model1            text(100),
    Model2            text(100),
    Status            long,
    BeforeInQty       currency,
    AfterInQty        currency,
    BeforeOutQty      currency,
    AfterOutQty       currency,
    BeforeCurrentQty  currency,
    AfterCurrentQty   currency,
    BeforeRow         memo,
    AfterRow          memo,
    RepairedAt        datetime
);

-- What `vantlo import` has posted: a row for each call of a member, in the same transaction, ItemNo 0 for calls that post a
-- whole bill. An import that is run again passes over the bills that are here; Content tells whether they are the same.
create table PostingJournal (
    Kind      text(40) not null,
    BillId    text(40) not null,
    Member    text(40) not null,
    ItemNo    long not null,
    Content   text(100) not null,
    PostedAt  datetime,
    primary key (BillId, Kind, Member, ItemNo)
);

-- How the shop's own bill tables are read, as `vantlo adopt --shop` was told: one row at most; docs/adopting.md. Without a
-- row the tables above are read.
create table ShopDescription (
    Content      memo,
    DescribedAt  datetime
);

-- How much is to be on hand at least, as `vantlo low` watches it, in base units. An empty warehouse or model stands for all of
-- them together.
create table StockMinimum (
    GId      text(40) not null,
    WID      text(40) not null,
    Model1   text(100) not null,
    Model2   text(100) not null,
    Status   long not null,
    Minimum  currency,
    primary key (GId, WID, Model1, Model2, Status)
);
