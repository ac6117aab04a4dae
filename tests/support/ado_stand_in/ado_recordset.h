#pragma once

#include "ado/recordset.h"
#include "tests/support/ado_stand_in/ado_connection.h"

namespace vantlo::test {

/// ADO's Recordset as this system and its test scripts use one, over a recordset of the port.
class AdoRecordset : public AutomationObject<AdoRecordset, _ADORecordset> {
public:
    explicit AdoRecordset(RecordsetVariable recordset) : recordset_(std::move(recordset)) {}

    [[nodiscard]] Recordset& recordset() const { return *recordset_; }

    [[nodiscard]] std::vector<IID> identifiers() const;
    static std::span<const ScriptMember<AdoRecordset>> script_members();

    HRESULT STDMETHODCALLTYPE putref_ActiveConnection(IDispatch* connection) override;
    HRESULT STDMETHODCALLTYPE put_CursorType(CursorTypeEnum type) override;
    HRESULT STDMETHODCALLTYPE put_CursorLocation(CursorLocationEnum location) override;
    HRESULT STDMETHODCALLTYPE Open(VARIANT source, VARIANT connection, CursorTypeEnum cursor, LockTypeEnum lock,
                                   LONG options) override;
    HRESULT STDMETHODCALLTYPE get_EOF(VARIANT_BOOL* at_end) override;
    HRESULT STDMETHODCALLTYPE get_Fields(ADOFields** fields) override;
    HRESULT STDMETHODCALLTYPE MoveNext() override;
    HRESULT STDMETHODCALLTYPE get_State(LONG* state) override;
    HRESULT STDMETHODCALLTYPE Close() override;

    VANTLO_NOT_HERE(get_Properties, ADOProperties**)
    VANTLO_NOT_HERE(get_AbsolutePosition, PositionEnum_Param*)
    VANTLO_NOT_HERE(put_AbsolutePosition, PositionEnum_Param)
    VANTLO_NOT_HERE(put_ActiveConnection, VARIANT)
    VANTLO_NOT_HERE(get_ActiveConnection, VARIANT*)
    VANTLO_NOT_HERE(get_BOF, VARIANT_BOOL*)
    VANTLO_NOT_HERE(get_Bookmark, VARIANT*)
    VANTLO_NOT_HERE(put_Bookmark, VARIANT)
    VANTLO_NOT_HERE(get_CacheSize, long*)
    VANTLO_NOT_HERE(put_CacheSize, long)
    VANTLO_NOT_HERE(get_CursorType, CursorTypeEnum*)
    VANTLO_NOT_HERE(get_LockType, LockTypeEnum*)
    VANTLO_NOT_HERE(put_LockType, LockTypeEnum)
    VANTLO_NOT_HERE(get_MaxRecords, ADO_LONGPTR*)
    VANTLO_NOT_HERE(put_MaxRecords, ADO_LONGPTR)
    VANTLO_NOT_HERE(get_RecordCount, ADO_LONGPTR*)
    VANTLO_NOT_HERE(putref_Source, IDispatch*)
    VANTLO_NOT_HERE(put_Source, BSTR)
    VANTLO_NOT_HERE(get_Source, VARIANT*)
    VANTLO_NOT_HERE(AddNew, VARIANT, VARIANT)
    VANTLO_NOT_HERE(CancelUpdate)
    VANTLO_NOT_HERE(Delete, AffectEnum)
    VANTLO_NOT_HERE(GetRows, long, VARIANT, VARIANT, VARIANT*)
    VANTLO_NOT_HERE(Move, ADO_LONGPTR, VARIANT)
    VANTLO_NOT_HERE(MovePrevious)
    VANTLO_NOT_HERE(MoveFirst)
    VANTLO_NOT_HERE(MoveLast)
    VANTLO_NOT_HERE(Requery, LONG)
    VANTLO_NOT_HERE(_xResync, AffectEnum)
    VANTLO_NOT_HERE(Update, VARIANT, VARIANT)
    VANTLO_NOT_HERE(get_AbsolutePage, PositionEnum_Param*)
    VANTLO_NOT_HERE(put_AbsolutePage, PositionEnum_Param)
    VANTLO_NOT_HERE(get_EditMode, EditModeEnum*)
    VANTLO_NOT_HERE(get_Filter, VARIANT*)
    VANTLO_NOT_HERE(put_Filter, VARIANT)
    VANTLO_NOT_HERE(get_PageCount, ADO_LONGPTR*)
    VANTLO_NOT_HERE(get_PageSize, long*)
    VANTLO_NOT_HERE(put_PageSize, long)
    VANTLO_NOT_HERE(get_Sort, BSTR*)
    VANTLO_NOT_HERE(put_Sort, BSTR)
    VANTLO_NOT_HERE(get_Status, long*)
    VANTLO_NOT_HERE(_xClone, _ADORecordset**)
    VANTLO_NOT_HERE(UpdateBatch, AffectEnum)
    VANTLO_NOT_HERE(CancelBatch, AffectEnum)
    VANTLO_NOT_HERE(get_CursorLocation, CursorLocationEnum*)
    VANTLO_NOT_HERE(NextRecordset, VARIANT*, _ADORecordset**)
    VANTLO_NOT_HERE(Supports, CursorOptionEnum, VARIANT_BOOL*)
    VANTLO_NOT_HERE(get_Collect, VARIANT, VARIANT*)
    VANTLO_NOT_HERE(put_Collect, VARIANT, VARIANT)
    VANTLO_NOT_HERE(get_MarshalOptions, MarshalOptionsEnum*)
    VANTLO_NOT_HERE(put_MarshalOptions, MarshalOptionsEnum)
    VANTLO_NOT_HERE(Find, BSTR, ADO_LONGPTR, SearchDirectionEnum, VARIANT)
    VANTLO_NOT_HERE(Cancel)
    VANTLO_NOT_HERE(get_DataSource, IUnknown**)
    VANTLO_NOT_HERE(putref_DataSource, IUnknown*)
    VANTLO_NOT_HERE(_xSave, BSTR, PersistFormatEnum)
    VANTLO_NOT_HERE(get_ActiveCommand, IDispatch**)
    VANTLO_NOT_HERE(put_StayInSync, VARIANT_BOOL)
    VANTLO_NOT_HERE(get_StayInSync, VARIANT_BOOL*)
    VANTLO_NOT_HERE(GetString, StringFormatEnum, long, BSTR, BSTR, BSTR, BSTR*)
    VANTLO_NOT_HERE(get_DataMember, BSTR*)
    VANTLO_NOT_HERE(put_DataMember, BSTR)
    VANTLO_NOT_HERE(CompareBookmarks, VARIANT, VARIANT, CompareEnum*)
    VANTLO_NOT_HERE(Clone, LockTypeEnum, _ADORecordset**)
    VANTLO_NOT_HERE(Resync, AffectEnum, ResyncEnum)
    VANTLO_NOT_HERE(Seek, VARIANT, SeekEnum)
    VANTLO_NOT_HERE(put_Index, BSTR)
    VANTLO_NOT_HERE(get_Index, BSTR*)
    VANTLO_NOT_HERE(Save, VARIANT, PersistFormatEnum)

protected:
    ~AdoRecordset() override = default;

private:
    RecordsetVariable recordset_;
};

inline ComPointer<AdoRecordset> new_recordset(RecordsetVariable recordset) {
    return ComPointer<AdoRecordset>(new AdoRecordset(std::move(recordset)));
}

/// ADO's Fields: the columns of a recordset.
class AdoFields : public AutomationObject<AdoFields, ADOFields> {
public:
    explicit AdoFields(AdoRecordset& recordset) : recordset_(&recordset) {}

    [[nodiscard]] std::vector<IID> identifiers() const;
    static std::span<const ScriptMember<AdoFields>> script_members();

    HRESULT STDMETHODCALLTYPE get_Item(VARIANT index, ADOField** field) override;

    VANTLO_NOT_HERE(get_Count, long*)
    VANTLO_NOT_HERE(_NewEnum, IUnknown**)
    VANTLO_NOT_HERE(Refresh)
    VANTLO_NOT_HERE(_Append, BSTR, DataTypeEnum, ADO_LONGPTR, FieldAttributeEnum)
    VANTLO_NOT_HERE(Delete, VARIANT)
    VANTLO_NOT_HERE(Append, BSTR, DataTypeEnum, ADO_LONGPTR, FieldAttributeEnum, VARIANT)
    VANTLO_NOT_HERE(Update)
    VANTLO_NOT_HERE(Resync, ResyncEnum)
    VANTLO_NOT_HERE(CancelUpdate)

protected:
    ~AdoFields() override = default;

private:
    ComPointer<AdoRecordset> recordset_;
};

/// ADO's Field: one column, with the value of the row that its recordset stands on.
class AdoField final : public AutomationObject<AdoField, ADOField> {
public:
    AdoField(AdoRecordset& recordset, Text name) : recordset_(&recordset), name_(std::move(name)) {}

    [[nodiscard]] OwnedVariant value() const { return OwnedVariant(recordset_->recordset().field(name_)); }

    [[nodiscard]] std::vector<IID> identifiers() const;
    static std::span<const ScriptMember<AdoField>> script_members();

    HRESULT STDMETHODCALLTYPE get_Value(VARIANT* value) override;

    VANTLO_NOT_HERE(get_Properties, ADOProperties**)
    VANTLO_NOT_HERE(get_ActualSize, ADO_LONGPTR*)
    VANTLO_NOT_HERE(get_Attributes, long*)
    VANTLO_NOT_HERE(get_DefinedSize, ADO_LONGPTR*)
    VANTLO_NOT_HERE(get_Name, BSTR*)
    VANTLO_NOT_HERE(get_Type, DataTypeEnum*)
    VANTLO_NOT_HERE(put_Value, VARIANT)
    VANTLO_NOT_HERE(get_Precision, BYTE*)
    VANTLO_NOT_HERE(get_NumericScale, BYTE*)
    VANTLO_NOT_HERE(AppendChunk, VARIANT)
    VANTLO_NOT_HERE(GetChunk, long, VARIANT*)
    VANTLO_NOT_HERE(get_OriginalValue, VARIANT*)
    VANTLO_NOT_HERE(get_UnderlyingValue, VARIANT*)
    VANTLO_NOT_HERE(get_DataFormat, IUnknown**)
    VANTLO_NOT_HERE(putref_DataFormat, IUnknown*)
    VANTLO_NOT_HERE(put_Precision, BYTE)
    VANTLO_NOT_HERE(put_NumericScale, BYTE)
    VANTLO_NOT_HERE(put_Type, DataTypeEnum)
    VANTLO_NOT_HERE(put_DefinedSize, ADO_LONGPTR)
    VANTLO_NOT_HERE(put_Attributes, long)
    VANTLO_NOT_HERE(get_Status, long*)

private:
    ~AdoField() override = default;

    ComPointer<AdoRecordset> recordset_;
    Text name_;
};

}  // namespace vantlo::test
