Attribute VB_Name = "SaveLine"
' Saves one line of a stock bill in a transaction, for VB6 and VBA. It needs StockBillItem.cls and references to "Vantlo
' stock ledger 3.0", "Corvane bill lines 1.0" and "Microsoft ActiveX Data Objects".
Option Explicit

Public Sub SaveLine(ByVal connectionString As String)
    Dim connection As New ADODB.Connection
    Dim ledger As New Vantlo.Inventory_Class
    Dim item As New StockBillItem
    Dim line As Corvane.StockBillItemObject
    Dim result As Long

    connection.CursorLocation = adUseClient    ' on the connection, and before it opens
    connection.Open connectionString
    ledger.DATAType = "[Microsoft SQL Server]"
    Set ledger.ADOConn = connection

    item.Receiver = "W1"
    item.Supplier = "W2"
    item.Gid = "G001"
    item.Unit = "box"
    item.Actualqty = 2
    Set line = item    ' the parameter is passed by reference: its variable has the declared type

    connection.BeginTrans
    On Error Resume Next
    result = ledger.AddInventory_Db(line)
    If Err.Number <> 0 Then result = Err.Number    ' COM itself refused the call
    On Error GoTo 0
    If result = 0 Then
        connection.CommitTrans
    Else
        connection.RollbackTrans    ' the user has seen the message already
    End If

    Set ledger.ADOConn = Nothing    ' before the connection closes, and on every thread that set it
    connection.Close
End Sub
