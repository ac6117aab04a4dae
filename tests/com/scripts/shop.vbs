' Saves every bill of a shop through the component as a script host would: it reads the stored bills in the order of their
' history, makes line objects of its own, and calls the members that their kind asks for. Then takes some back.
'
' Arguments: the database file; then pairs of a kind and an identifier to take back.
Option Explicit

' Wine's engine has no way to declare a property named Class, which a line is asked for when its ledger row is new. What takes
' back finds its rows, so that an instance of this serves; for the rest the host has a compiled line object.
Class LineWithoutClass
    Public Receiver
    Public Supplier
    Public WID
    Public StatusWID
    Public Gid
    Public Model1
    Public Model2
    Public Unit
    Public Qty
    Public UQty
    Public Goodstutas
    Public GoodsStatus
    Public Remarks
    Public SpRemarks
End Class

Dim connection, component, bills, i
Set connection = CreateObject("ADODB.Connection")
connection.CursorLocation = 3
connection.Open "Data Source=" & WScript.Arguments(0)
Set component = CreateObject("Vantlo.Inventory_Class")
component.DATAType = "[Microsoft SQL Server]"
Set component.ADOConn = connection

bills = 0
Dim history
Set history = connection.Execute("select Kind, BillId from BillHistory order by EntryNo")
Do Until history.EOF
    Bill history("Kind").Value, history("BillId").Value, True
    bills = bills + 1
    history.MoveNext
Loop
history.Close
WScript.Echo bills & " bills saved"

For i = 1 To WScript.Arguments.Count - 1 Step 2
    Bill WScript.Arguments(i), WScript.Arguments(i + 1), False
Next

Set component.ADOConn = Nothing
connection.Close
WScript.Echo "done"

Function Header(table, id)
    Set Header = connection.Execute("select * from " & table & " where Id='" & id & "'")
End Function

Function Lines(table, id)
    Set Lines = connection.Execute("select * from " & table & " where BillId='" & id & "' order by ItemNo")
End Function

Function StockLine(row)
    Dim made
    Set made = CreateObject("VantloTest.Line")
    made.Receiver = row("Receiver").Value
    made.Supplier = row("Supplier").Value
    made.Gid = row("Gid").Value
    made.Model1 = row("Model1").Value
    made.Model2 = row("Model2").Value
    made.Class = row("Class").Value
    made.Unit = row("Unit").Value
    made.Actualqty = row("Actualqty").Value
    made.Qty = row("Qty").Value
    made.Goodstutas = row("Goodstutas").Value
    made.Remarks = row("Remarks").Value
    Set StockLine = made
End Function

Function RepairLine(row, saving)
    Dim made
    If saving Then Set made = CreateObject("VantloTest.Line") Else Set made = New LineWithoutClass
    made.WID = row("WID").Value
    made.StatusWID = row("StatusWID").Value
    made.Gid = row("Gid").Value
    made.Model1 = row("Model1").Value
    made.Model2 = row("Model2").Value
    If saving Then made.Class = row("Class").Value
    made.Unit = row("Unit").Value
    made.Qty = row("Qty").Value
    made.GoodsStatus = row("GoodsStatus").Value
    made.SpRemarks = row("SpRemarks").Value
    Set RepairLine = made
End Function

Function BorrowLine(row, saving)
    Dim made
    If saving Then Set made = CreateObject("VantloTest.Line") Else Set made = New LineWithoutClass
    made.Receiver = row("Receiver").Value
    made.Supplier = row("Supplier").Value
    made.Gid = row("Gid").Value
    made.Model1 = row("Model1").Value
    made.Model2 = row("Model2").Value
    If saving Then made.Class = row("Class").Value
    made.Unit = row("Unit").Value
    made.UQty = row("UQty").Value
    made.Goodstutas = row("Goodstutas").Value
    made.Remarks = row("Remarks").Value
    Set BorrowLine = made
End Function

' Saves a bill, or takes it back, and checks each member's result.
Sub Bill(kind, id, saving)
    Select Case kind
        Case "stock", "stock-in", "stock-out", "stock-out-magnitude", "loss", "overage", "sales-return", "conversion"
            StockBill kind, id, saving
        Case "return-repair", "transfer", "repair-in", "repair-in-status", "repair-out", "repaired-in", "repaired-out"
            RepairBill kind, id, saving
        Case "borrow-out", "borrow-in"
            BorrowBill kind, id, saving
        Case "assembly"
            If saving Then
                Check component.ReduceInventory_ZZD_ZJ(id), id
                Check component.AddInventory_ZZD_MJ(id), id
            Else
                Check component.AddInventory_ZZD_ZJ(id), id
                Check component.ReduceInventory_ZZD_MJ(id), id
            End If
        Case "disassembly"
            If saving Then
                Check component.ReduceInventory_CXD_MJ(id), id
                Check component.AddInventory_CXD_ZJ(id), id
            Else
                Check component.ReduceInventory_CXD_ZJ(id), id
                Check component.AddInventory_CXD_MJ(id), id
            End If
        Case Else
            WScript.Echo "unknown kind " & kind
            WScript.Quit 1
    End Select
End Sub

Sub StockBill(kind, id, saving)
    Dim head, status, row, line
    Set head = Header("StockBill", id)
    status = head("ReferFlag").Value
    head.Close
    If IsNull(status) Then status = 0
    If Not saving Then
        Select Case kind
            Case "stock": Check component.ReduceInventory_Db(id), id
            Case "stock-in": Check component.In_ReduceInventory(id, , , status), id
            Case "stock-out": Check component.Out_AddInventory(id, False, status), id
            Case "stock-out-magnitude": Check component.Out_AddInventory(id, True, status), id
            Case "loss": Check component.Loss_AddInventory(id), id
            Case "overage": Check component.Over_ReduceInventory(id), id
            Case "sales-return": Check component.SaleIn_ReduceInventory(id), id
            Case "conversion": Check component.GoodsConvert_DelItems_ChangeInventory(id), id
        End Select
        Exit Sub
    End If
    Set row = Lines("StockBillItems", id)
    Do Until row.EOF
        Set line = StockLine(row)
        Select Case kind
            Case "stock": Check component.AddInventory_Db(line), id
            Case "stock-in": Check component.In_AddInventory(line, status), id
            Case "stock-out": Check component.Out_ReduceInventory(line, False, status), id
            Case "stock-out-magnitude": Check component.Out_ReduceInventory(line, True, status), id
            Case "loss"
                line.WarehouseId = line.Supplier
                Check component.Loss_ReduceInventory(line, status), id
            Case "overage"
                line.WarehouseId = line.Receiver
                Check component.Over_AddInventory(line, status), id
            Case "sales-return": Check component.SaleIn_AddInventory(line), id
            Case "conversion": Check component.GoodsConvert_AddItems_ChangeInventory(line, status), id
        End Select
        row.MoveNext
    Loop
    row.Close
End Sub

Sub RepairBill(kind, id, saving)
    Dim head, receiver, supplier, row, line
    Set head = Header("RGstockBill", id)
    receiver = head("Receiver").Value
    supplier = head("Supplier").Value
    head.Close
    If Not saving And kind = "return-repair" Then
        Check component.RG_ReduceInventory_Db(id), id
        Exit Sub
    End If
    If Not saving And kind = "transfer" Then
        Check component.Hj_ReduceInventory_Db(id), id
        Exit Sub
    End If
    Set row = Lines("RGstockBillItems", id)
    Do Until row.EOF
        Set line = RepairLine(row, saving)
        If saving Then
            Select Case kind
                Case "return-repair": Check component.RG_AddInventory_Db(line, receiver, supplier), id
                Case "transfer": Check component.Hj_AddInventory_Db(line, receiver, supplier), id
                Case "repair-in": Check component.RG_In_AddInventory(line), id
                Case "repair-in-status": Check component.RG_In_AddInventoryStatus(line), id
                Case "repair-out": Check component.RG_Out_ReduceInventory(line), id
                Case "repaired-in": Check component.XFP_In_AddInventory(line), id
                Case "repaired-out": Check component.XFP_Out_ReduceInventory(line), id
            End Select
        Else
            Select Case kind
                Case "repair-in": Check component.RG_In_ReduceInventory(line), id
                Case "repair-in-status": Check component.RG_In_ReduceInventoryStatus(line), id
                Case "repair-out": Check component.RG_Out_AddInventory(line), id
                Case "repaired-in": Check component.XFP_In_ReduceInventory(line), id
                Case "repaired-out": Check component.XFP_Out_AddInventory(line), id
            End Select
        End If
        row.MoveNext
    Loop
    row.Close
End Sub

Sub BorrowBill(kind, id, saving)
    Dim row
    If kind = "borrow-out" And saving Then
        Check component.BorrowOut_ReduceInventory(id), id
    ElseIf kind = "borrow-in" And Not saving Then
        Check component.BorrowIn_ReduceInventory(id), id
    Else
        Set row = Lines("GBorrowItems", id)
        Do Until row.EOF
            If saving Then
                Check component.BorrowIn_AddInventory(BorrowLine(row, saving)), id
            Else
                Check component.BorrowOut_AddInventory(BorrowLine(row, saving)), id
            End If
            row.MoveNext
        Loop
        row.Close
    End If
End Sub

Sub Check(result, id)
    If result = 0 Then Exit Sub
    WScript.Echo id & " fails with " & result
    WScript.Quit 1
End Sub
