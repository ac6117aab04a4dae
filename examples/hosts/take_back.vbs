' Takes a stored stock bill back, in a transaction.
'
' Usage: cscript //nologo take_back.vbs CONNECTION-STRING BILL-ID [DATATYPE]
'
' A VBScript class can have no property named Class, which a new ledger row asks a line for: hosts in VBScript take lines
' from a compiled class, or from a JScript object of the same page.
Option Explicit

Const adUseClient = 3

Dim connection, ledger, result
Set connection = CreateObject("ADODB.Connection")
connection.CursorLocation = adUseClient    ' on the connection, and before it opens
connection.Open WScript.Arguments(0)

Set ledger = CreateObject("Vantlo.Inventory_Class")
ledger.DATAType = "[Microsoft SQL Server]"
If WScript.Arguments.Count > 2 Then ledger.DATAType = WScript.Arguments(2)
Set ledger.ADOConn = connection

connection.BeginTrans
On Error Resume Next
result = ledger.ReduceInventory_Db(WScript.Arguments(1))
If Err.Number <> 0 Then result = Err.Number    ' COM itself refused the call
On Error GoTo 0
If result = 0 Then
    connection.CommitTrans
    WScript.Echo "taken back"
Else
    connection.RollbackTrans
    WScript.Echo "not taken back: error " & result
End If

Set ledger.ADOConn = Nothing    ' before the connection closes
connection.Close
