"""Saves one line of a stock bill in a transaction, with pywin32.

Usage: save_line.py CONNECTION-STRING
"""
import sys

import win32com.client
import win32com.server.util

AD_USE_CLIENT = 3


class StockBillItem:
    _public_methods_ = []
    _public_attrs_ = ["Receiver", "Supplier", "Gid", "Model1", "Model2", "Class", "Unit", "Actualqty", "Qty",
                      "Goodstutas", "Remarks"]

    def __init__(self, **values):
        for name in self._public_attrs_:
            setattr(self, name, values.get(name, ""))


def number_of(answer):
    """A member's result. Its parameters are passed by reference, so pywin32 gives a tuple: the result, then they."""
    return answer[0] if isinstance(answer, tuple) else answer


def save(connection_string):
    connection = win32com.client.Dispatch("ADODB.Connection")
    connection.CursorLocation = AD_USE_CLIENT  # on the connection, and before it opens
    connection.Open(connection_string)
    ledger = win32com.client.Dispatch("Vantlo.Inventory_Class")
    try:
        ledger.DATAType = "[Microsoft SQL Server]"
        ledger.ADOConn = connection
        line = StockBillItem(Receiver="W1", Supplier="W2", Gid="G001", Unit="box", Actualqty=2.0, Qty=2.0, Goodstutas=0)
        result = -1
        connection.BeginTrans()
        try:
            result = number_of(ledger.AddInventory_Db(win32com.server.util.wrap(line)))
        finally:
            if result == 0:
                connection.CommitTrans()
            else:
                connection.RollbackTrans()
        return result
    finally:
        ledger.ADOConn = None  # before the connection closes
        connection.Close()


if __name__ == "__main__":
    number = save(sys.argv[1])
    if number != 0:
        sys.exit(f"not saved: error {number}")
