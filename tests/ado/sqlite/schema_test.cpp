#include <doctest/doctest.h>

#include <fstream>
#include <iterator>
#include <string>

#include "ado/sqlite/declared_type.h"
#include "ado/sqlite/sqlite_connection.h"
#include "automation/calendar.h"
#include "tests/support/printing.h"

namespace vantlo::test {
namespace {

Owned<SqliteConnection> open_with_tables() {
    std::ifstream file(VANTLO_SOURCE_DIR "/schema/sqlite.sql");
    const std::string schema{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
    Owned<SqliteConnection> connection(new SqliteConnection(":memory:"));
    connection->run_script(schema);
    connection->run_script(schema);  // a database that has the tables keeps them
    return connection;
}

TEST_CASE("The tables have the columns of the system under their own names") {
    struct Row {
        const char* table;
        const char* columns;
    };
    const Row rows[] = {
        {"Inventory", "WID,GId,Model1,Model2,Status,Class,Unit,InQty,OutQty,CurrentQty,Remarks"},
        {"GoodsUnit", "id,Unit,UnitConverter"},
        {"Goods", "ID,Class,GCZYCPFlag"},
        {"SavedBill", "Marker,SavedAt"},
        {"BillHistory", "EntryNo,Kind,BillId,Action,Content,DoneAt"},
        {"RepairJournal",
         "EntryNo,RepairNo,UndoneNo,Cause,Action,WID,GId,Model1,Model2,Status,BeforeInQty,AfterInQty,BeforeOutQty,"
         "AfterOutQty,"
         "BeforeCurrentQty,AfterCurrentQty,BeforeRow,AfterRow,RepairedAt"},
        {"PostingJournal", "Kind,BillId,Member,ItemNo,Content,PostedAt"},
        {"ShopDescription", "Content,DescribedAt"},
        {"StockMinimum", "GId,WID,Model1,Model2,Status,Minimum"},
        {"Warehouse", "ID,Name"},
        {"StockBill", "Id,Kind,BillDate,ReferFlag,Remarks"},
        {"StockBillItems",
         "BillId,ItemNo,Gid,Unit,Actualqty,Qty,Receiver,Supplier,Model1,Model2,Class,Goodstutas,Remarks"},
        {"RGstockBill", "id,Kind,BillDate,Receiver,Supplier,Remarks"},
        {"RGstockBillItems", "BillId,ItemNo,Gid,Qty,Unit,Model1,Model2,Class,SpRemarks,WID,StatusWID,GoodsStatus"},
        {"GBorrow", "Id,Kind,BillDate,Remarks"},
        {"GBorrowItems", "BillId,ItemNo,Supplier,Receiver,Gid,Model1,Model2,Goodstutas,UQty,Unit,Class,Remarks"},
        {"GoodsBill", "Id,Kind,BillDate,WareHouseID,Gid,Model1,Model2,Goodstutas,Actualqty,Class,Unit,Remarks"},
        {"GoodsBillItems", "BillId,ItemNo,WareHouseID,Gid,Model1,Model2,Goodstutas,Actualqty,Class,Unit,Remarks"},
    };
    const Owned<SqliteConnection> connection = open_with_tables();
    for (const Row& row : rows) {
        const std::string statement = std::string("select ") + row.columns + " from " + row.table;
        INFO(statement);
        CHECK_NOTHROW(connection->run(from_utf8(statement)));
    }
    CHECK(connection->run(u"select name from sqlite_schema where type = 'table'").rows.size() == std::size(rows));
}

TEST_CASE("Every column is declared as a type that the adapter knows, and a text keeps its digits") {
    const Owned<SqliteConnection> connection = open_with_tables();
    const ResultTable columns = connection->run(
        u"select t.name || '.' || c.name, c.type from sqlite_schema t join pragma_table_info(t.name) c"
        u" where t.type = 'table'");
    REQUIRE(columns.rows.size() > 80);
    for (const std::vector<Variant>& row : columns.rows) {
        const std::string declaration = to_utf8(to_text(row[1]));
        INFO(to_utf8(to_text(row[0])), " ", declaration);
        const DeclaredType type = declared_type(declaration);
        CHECK(type != DeclaredType::none);
        CHECK(type != DeclaredType::decimal);
        if (type == DeclaredType::text) CHECK(declaration.starts_with("nvarchar("));
    }
}

TEST_CASE("Quantities, statuses and factors are read as the types that the postings expect") {
    const Owned<SqliteConnection> connection = open_with_tables();
    const auto stored_and_read = [&](const char16_t* table, const char16_t* key, const char16_t* column,
                                     const char16_t* literal) {
        connection->run(Text(u"delete from ") + table);
        const bool has_key = *key != u'\0';
        connection->run(Text(u"insert into ") + table + u"(" + key + (has_key ? u"," : u"") + column + u") values(" +
                        (has_key ? u"'B1'," : u"") + literal + u")");
        return connection->run(Text(u"select ") + column + u" from " + table).rows.at(0).at(0);
    };
    struct Row {
        const char16_t* table;
        const char16_t* key;
        const char16_t* column;
        const char16_t* literal;
        Variant value;
    };
    // clang-format off
    const Row rows[] = {
        {u"Inventory",        u"",       u"InQty",         u"0.3333",       Currency::from_ten_thousandths(3333)},
        {u"Inventory",        u"",       u"OutQty",        u"-12.5",        Currency::from_ten_thousandths(-125000)},
        {u"Inventory",        u"",       u"CurrentQty",    u"24",           Currency::from_whole(24)},
        {u"Inventory",        u"",       u"Status",        u"2",            2},
        {u"Inventory",        u"",       u"WID",           u"'007'",        u"007"},
        {u"StockBill",        u"Id",     u"ReferFlag",     u"6",            std::int16_t{6}},
        {u"StockBill",        u"Id",     u"BillDate",      u"'2024-03-05'", date_of({2024, 3, 5, 0, 0, 0})},
        {u"StockBillItems",   u"BillId", u"Actualqty",     u"2.1",          2.1F},
        {u"StockBillItems",   u"BillId", u"Qty",           u"2",            2.0F},
        {u"StockBillItems",   u"BillId", u"Goodstutas",    u"1",            1},
        {u"RGstockBillItems", u"BillId", u"Qty",           u"0.5",          0.5F},
        {u"RGstockBillItems", u"BillId", u"GoodsStatus",   u"1",            1},
        {u"GBorrowItems",     u"BillId", u"UQty",          u"1E-05",        1E-05F},
        {u"GBorrowItems",     u"BillId", u"Goodstutas",    u"1",            1},
        {u"GoodsBill",        u"Id",     u"Actualqty",     u"3",            3.0F},
        {u"GoodsBill",        u"Id",     u"Goodstutas",    u"0",            0},
        {u"GoodsBillItems",   u"BillId", u"Actualqty",     u"3",            3.0F},
        {u"GoodsBillItems",   u"BillId", u"Goodstutas",    u"0",            0},
        {u"Goods",            u"ID",     u"GCZYCPFlag",    u"1",            std::int16_t{1}},
    };
    // clang-format on
    for (const Row& row : rows) {
        INFO(to_utf8(row.table), ".", to_utf8(row.column));
        CHECK(stored_and_read(row.table, row.key, row.column, row.literal) == row.value);
    }
    connection->run(u"insert into GoodsUnit values('G1','箱',12)");
    CHECK(connection->run(u"select UnitConverter from GoodsUnit").rows.at(0).at(0) == Variant(12.0));
}

TEST_CASE("The look-ups of postings search an index") {
    const Owned<SqliteConnection> connection = open_with_tables();
    for (const char16_t* statement : {
             u"select * from Inventory where WID='W1' and GId='G1' and Model1='' and Model2='' and Status=0",
             u"update Inventory set InQty = InQty + 1 where WID='W1' and GId='G1' and Model1='' and Model2='' and "
             u"Status=0",
             u"select id,Unit,UnitConverter from GoodsUnit where id='G1' and Unit='箱'",
             u"select * from StockBill where Id='B1'",
             u"select * from StockBillItems where BillId='B1'",
             u"select RGstockBillItems.*,RGstockBill.Receiver,RGstockBill.Supplier from RGstockBillItems left join "
             u"RGstockBill on RGstockBillItems.billid = RGstockBill.id where BillId='B1'",
             u"select StockBillItems.* from StockBillItems left join Goods on StockBillItems.GID=Goods.ID  where "
             u"BillId='B1' and  Goods.Class='A01'",
             u"select * from GBorrowItems where BillId='B1'",
             u"select * from GoodsBill where Id='B1'",
             u"select * from GoodsBillItems where BillId='B1'",
         }) {
        INFO(to_utf8(statement));
        const RecordsetVariable plan = connection->execute(Text(u"explain query plan ") + statement);
        REQUIRE_FALSE(plan->eof());
        for (; !plan->eof(); plan->move_next()) CHECK(to_text(plan->field(u"detail")).starts_with(u"SEARCH "));
    }
    const RecordsetVariable plan = connection->execute(
        u"explain query plan select * from Inventory where WID='W1' and GId='G1' and Model1='' and Model2='' and "
        u"Status=0");
    CHECK(to_text(plan->field(u"detail")) ==
          u"SEARCH Inventory USING INDEX InventoryKey (WID=? AND GId=? AND Model1=? AND Model2=? AND Status=?)");
}

TEST_CASE("Lines of a bill come back in the order of their numbers") {
    const Owned<SqliteConnection> connection = open_with_tables();
    connection->run_script(
        "insert into StockBillItems(BillId, ItemNo, Gid) values ('B1', 2, 'second'), ('B2', 1, 'other'),"
        " ('B1', 10, 'third'), ('B1', 1, 'first')");
    CHECK(connection->run(u"select Gid from StockBillItems where BillId='B1'").rows ==
          std::vector<std::vector<Variant>>{{u"first"}, {u"second"}, {u"third"}});
}

}  // namespace
}  // namespace vantlo::test
