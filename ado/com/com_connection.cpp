#include "ado/com/com_connection.h"

#include "ado/com/automation_value.h"
#include "ado/com/hresult.h"

namespace vantlo {

namespace {

constexpr long unspecified = -1;  // options, cursor and lock types that are left to ADO

/// What the host's object handed over. Errors: object_not_set where it was nothing.
template <typename Interface>
Interface& require_set(const InterfacePointer<Interface>& handed_over) {
    if (!handed_over) throw Failure(error::object_not_set);
    return *handed_over.get();
}

class ComRecordset final : public Recordset {
public:
    explicit ComRecordset(InterfacePointer<AdoRecordset> rows) : rows_(std::move(rows)) {}

    void set_active_connection(Connection* connection) override {
        // Every connection of this shell is the host's own.
        auto* const host = static_cast<ComConnection*>(connection);
        check(rows().putref_ActiveConnection(host != nullptr ? &host->object() : nullptr),
              "Recordset.ActiveConnection");
    }
    void set_cursor_location(std::int32_t location) override {
        check(rows().put_CursorLocation(location), "Recordset.CursorLocation");
    }
    void set_cursor_type(std::int32_t type) override { check(rows().put_CursorType(type), "Recordset.CursorType"); }

    void open(TextView source) override {
        const AutomationString text(source);
        VARIANT statement;
        VariantInit(&statement);
        statement.vt = VT_BSTR;
        statement.bstrVal = text.get();
        check(rows().Open(statement, AutomationValue::missing(), unspecified, unspecified, unspecified),
              "Recordset.Open");
    }

    bool eof() override {
        VARIANT_BOOL at_end = VARIANT_FALSE;
        check(rows().get_EOF(&at_end), "Recordset.EOF");
        return at_end != VARIANT_FALSE;
    }
    void move_next() override { check(rows().MoveNext(), "Recordset.MoveNext"); }

    Variant field(TextView name) override {
        InterfacePointer<AdoFields> fields;
        check(rows().get_Fields(fields.receive()), "Recordset.Fields");
        const AutomationString text(name);
        VARIANT index;
        VariantInit(&index);
        index.vt = VT_BSTR;
        index.bstrVal = text.get();
        InterfacePointer<AdoField> field;
        check(require_set(fields).get_Item(index, field.receive()), "Fields.Item");
        AutomationValue value;
        check(value.receive_from([&](VARIANT* received) { return require_set(field).get_Value(received); }),
              "Field.Value");
        return variant_of(value.get());
    }

    std::int32_t state() override {
        long state = 0;
        check(rows().get_State(&state), "Recordset.State");
        return state;
    }
    void close() override { check(rows().Close(), "Recordset.Close"); }

private:
    AdoRecordset& rows() { return require_set(rows_); }

    InterfacePointer<AdoRecordset> rows_;
};

}  // namespace

ConnectionReference ComConnection::of(IUnknown& object) {
    auto connection = interface_of<AdoConnection>(object, connection_identifier.first);
    if (!connection) connection = interface_of<AdoConnection>(object, connection_identifier.later);
    if (!connection) throw Failure(error::type_mismatch, "the object is no ADO connection");
    return ConnectionReference(new ComConnection(std::move(connection)));
}

void ComConnection::add_reference() noexcept { InterlockedIncrement(&references_); }

void ComConnection::release() noexcept {
    if (InterlockedDecrement(&references_) == 0) delete this;
}

RecordsetVariable ComConnection::execute(TextView statement) {
    const AutomationString text(statement);
    VARIANT not_requested = AutomationValue::missing();
    InterfacePointer<AdoRecordset> rows;
    check(connection_->Execute(text.get(), &not_requested, unspecified, rows.receive()), "Connection.Execute");
    VariantClear(&not_requested);
    return std::make_unique<ComRecordset>(std::move(rows));
}

RecordsetVariable create_com_recordset() {
    InterfacePointer<AdoRecordset> rows;
    HRESULT result = CoCreateInstance(recordset_class, nullptr, CLSCTX_INPROC_SERVER, recordset_identifier.first,
                                      rows.receive_any());
    if (result == E_NOINTERFACE) {
        result = CoCreateInstance(recordset_class, nullptr, CLSCTX_INPROC_SERVER, recordset_identifier.later,
                                  rows.receive_any());
    }
    check(result, "CreateObject(\"ADODB.Recordset\")");
    return std::make_unique<ComRecordset>(std::move(rows));
}

}  // namespace vantlo
