// Saves one line of a stock bill in a transaction, for Delphi.
unit SaveLine;

interface

uses
  System.SysUtils, System.Variants, System.Win.ComObj, Winapi.ActiveX, Winapi.Windows, Data.Win.ADODB, Data.DB;

type
  // The getters stand in the order of the interface.
  IStockBillItem = interface(IDispatch)
    ['{54F73925-6E44-48B0-A280-0EC5CCB10FB3}']
    function Get_Receiver: WideString; safecall;
    function Get_Supplier: WideString; safecall;
    function Get_Gid: WideString; safecall;
    function Get_Model1: WideString; safecall;
    function Get_Model2: WideString; safecall;
    function Get_Class: WideString; safecall;
    function Get_Unit: WideString; safecall;
    function Get_Actualqty: Single; safecall;
    function Get_Qty: Single; safecall;
    function Get_Goodstutas: Integer; safecall;
    function Get_Remarks: WideString; safecall;
  end;

  // The component asks for the declared interface first, so that the line need not answer by name.
  TStockBillItem = class(TInterfacedObject, IDispatch, IStockBillItem)
  public
    Receiver, Supplier, Gid, Model1, Model2, GoodsClass, UnitName, Remarks: WideString;
    Actualqty, Qty: Single;
    Goodstutas: Integer;
    function GetTypeInfoCount(out Count: Integer): HResult; stdcall;
    function GetTypeInfo(Index, LocaleID: Integer; out TypeInfo): HResult; stdcall;
    function GetIDsOfNames(const IID: TGUID; Names: Pointer; NameCount, LocaleID: Integer;
      DispIDs: Pointer): HResult; stdcall;
    function Invoke(DispID: Integer; const IID: TGUID; LocaleID: Integer; Flags: Word; var Params;
      VarResult, ExcepInfo, ArgErr: Pointer): HResult; stdcall;
    function Get_Receiver: WideString; safecall;
    function Get_Supplier: WideString; safecall;
    function Get_Gid: WideString; safecall;
    function Get_Model1: WideString; safecall;
    function Get_Model2: WideString; safecall;
    function Get_Class: WideString; safecall;
    function Get_Unit: WideString; safecall;
    function Get_Actualqty: Single; safecall;
    function Get_Qty: Single; safecall;
    function Get_Goodstutas: Integer; safecall;
    function Get_Remarks: WideString; safecall;
  end;

procedure SaveOneLine(const ConnectionString: string);

implementation

function TStockBillItem.GetTypeInfoCount(out Count: Integer): HResult;
begin
  Count := 0;
  Result := S_OK;
end;

function TStockBillItem.GetTypeInfo(Index, LocaleID: Integer; out TypeInfo): HResult;
begin
  Result := E_NOTIMPL;
end;

function TStockBillItem.GetIDsOfNames(const IID: TGUID; Names: Pointer; NameCount, LocaleID: Integer;
  DispIDs: Pointer): HResult;
begin
  Result := DISP_E_UNKNOWNNAME;
end;

function TStockBillItem.Invoke(DispID: Integer; const IID: TGUID; LocaleID: Integer; Flags: Word; var Params;
  VarResult, ExcepInfo, ArgErr: Pointer): HResult;
begin
  Result := DISP_E_MEMBERNOTFOUND;
end;

function TStockBillItem.Get_Receiver: WideString;
begin
  Result := Receiver;
end;

function TStockBillItem.Get_Supplier: WideString;
begin
  Result := Supplier;
end;

function TStockBillItem.Get_Gid: WideString;
begin
  Result := Gid;
end;

function TStockBillItem.Get_Model1: WideString;
begin
  Result := Model1;
end;

function TStockBillItem.Get_Model2: WideString;
begin
  Result := Model2;
end;

function TStockBillItem.Get_Class: WideString;
begin
  Result := GoodsClass;
end;

function TStockBillItem.Get_Unit: WideString;
begin
  Result := UnitName;
end;

function TStockBillItem.Get_Actualqty: Single;
begin
  Result := Actualqty;
end;

function TStockBillItem.Get_Qty: Single;
begin
  Result := Qty;
end;

function TStockBillItem.Get_Goodstutas: Integer;
begin
  Result := Goodstutas;
end;

function TStockBillItem.Get_Remarks: WideString;
begin
  Result := Remarks;
end;

procedure SaveOneLine(const ConnectionString: string);
var
  Connection: TADOConnection;
  Ledger: OleVariant;
  Item: TStockBillItem;
  Line: IDispatch;
  Number: Integer;
begin
  Connection := TADOConnection.Create(nil);
  try
    Connection.LoginPrompt := False;
    Connection.CursorLocation := clUseClient;  // on the connection, and before it opens
    Connection.ConnectionString := ConnectionString;
    Connection.Open;
    Ledger := CreateOleObject('Vantlo.Inventory_Class');
    Ledger.DATAType := '[Microsoft SQL Server]';
    Ledger.ADOConn := OleVariant(IDispatch(Connection.ConnectionObject));  // ADO's object, not Delphi's component
    try
      Item := TStockBillItem.Create;
      Line := Item;
      Item.Receiver := 'W1';
      Item.Supplier := 'W2';
      Item.Gid := 'G001';
      Item.UnitName := 'box';
      Item.Actualqty := 2;
      Number := -1;
      Connection.BeginTrans;
      try
        Number := Ledger.AddInventory_Db(Line);
      finally
        if Number = 0 then
          Connection.CommitTrans
        else
          Connection.RollbackTrans;
      end;
      if Number <> 0 then
        raise Exception.CreateFmt('not saved: error %d', [Number]);
    finally
      Ledger.ADOConn := OleVariant(IDispatch(nil));  // before the connection closes
    end;
  finally
    Connection.Free;
  end;
end;

end.
