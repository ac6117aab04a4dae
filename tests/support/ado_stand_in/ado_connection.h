#pragma once

#include <array>
#include <string>

#include "ado/connection.h"
#include "tests/support/ado_stand_in/ado_interfaces.h"
#include "tests/support/com/automation_object.h"

// A member of an interface that neither the component nor a test script calls.
#define VANTLO_NOT_HERE(name, ...) \
    HRESULT STDMETHODCALLTYPE name(__VA_ARGS__) override { return E_NOTIMPL; }

namespace vantlo::test {

/// Which of the two identifiers of its interface a connection answers to.
enum class ConnectionGeneration { both, earlier, later };

/// ADO's Connection as this system and its test scripts use one, over a connection of the port.
///
/// What is asked of it beyond that fails, so that a call in the wrong place of the interface, or with other arguments
/// than ADO's documents name for "unspecified", shows.
class AdoConnection final : public AutomationObject<AdoConnection, _ADOConnection> {
public:
    /// A connection that is not open yet.
    AdoConnection() = default;
    explicit AdoConnection(Connection& connection, ConnectionGeneration generation = ConnectionGeneration::both)
        : connection_(&connection), generation_(generation) {}

    /// What it passes its statements on to. Errors: object_closed.
    [[nodiscard]] Connection& connection() const;

    /// The stand-in behind an interface. Errors: bad_argument for an object that is none.
    static AdoConnection& behind(IUnknown* object);

    [[nodiscard]] std::vector<IID> identifiers() const;
    static std::span<const ScriptMember<AdoConnection>> script_members();

    HRESULT STDMETHODCALLTYPE Execute(BSTR statement, VARIANT* records_affected, long options,
                                      _ADORecordset** recordset) override;
    /// Opens the SQLite file that `Data Source=FILE` names, for a host that has asked for client-side cursors.
    HRESULT STDMETHODCALLTYPE Open(BSTR connection_string, BSTR user, BSTR password, long options) override;
    HRESULT STDMETHODCALLTYPE Close() override;
    HRESULT STDMETHODCALLTYPE get_State(LONG* state) override;
    HRESULT STDMETHODCALLTYPE put_CursorLocation(CursorLocationEnum location) override;
    HRESULT STDMETHODCALLTYPE get_ConnectionString(BSTR* text) override;

    VANTLO_NOT_HERE(get_Properties, ADOProperties**)
    VANTLO_NOT_HERE(put_ConnectionString, BSTR)
    VANTLO_NOT_HERE(get_CommandTimeout, LONG*)
    VANTLO_NOT_HERE(put_CommandTimeout, LONG)
    VANTLO_NOT_HERE(get_ConnectionTimeout, LONG*)
    VANTLO_NOT_HERE(put_ConnectionTimeout, LONG)
    VANTLO_NOT_HERE(get_Version, BSTR*)
    VANTLO_NOT_HERE(BeginTrans, long*)
    VANTLO_NOT_HERE(CommitTrans)
    VANTLO_NOT_HERE(RollbackTrans)
    VANTLO_NOT_HERE(get_Errors, ADOErrors**)
    VANTLO_NOT_HERE(get_DefaultDatabase, BSTR*)
    VANTLO_NOT_HERE(put_DefaultDatabase, BSTR)
    VANTLO_NOT_HERE(get_IsolationLevel, IsolationLevelEnum*)
    VANTLO_NOT_HERE(put_IsolationLevel, IsolationLevelEnum)
    VANTLO_NOT_HERE(get_Attributes, long*)
    VANTLO_NOT_HERE(put_Attributes, long)
    VANTLO_NOT_HERE(get_CursorLocation, CursorLocationEnum*)
    VANTLO_NOT_HERE(get_Mode, ConnectModeEnum*)
    VANTLO_NOT_HERE(put_Mode, ConnectModeEnum)
    VANTLO_NOT_HERE(get_Provider, BSTR*)
    VANTLO_NOT_HERE(put_Provider, BSTR)
    VANTLO_NOT_HERE(OpenSchema, SchemaEnum, VARIANT, VARIANT, _ADORecordset**)
    VANTLO_NOT_HERE(Cancel)

private:
    ~AdoConnection() override = default;

    void open(BSTR connection_string);
    void close();

    ConnectionReference connection_;
    ConnectionGeneration generation_ = ConnectionGeneration::both;
    std::int32_t cursor_location_ = adUseServer;
    Text connection_string_;
};

}  // namespace vantlo::test
