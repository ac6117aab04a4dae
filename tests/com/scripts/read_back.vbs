' Reads a column of every row of the ledger. Arguments: the database file, a warehouse.
Option Explicit

' A console may lack the characters, so the one Chinese name is told apart here.
Function Named(text)
    If text = WScript.Arguments(1) Then Named = "(the warehouse)" Else Named = text
End Function

Dim connection, rows
Set connection = CreateObject("ADODB.Connection")
connection.CursorLocation = 3
connection.Open "Data Source=" & WScript.Arguments(0)
Set rows = connection.Execute("select * from Inventory order by WID")
Do Until rows.EOF
    WScript.Echo Named(rows("WID").Value) & " " & rows.Fields("InQty").Value & " " & TypeName(rows("InQty").Value)
    rows.MoveNext
Loop
rows.Close
connection.Close
WScript.Echo "done"
