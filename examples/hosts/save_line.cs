// Saves one line of a stock bill in a transaction, for C# on .NET Framework or .NET.
//
// Usage: save_line CONNECTION-STRING

using System;
using System.Runtime.InteropServices;

// The getters stand in the order of the interface.
[ComVisible(true), Guid("54F73925-6E44-48B0-A280-0EC5CCB10FB3"), InterfaceType(ComInterfaceType.InterfaceIsDual)]
public interface IStockBillItem
{
    [DispId(0x68030000)] string Receiver { get; }
    [DispId(0x68030001)] string Supplier { get; }
    [DispId(0x68030002)] string Gid { get; }
    [DispId(0x68030003)] string Model1 { get; }
    [DispId(0x68030004)] string Model2 { get; }
    [DispId(0x68030005)] string Class { get; }
    [DispId(0x68030006)] string Unit { get; }
    [DispId(0x68030007)] float Actualqty { get; }
    [DispId(0x68030008)] float Qty { get; }
    [DispId(0x68030009)] int Goodstutas { get; }
    [DispId(0x6803000A)] string Remarks { get; }
}

[ComVisible(true), ClassInterface(ClassInterfaceType.None), ComDefaultInterface(typeof(IStockBillItem))]
public class StockBillItem : IStockBillItem
{
    public string Receiver { get; set; }
    public string Supplier { get; set; }
    public string Gid { get; set; }
    public string Model1 { get; set; }
    public string Model2 { get; set; }
    public string Class { get; set; }
    public string Unit { get; set; }
    public float Actualqty { get; set; }
    public float Qty { get; set; }
    public int Goodstutas { get; set; }
    public string Remarks { get; set; }
}

public static class SaveLine
{
    const int adUseClient = 3;

    static dynamic Make(string name) { return Activator.CreateInstance(Type.GetTypeFromProgID(name, true)); }

    [STAThread]  // the class lives in single-threaded apartments
    public static int Main(string[] arguments)
    {
        dynamic connection = Make("ADODB.Connection");
        connection.CursorLocation = adUseClient;  // on the connection, and before it opens
        connection.Open(arguments[0]);
        dynamic ledger = Make("Vantlo.Inventory_Class");
        try
        {
            ledger.DATAType = "[Microsoft SQL Server]";
            ledger.ADOConn = connection;
            var line = new StockBillItem
            {
                Receiver = "W1", Supplier = "W2", Gid = "G001", Model1 = "", Model2 = "", Class = "", Unit = "box",
                Actualqty = 2, Qty = 2, Goodstutas = 0, Remarks = ""
            };
            int result = -1;
            connection.BeginTrans();
            try { result = ledger.AddInventory_Db(line); }
            finally
            {
                if (result == 0) connection.CommitTrans(); else connection.RollbackTrans();
            }
            if (result != 0) Console.Error.WriteLine("not saved: error " + result);
            return result == 0 ? 0 : 1;
        }
        finally
        {
            ledger.ADOConn = null;  // before the connection closes
            connection.Close();
        }
    }
}
