// Saves one line of a stock bill: two boxes of G001 from warehouse W2 to W1, in a transaction.
//
// Usage: cscript //nologo save_line.js CONNECTION-STRING [DATATYPE]

var adUseClient = 3;

var connection = new ActiveXObject("ADODB.Connection");
connection.CursorLocation = adUseClient;  // on the connection, and before it opens
connection.Open(WScript.Arguments(0));

var ledger = new ActiveXObject("Vantlo.Inventory_Class");
ledger.DATAType = WScript.Arguments.Count() > 1 ? WScript.Arguments(1) : "[Microsoft SQL Server]";
ledger.ADOConn = connection;

// Names are compared with their case. Numbers may be of any type.
var line = {
    Receiver: "W1", Supplier: "W2", Gid: "G001", Model1: "", Model2: "", Class: "", Unit: "box", Actualqty: 2, Qty: 2,
    Goodstutas: 0, Remarks: ""
};

var result;
connection.BeginTrans();
try {
    result = ledger.AddInventory_Db(line);
} catch (refused) {  // COM itself refused the call: no object, a wrong argument
    result = refused.number;
}
if (result === 0) {
    connection.CommitTrans();
    WScript.Echo("saved");
} else {
    connection.RollbackTrans();
    WScript.Echo("not saved: error " + result);
}

ledger.ADOConn = null;  // before the connection closes
connection.Close();
