#include "tests/support/ado_stand_in/ado_connection.h"

#include "ado/sqlite/sqlite_connection.h"
#include "tests/support/ado_stand_in/ado_recordset.h"

namespace vantlo::test {

namespace {

// Known to the stand-in alone, so that a recordset recognises a connection of its own kind.
constexpr IID identifier_of_stand_in = {0x7f1c3a52, 0x90d4, 0x4b7e, {0x8e, 0x15, 0x2d, 0x6b, 0x0a, 0xc4, 0x91, 0x37}};

/// The value of one setting of a connection string.
Text setting(const Text& connection_string, TextView name) {
    const std::size_t begin = connection_string.find(name);
    if (begin == Text::npos) throw Failure(error::bad_argument, "no " + to_utf8(name));
    const std::size_t value = begin + name.size();
    return connection_string.substr(value, connection_string.find(u';', value) - value);
}

}  // namespace

Connection& AdoConnection::connection() const {
    if (connection_.get() == nullptr) throw Failure(error::object_closed);
    return *connection_.get();
}

AdoConnection& AdoConnection::behind(IUnknown* object) {
    ComPointer<IUnknown> found;
    if (object == nullptr || FAILED(object->QueryInterface(identifier_of_stand_in, found.out_untyped()))) {
        throw Failure(error::bad_argument);
    }
    return static_cast<AdoConnection&>(*found.get());
}

std::vector<IID> AdoConnection::identifiers() const {
    std::vector<IID> known = {ado::identifier_of_ado, identifier_of_stand_in};
    if (generation_ != ConnectionGeneration::later) {
        known.insert(known.end(), {ado::identifier_of_connection_15, ado::identifier_of_connection});
    }
    if (generation_ != ConnectionGeneration::earlier) known.push_back(ado::identifier_of_later_connection);
    return known;
}

HRESULT AdoConnection::Execute(BSTR statement, VARIANT* records_affected, long options, _ADORecordset** recordset) {
    return trapped([&] {
        // "Not requested" is the argument left out, as an automation compiler passes it.
        const bool not_requested = records_affected != nullptr && is_missing(*records_affected);
        if (!not_requested || options != adOptionUnspecified) throw Failure(error::bad_argument);
        *recordset = nullptr;
        *recordset = new_recordset(connection().execute(text_of(statement))).detach();
    });
}

void AdoConnection::open(BSTR connection_string) {
    if (connection_.get() != nullptr) throw Failure(error::object_open);
    // Where ADO reads results forward only, a second statement fails in a transaction; so no host may open without this.
    if (cursor_location_ != adUseClient) throw Failure(error::bad_argument, "a client-side cursor is not asked for");
    const Text text = text_of(connection_string);
    connection_ = ConnectionReference(new SqliteConnection(to_utf8(setting(text, u"Data Source="))));
    connection_string_ = text;
}

void AdoConnection::close() {
    if (connection_.get() == nullptr) throw Failure(error::object_closed);
    connection_ = nullptr;
}

HRESULT AdoConnection::Open(BSTR connection_string, BSTR, BSTR, long) {
    return trapped([&] { open(connection_string); });
}

HRESULT AdoConnection::Close() {
    return trapped([&] { close(); });
}

HRESULT AdoConnection::get_State(LONG* state) {
    *state = connection_.get() == nullptr ? adStateClosed : adStateOpen;
    return S_OK;
}

HRESULT AdoConnection::put_CursorLocation(CursorLocationEnum location) {
    cursor_location_ = location;
    return S_OK;
}

HRESULT AdoConnection::get_ConnectionString(BSTR* text) {
    return trapped([&] { *text = new_bstr(connection_string_); });
}

std::span<const ScriptMember<AdoConnection>> AdoConnection::script_members() {
    static constexpr ScriptMember<AdoConnection> members[] = {
        {L"ConnectionString",
         [](AdoConnection& self, const CallArguments&, VARIANT& result) {
             result = OwnedVariant(Variant(self.connection_string_)).detach();
         }},
        {L"CursorLocation",
         [](AdoConnection& self, const CallArguments& arguments, VARIANT& result) {
             if (arguments.size() == 1) self.cursor_location_ = to_long(arguments.text(0));
             result = OwnedVariant(Variant(self.cursor_location_)).detach();
         }},
        {L"BeginTrans",
         [](AdoConnection& self, const CallArguments&, VARIANT& result) {
             self.connection().execute(u"begin");
             result = OwnedVariant(Variant(std::int32_t{1})).detach();
         }},
        {L"CommitTrans",
         [](AdoConnection& self, const CallArguments&, VARIANT&) { self.connection().execute(u"commit"); }},
        {L"RollbackTrans",
         [](AdoConnection& self, const CallArguments&, VARIANT&) { self.connection().execute(u"rollback"); }},
        {L"Open", [](AdoConnection& self, const CallArguments& arguments,
                     VARIANT&) { self.open(OwnedBstr(arguments.text(0)).get()); }},
        {L"Close", [](AdoConnection& self, const CallArguments&, VARIANT&) { self.close(); }},
        {L"Execute",
         [](AdoConnection& self, const CallArguments& arguments, VARIANT& result) {
             result = OwnedVariant(new_recordset(self.connection().execute(arguments.text(0))).get()).detach();
         }},
    };
    return members;
}

}  // namespace vantlo::test
