// Saves every bill of a shop through the component as a script host would: it reads the stored bills in the order of their
// history, makes line objects of its own, and calls the members that their kind asks for. Then takes some back.
//
// Arguments: the database file; then pairs of a kind and an identifier to take back.

var connection = new ActiveXObject("ADODB.Connection");
connection.CursorLocation = 3;
connection.Open("Data Source=" + WScript.Arguments(0));
var component = new ActiveXObject("Vantlo.Inventory_Class");
component.DATAType = "[Microsoft SQL Server]";
component.ADOConn = connection;

var stockColumns = ["Receiver", "Supplier", "Gid", "Model1", "Model2", "Class", "Unit", "Actualqty", "Qty", "Goodstutas",
                    "Remarks"];
var repairColumns = ["WID", "StatusWID", "Gid", "Model1", "Model2", "Class", "Unit", "Qty", "GoodsStatus", "SpRemarks"];
var borrowColumns = ["Receiver", "Supplier", "Gid", "Model1", "Model2", "Class", "Unit", "UQty", "Goodstutas", "Remarks"];
var stock = {header: "StockBill", lines: "StockBillItems", columns: stockColumns};
var repair = {header: "RGstockBill", lines: "RGstockBillItems", columns: repairColumns};
var borrow = {header: "GBorrow", lines: "GBorrowItems", columns: borrowColumns};
var goods = {header: "GoodsBill", lines: "GoodsBillItems", columns: []};

// What each kind calls for each line, or once for the bill: `l` is the line, `h` the header, `id` the bill's identifier.
var kinds = {
    "stock": {tables: stock, line: function (l) { return component.AddInventory_Db(l); },
              backBill: function (id) { return component.ReduceInventory_Db(id); }},
    "stock-in": {tables: stock, line: function (l, h) { return component.In_AddInventory(l, h.status); },
                 backBill: function (id, h) { return component.In_ReduceInventory(id, "", -1, h.status); }},
    "stock-out": {tables: stock, line: function (l, h) { return component.Out_ReduceInventory(l, false, h.status); },
                  backBill: function (id, h) { return component.Out_AddInventory(id, false, h.status); }},
    "stock-out-magnitude": {tables: stock,
                            line: function (l, h) { return component.Out_ReduceInventory(l, true, h.status); },
                            backBill: function (id, h) { return component.Out_AddInventory(id, true, h.status); }},
    "loss": {tables: stock, warehouse: "Supplier",
             line: function (l, h) { return component.Loss_ReduceInventory(l, h.status); },
             backBill: function (id) { return component.Loss_AddInventory(id); }},
    "overage": {tables: stock, warehouse: "Receiver",
                line: function (l, h) { return component.Over_AddInventory(l, h.status); },
                backBill: function (id) { return component.Over_ReduceInventory(id); }},
    "sales-return": {tables: stock, line: function (l) { return component.SaleIn_AddInventory(l); },
                     backBill: function (id) { return component.SaleIn_ReduceInventory(id); }},
    "conversion": {tables: stock,
                   line: function (l, h) { return component.GoodsConvert_AddItems_ChangeInventory(l, h.status); },
                   backBill: function (id) { return component.GoodsConvert_DelItems_ChangeInventory(id); }},
    "return-repair": {tables: repair,
                      line: function (l, h) { return component.RG_AddInventory_Db(l, h.receiver, h.supplier); },
                      backBill: function (id) { return component.RG_ReduceInventory_Db(id); }},
    "transfer": {tables: repair,
                 line: function (l, h) { return component.Hj_AddInventory_Db(l, h.receiver, h.supplier); },
                 backBill: function (id) { return component.Hj_ReduceInventory_Db(id); }},
    "repair-in": {tables: repair, line: function (l) { return component.RG_In_AddInventory(l); },
                  backLine: function (l) { return component.RG_In_ReduceInventory(l); }},
    "repair-in-status": {tables: repair, line: function (l) { return component.RG_In_AddInventoryStatus(l); },
                         backLine: function (l) { return component.RG_In_ReduceInventoryStatus(l); }},
    "repair-out": {tables: repair, line: function (l) { return component.RG_Out_ReduceInventory(l); },
                   backLine: function (l) { return component.RG_Out_AddInventory(l); }},
    "repaired-in": {tables: repair, line: function (l) { return component.XFP_In_AddInventory(l); },
                    backLine: function (l) { return component.XFP_In_ReduceInventory(l); }},
    "repaired-out": {tables: repair, line: function (l) { return component.XFP_Out_ReduceInventory(l); },
                     backLine: function (l) { return component.XFP_Out_AddInventory(l); }},
    "borrow-out": {tables: borrow, bill: function (id) { return component.BorrowOut_ReduceInventory(id); },
                   backLine: function (l) { return component.BorrowOut_AddInventory(l); }},
    "borrow-in": {tables: borrow, line: function (l) { return component.BorrowIn_AddInventory(l); },
                  backBill: function (id) { return component.BorrowIn_ReduceInventory(id); }},
    "assembly": {tables: goods,
                 bill: function (id) {
                     return component.ReduceInventory_ZZD_ZJ(id) || component.AddInventory_ZZD_MJ(id);
                 },
                 backBill: function (id) {
                     return component.AddInventory_ZZD_ZJ(id) || component.ReduceInventory_ZZD_MJ(id);
                 }},
    "disassembly": {tables: goods,
                    bill: function (id) {
                        return component.ReduceInventory_CXD_MJ(id) || component.AddInventory_CXD_ZJ(id);
                    },
                    backBill: function (id) {
                        return component.ReduceInventory_CXD_ZJ(id) || component.AddInventory_CXD_MJ(id);
                    }}
};

function header(kind, id) {
    var rows = connection.Execute("select * from " + kind.tables.header + " where Id='" + id + "'");
    var found = {};
    if (kind.tables === stock) found.status = rows.Fields("ReferFlag").Value || 0;
    if (kind.tables === repair) {
        found.receiver = rows.Fields("Receiver").Value;
        found.supplier = rows.Fields("Supplier").Value;
    }
    rows.Close();
    return found;
}

function eachLine(kind, id, call) {
    var rows = connection.Execute("select * from " + kind.tables.lines + " where BillId='" + id + "' order by ItemNo");
    while (!rows.EOF) {
        var line = {};
        for (var i = 0; i < kind.tables.columns.length; i++) {
            var column = kind.tables.columns[i];
            line[column] = rows.Fields(column).Value;
        }
        if (kind.warehouse) line.WarehouseId = line[kind.warehouse];
        check(call(line), id);
        rows.MoveNext();
    }
    rows.Close();
}

function check(result, id) {
    if (result === 0) return;
    WScript.Echo(id + " fails with " + result);
    WScript.Quit(1);
}

function run(kind, id, forBill, forLine) {
    var found = header(kind, id);
    if (forBill) check(forBill(id, found), id);
    else eachLine(kind, id, function (line) { return forLine(line, found); });
}

var bills = 0;
var history = connection.Execute("select Kind, BillId from BillHistory order by EntryNo");
while (!history.EOF) {
    var kind = kinds[history.Fields("Kind").Value];
    run(kind, history.Fields("BillId").Value, kind.bill, kind.line);
    bills++;
    history.MoveNext();
}
history.Close();
WScript.Echo(bills + " bills saved");

for (var i = 1; i < WScript.Arguments.Count(); i += 2) {
    var back = kinds[WScript.Arguments(i)];
    run(back, WScript.Arguments(i + 1), back.backBill, back.backLine);
}

component.ADOConn = null;
connection.Close();
WScript.Echo("done");
