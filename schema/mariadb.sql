-- The tables of the system for MariaDB and a Galera cluster of it. The collation compares texts exactly: case, accents and
-- blanks at the end count, and characters of every plane fit. Table names keep their case, as statements write them.

-- Warehouses; their ids are the WID of the ledger.
create table if not exists Warehouse (
    ID    varchar(40) not null primary key,
    Name  varchar(100)
) engine = InnoDB default character set utf8mb4 collate utf8mb4_nopad_bin;

-- Goods; GCZYCPFlag marks main goods.
create table if not exists Goods (
    ID          varchar(40) not null primary key,
    Name        varchar(200),
    Class       varchar(40),
    Model       varchar(200),
    Unit        varchar(40),
    GCZYCPFlag  smallint,
    Remarks     varchar(1000)
) engine = InnoDB default character set utf8mb4 collate utf8mb4_nopad_bin;

-- Units of goods: how many base units one such unit holds; 0 and null both count as 1.
create table if not exists GoodsUnit (
    id             varchar(40) not null,
    Unit           varchar(40) not null,
    UnitConverter  double,
    primary key (id, Unit)
) engine = InnoDB default character set utf8mb4 collate utf8mb4_nopad_bin;

-- The stock ledger: one row per warehouse, goods, models and status, which nothing enforces.
create table if not exists Inventory (
    WID         varchar(40),
    GId         varchar(40),
    Model1      varchar(100),
    Model2      varchar(100),
    Status      integer,
    Class       varchar(40),
    Unit        varchar(40),
    InQty       decimal(19,4),
    OutQty      decimal(19,4),
    CurrentQty  decimal(19,4),
    Remarks     varchar(1000)
) engine = InnoDB default character set utf8mb4 collate utf8mb4_nopad_bin;
-- The look-up of every posting; without it the cost of one posting grows with the ledger.
create index if not exists InventoryKey on Inventory (WID, GId, Model1, Model2, Status);

-- Stock bills of all kinds; ReferFlag holds a goods status or a kind of status conversion.
create table if not exists StockBill (
    Id         varchar(40) not null primary key,
    Kind       varchar(40),
    BillDate   datetime,
    ReferFlag  smallint,
    Remarks    varchar(1000)
) engine = InnoDB default character set utf8mb4 collate utf8mb4_nopad_bin;

-- Lines of stock bills; Actualqty and Qty are in the line's own unit.
create table if not exists StockBillItems (
    BillId      varchar(40) not null,
    ItemNo      integer,
    Gid         varchar(40),
    Unit        varchar(40),
    Actualqty   float,
    Qty         float,
    Receiver    varchar(40),
    Supplier    varchar(40),
    Model1      varchar(100),
    Model2      varchar(100),
    Class       varchar(40),
    Goodstutas  integer,
    Remarks     varchar(1000),
    unique (BillId, ItemNo)
) engine = InnoDB default character set utf8mb4 collate utf8mb4_nopad_bin;

-- Return and repair bills, transfers and repaired goods, with the two warehouses of the whole bill.
create table if not exists RGstockBill (
    id        varchar(40) not null primary key,
    Kind      varchar(40),
    BillDate  datetime,
    Receiver  varchar(40),
    Supplier  varchar(40),
    Remarks   varchar(1000)
) engine = InnoDB default character set utf8mb4 collate utf8mb4_nopad_bin;

-- Lines of return and repair bills; WID and StatusWID are the warehouses of postings line by line.
create table if not exists RGstockBillItems (
    BillId       varchar(40) not null,
    ItemNo       integer,
    Gid          varchar(40),
    Qty          float,
    Unit         varchar(40),
    Model1       varchar(100),
    Model2       varchar(100),
    Class        varchar(40),
    SpRemarks    varchar(1000),
    WID          varchar(40),
    StatusWID    varchar(40),
    GoodsStatus  integer,
    unique (BillId, ItemNo)
) engine = InnoDB default character set utf8mb4 collate utf8mb4_nopad_bin;

-- Borrow bills: goods lent out and goods borrowed in.
create table if not exists GBorrow (
    Id        varchar(40) not null primary key,
    Kind      varchar(40),
    BillDate  datetime,
    Remarks   varchar(1000)
) engine = InnoDB default character set utf8mb4 collate utf8mb4_nopad_bin;

-- Lines of borrow bills; UQty is in the line's own unit.
create table if not exists GBorrowItems (
    BillId      varchar(40) not null,
    ItemNo      integer,
    Supplier    varchar(40),
    Receiver    varchar(40),
    Gid         varchar(40),
    Model1      varchar(100),
    Model2      varchar(100),
    Goodstutas  integer,
    UQty        float,
    Unit        varchar(40),
    Class       varchar(40),
    Remarks     varchar(1000),
    unique (BillId, ItemNo)
) engine = InnoDB default character set utf8mb4 collate utf8mb4_nopad_bin;

-- Assembly and disassembly bills: the main item is in the header. Actualqty is no decimal, whose literal is empty.
create table if not exists GoodsBill (
    Id           varchar(40) not null primary key,
    Kind         varchar(40),
    BillDate     datetime,
    WareHouseID  varchar(40),
    Gid          varchar(40),
    Model1       varchar(100),
    Model2       varchar(100),
    Goodstutas   integer,
    Actualqty    float,
    Class        varchar(40),
    Unit         varchar(40),
    Remarks      varchar(1000)
) engine = InnoDB default character set utf8mb4 collate utf8mb4_nopad_bin;

-- Components of assembly and disassembly bills, each with its own warehouse.
create table if not exists GoodsBillItems (
    BillId       varchar(40) not null,
    ItemNo       integer,
    WareHouseID  varchar(40),
    Gid          varchar(40),
    Model1       varchar(100),
    Model2       varchar(100),
    Goodstutas   integer,
    Actualqty    float,
    Class        varchar(40),
    Unit         varchar(40),
    Remarks      varchar(1000),
    unique (BillId, ItemNo)
) engine = InnoDB default character set utf8mb4 collate utf8mb4_nopad_bin;

-- Markers of bills that a host saved in one transaction with its postings: a commit whose answer was lost is found here
-- before the bill is saved again. Old rows may be deleted.
create table if not exists SavedBill (
    Marker   varchar(64) not null primary key,
    SavedAt  datetime default current_timestamp
) engine = InnoDB default character set utf8mb4 collate utf8mb4_nopad_bin;

-- What hosts did with bills, in the order in which it reached the ledger: an entry is the last statement of its transaction,
-- which holds the bill's ledger rows by then. Content keeps a bill that was taken back as it was. `vantlo verify` posts all
-- again in this order; stored bills without an entry come before all others, by date and id.
create table if not exists BillHistory (
    EntryNo  integer not null auto_increment primary key,
    Kind     varchar(40) not null,
    BillId   varchar(40) not null,
    Action   varchar(40) not null,
    Content  longtext,
    DoneAt   datetime default current_timestamp
) engine = InnoDB default character set utf8mb4 collate utf8mb4_nopad_bin;

-- What `vantlo repair` changed in the ledger, a row for each ledger row. The rows of one repair have its number;
-- UndoneNo is the number of the repair that this one undid. The quantities before and after are null where the row was not
-- there. BeforeRow and AfterRow have the whole row: its columns, each with its value as an SQL literal.
create table if not exists RepairJournal (
    EntryNo           integer not null auto_increment primary key,
    RepairNo          integer,
    UndoneNo          integer,
    Cause             varchar(100),
    Action            varchar(40),
    WID               varchar(40),
    GId               varchar(40),
    Model1            varchar(100),
    Model2            varchar(100),
    Status            integer,
    BeforeInQty       decimal(19,4),
    AfterInQty        decimal(19,4),
    BeforeOutQty      decimal(19,4),
    AfterOutQty       decimal(19,4),
    BeforeCurrentQty  decimal(19,4),
    AfterCurrentQty   decimal(19,4),
    BeforeRow         longtext,
    AfterRow          longtext,
    RepairedAt        datetime default current_timestamp
) engine = InnoDB default character set utf8mb4 collate utf8mb4_nopad_bin;

-- What `vantlo import` has posted: a row for each call of a member, in the same transaction, ItemNo 0 for calls that post a
-- whole bill. An import that is run again passes over the bills that are here; Content tells whether they are the same.
create table if not exists PostingJournal (
    Kind      varchar(40) not null,
    BillId    varchar(40) not null,
    Member    varchar(40) not null,
    ItemNo    integer not null,
    Content   varchar(100) not null,
    PostedAt  datetime default current_timestamp,
    primary key (BillId, Kind, Member, ItemNo)
) engine = InnoDB default character set utf8mb4 collate utf8mb4_nopad_bin;
-- A table that is there already may have a narrower one.
alter table PostingJournal modify Content varchar(100) not null;

-- How the shop's own bill tables are read, as `vantlo adopt --shop` was told: one row at most; docs/adopting.md. Without a
-- row the tables above are read.
create table if not exists ShopDescription (
    Content      longtext,
    DescribedAt  datetime default current_timestamp
) engine = InnoDB default character set utf8mb4 collate utf8mb4_nopad_bin;

-- How much is to be on hand at least, as `vantlo low` watches it, in base units. An empty warehouse or model stands for all of
-- them together.
create table if not exists StockMinimum (
    GId      varchar(40) not null,
    WID      varchar(40) not null,
    Model1   varchar(100) not null,
    Model2   varchar(100) not null,
    Status   integer not null,
    Minimum  decimal(19,4),
    primary key (GId, WID, Model1, Model2, Status)
) engine = InnoDB default character set utf8mb4 collate utf8mb4_nopad_bin;
