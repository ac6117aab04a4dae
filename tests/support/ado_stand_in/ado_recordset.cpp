#include "tests/support/ado_stand_in/ado_recordset.h"

namespace vantlo::test {

namespace {

ComPointer<AdoField> field_of(AdoRecordset& recordset, Text name) {
    return ComPointer<AdoField>(new AdoField(recordset, std::move(name)));
}

}  // namespace

std::vector<IID> AdoRecordset::identifiers() const {
    return {ado::identifier_of_ado, ado::identifier_of_recordset_15, ado::identifier_of_recordset_20,
            ado::identifier_of_recordset_21, ado::identifier_of_recordset};
}

HRESULT AdoRecordset::putref_ActiveConnection(IDispatch* connection) {
    return trapped([&] {
        recordset().set_active_connection(connection == nullptr ? nullptr
                                                                : &AdoConnection::behind(connection).connection());
    });
}

HRESULT AdoRecordset::put_CursorType(CursorTypeEnum type) {
    return trapped([&] { recordset().set_cursor_type(type); });
}

HRESULT AdoRecordset::put_CursorLocation(CursorLocationEnum location) {
    return trapped([&] { recordset().set_cursor_location(location); });
}

HRESULT AdoRecordset::Open(VARIANT source, VARIANT connection, CursorTypeEnum cursor, LockTypeEnum lock, LONG options) {
    return trapped([&] {
        const bool unspecified = is_missing(connection) && cursor == adOpenUnspecified && lock == adLockUnspecified &&
                                 options == adCmdUnspecified;
        if (source.vt != VT_BSTR || !unspecified) throw Failure(error::bad_argument);
        recordset().open(text_of(source.bstrVal));
    });
}

HRESULT AdoRecordset::get_EOF(VARIANT_BOOL* at_end) {
    return trapped([&] { *at_end = recordset().eof() ? VARIANT_TRUE : VARIANT_FALSE; });
}

HRESULT AdoRecordset::get_Fields(ADOFields** fields) {
    return trapped([&] { *fields = ComPointer<AdoFields>(new AdoFields(*this)).detach(); });
}

HRESULT AdoRecordset::MoveNext() {
    return trapped([&] { recordset().move_next(); });
}

HRESULT AdoRecordset::get_State(LONG* state) {
    return trapped([&] { *state = recordset().state(); });
}

HRESULT AdoRecordset::Close() {
    return trapped([&] { recordset().close(); });
}

std::span<const ScriptMember<AdoRecordset>> AdoRecordset::script_members() {
    // `rs("WID")` and `rs.Fields("WID")` are the same field.
    static constexpr ScriptMember<AdoRecordset> members[] = {
        {L"Fields", [](AdoRecordset& self, const CallArguments& arguments,
                       VARIANT& result) { result = OwnedVariant(field_of(self, arguments.text(0)).get()).detach(); }},
        {L"EOF", [](AdoRecordset& self, const CallArguments&,
                    VARIANT& result) { result = OwnedVariant(Variant(self.recordset().eof())).detach(); }},
        {L"MoveNext", [](AdoRecordset& self, const CallArguments&, VARIANT&) { self.recordset().move_next(); }},
        {L"State", [](AdoRecordset& self, const CallArguments&,
                      VARIANT& result) { result = OwnedVariant(Variant(self.recordset().state())).detach(); }},
        {L"Close", [](AdoRecordset& self, const CallArguments&, VARIANT&) { self.recordset().close(); }},
    };
    return members;
}

std::vector<IID> AdoFields::identifiers() const {
    return {ado::identifier_of_fields_15, ado::identifier_of_fields_20, ado::identifier_of_fields};
}

HRESULT AdoFields::get_Item(VARIANT index, ADOField** field) {
    return trapped([&] {
        if (index.vt != VT_BSTR) throw Failure(error::bad_argument);
        *field = field_of(*recordset_.get(), text_of(index.bstrVal)).detach();
    });
}

std::span<const ScriptMember<AdoFields>> AdoFields::script_members() {
    static constexpr ScriptMember<AdoFields> members[] = {
        {L"Item",
         [](AdoFields& self, const CallArguments& arguments, VARIANT& result) {
             result = OwnedVariant(field_of(*self.recordset_.get(), arguments.text(0)).get()).detach();
         }},
    };
    return members;
}

std::vector<IID> AdoField::identifiers() const {
    return {ado::identifier_of_ado, ado::identifier_of_field_20, ado::identifier_of_field};
}

HRESULT AdoField::get_Value(VARIANT* value) {
    return trapped([&] { *value = this->value().detach(); });
}

std::span<const ScriptMember<AdoField>> AdoField::script_members() {
    static constexpr ScriptMember<AdoField> members[] = {
        {L"Value", [](AdoField& self, const CallArguments&, VARIANT& result) { result = self.value().detach(); }},
    };
    return members;
}

}  // namespace vantlo::test
