# Saves one line of a stock bill in a transaction, for Windows PowerShell 5.1 and PowerShell 7.
#
# Usage: save_line.ps1 CONNECTION-STRING
param([Parameter(Mandatory)] [string] $ConnectionString)
$ErrorActionPreference = 'Stop'

# A PSCustomObject has no properties for COM: the line is a compiled class that implements the declared interface. The
# getters stand in the order of the interface.
Add-Type -TypeDefinition @'
using System.Runtime.InteropServices;

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
'@

$adUseClient = 3
$connection = New-Object -ComObject ADODB.Connection
$connection.CursorLocation = $adUseClient    # on the connection, and before it opens
$connection.Open($ConnectionString)
$ledger = New-Object -ComObject Vantlo.Inventory_Class
try {
    $ledger.DATAType = '[Microsoft SQL Server]'
    $ledger.ADOConn = $connection
    $line = New-Object StockBillItem -Property @{
        Receiver = 'W1'; Supplier = 'W2'; Gid = 'G001'; Model1 = ''; Model2 = ''; Class = ''; Unit = 'box'
        Actualqty = 2; Qty = 2; Goodstutas = 0; Remarks = ''
    }
    [void] $connection.BeginTrans()
    $result = -1
    try { $result = $ledger.AddInventory_Db($line) }
    finally {
        if ($result -eq 0) { $connection.CommitTrans() } else { $connection.RollbackTrans() }
    }
    if ($result -ne 0) { throw "not saved: error $result" }
} finally {
    $ledger.ADOConn = $null    # before the connection closes
    $connection.Close()
}
