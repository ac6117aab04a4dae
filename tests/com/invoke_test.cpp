#include <doctest/doctest.h>

#include <algorithm>
#include <deque>
#include <map>
#include <random>

#include "ado/native/native_connection.h"
#include "automation/error_text.h"
#include "tests/com/line_object.h"
#include "tests/com/member_call.h"
#include "tests/support/ado_stand_in/ado_recordset.h"
#include "tests/support/com/class_factory.h"
#include "tests/support/printing.h"
#include "tests/support/scenario_runner.h"

// Calls through IDispatch in every shape that hosts give them.

namespace vantlo::test {
namespace {

VARIANT plain(VARTYPE type, LONG number) {
    VARIANT value;
    VariantInit(&value);
    value.vt = type;
    value.lVal = number;
    return value;
}

VARIANT reference_to(VARIANT& variable) {
    VARIANT value;
    value.vt = VT_BYREF | VT_VARIANT;
    value.pvarVal = &variable;
    return value;
}

struct InvokeFixture {
    InvokeFixture() {
        library.show_messages_on_platform();
        object = library.make_object();
        CHECK(object->put_DATAType(OwnedBstr(u"[Microsoft SQL Server]").get()) == S_OK);
        CHECK(object->putref_ADOConn(connection.get()) == S_OK);
    }
    ~InvokeFixture() { object->putref_ADOConn(nullptr); }

    DISPID identifier(const wchar_t* name) const {
        std::wstring text = name;
        LPOLESTR names = text.data();
        DISPID found = DISPID_UNKNOWN;
        CHECK(object->GetIDsOfNames(IID_NULL, &names, 1, LOCALE_USER_DEFAULT, &found) == S_OK);
        return found;
    }

    /// Calls with arguments in the order in which they are written.
    HRESULT invoke(const wchar_t* name, std::vector<VARIANT> arguments, WORD flags = DISPATCH_METHOD,
                   std::vector<DISPID> named = {}) {
        std::ranges::reverse(arguments);
        DISPPARAMS parameters = {arguments.data(), named.data(), static_cast<UINT>(arguments.size()),
                                 static_cast<UINT>(named.size())};
        wrong_argument = 99;
        answer = OwnedVariant();
        return object->Invoke(identifier(name), IID_NULL, LOCALE_USER_DEFAULT, flags, &parameters, answer.get(),
                              nullptr, &wrong_argument);
    }

    /// The last statement that the call sent, which shows what an argument became.
    std::string last_statement() {
        const std::vector<std::string> trace = recorder.trace(Detail::statements);
        recorder.events.clear();
        return trace.empty() ? "" : trace.back();
    }

    Apartment apartment;
    ComponentLibrary library;
    std::unique_ptr<TestDatabase> database = make_sqlite_database();
    Recorder recorder;
    RecordingPlatform recording{recorder};
    RecordingConnection recorded{recorder, database->component_connection()};
    ComPointer<AdoConnection> connection{new AdoConnection(recorded)};
    ClassRegistration recordsets{ado::recordset_class,
                                 [] { return ComPointer<IUnknown>(new AdoRecordset(platform().create_recordset())); }};
    ComPointer<_Inventory_Class> object;
    OwnedVariant answer;
    UINT wrong_argument = 99;
};

const std::map<std::string, Variant> one_line = {
    {"WarehouseId", Text(u"W1")}, {"Gid", Text(u"G1")}, {"Model1", Text()}, {"Model2", Text()}, {"Class", Text()},
    {"Unit", Text(u"pcs")},       {"Actualqty", 3.0F},  {"Remarks", Text()}};

TEST_CASE_FIXTURE(InvokeFixture, "An Integer argument is taken in every shape that script engines pass") {
    database->connection().run(
        u"insert into Inventory(WID,GId,Model1,Model2,Status,InQty,OutQty,CurrentQty) "
        u"values('W1','G1','','',7,0,0,0)");
    RecordedLine line(recorder, one_line);
    const ComPointer<LineObject> host_line(new LineObject(line));
    const OwnedVariant line_value(host_line.get());
    const OwnedBstr digit(u"7");
    VARIANT text = plain(VT_BSTR, 0);
    text.bstrVal = digit.get();
    VARIANT in_variable = plain(VT_I2, 7), twice = reference_to(in_variable);
    short typed = 7;
    VARIANT typed_reference = plain(VT_BYREF | VT_I2, 0);
    typed_reference.piVal = &typed;
    VARIANT real = plain(VT_R8, 0);
    real.dblVal = 7.0;
    VARIANT currency = plain(VT_CY, 0);
    currency.cyVal.int64 = 70000;
    BSTR text_variable = digit.get();
    VARIANT text_reference = plain(VT_BYREF | VT_BSTR, 0);
    text_reference.pbstrVal = &text_variable;
    for (const VARIANT& shape : {plain(VT_I2, 7), plain(VT_I4, 7), plain(VT_UI1, 7), text, reference_to(in_variable),
                                 reference_to(twice), typed_reference, real, currency, text_reference}) {
        INFO("type " << shape.vt);
        CHECK(invoke(L"Over_AddInventory", {*line_value, shape}) == S_OK);
        CHECK(answer->vt == VT_I4);
        CHECK(answer->lVal == 0);
        CHECK(last_statement().find("Status=7") != std::string::npos);
    }
    CHECK(in_variable.vt == VT_I2);  // nothing is put back
    CHECK(in_variable.iVal == 7);
    CHECK(typed == 7);
    CHECK(text_variable == digit.get());
}

TEST_CASE_FIXTURE(InvokeFixture, "A line object is taken in every shape, whatever its interfaces") {
    RecordedLine line(recorder, one_line);
    const ComPointer<LineObject> host_line(new LineObject(line));
    IDispatch* dispatch = host_line.get();
    IUnknown* unknown = host_line.get();
    VARIANT variable = plain(VT_DISPATCH, 0);
    variable.pdispVal = dispatch;
    VARIANT by_value = variable, as_unknown = variable, typed_reference = variable, unknown_reference = variable;
    as_unknown.vt = VT_UNKNOWN;
    typed_reference.vt = VT_BYREF | VT_DISPATCH;
    typed_reference.ppdispVal = &dispatch;
    unknown_reference.vt = VT_BYREF | VT_UNKNOWN;
    unknown_reference.ppunkVal = &unknown;
    for (const VARIANT& shape : {by_value, as_unknown, typed_reference, unknown_reference, reference_to(variable)}) {
        INFO("type " << shape.vt);
        CHECK(invoke(L"Over_AddInventory", {shape}) == S_OK);
        CHECK(answer->lVal == 0);
    }
    CHECK(host_line->references() == 1);
}

TEST_CASE_FIXTURE(InvokeFixture, "A null line fails its first property as an object that is not set") {
    VARIANT nothing = plain(VT_DISPATCH, 0);
    nothing.pdispVal = nullptr;
    CHECK(invoke(L"Over_AddInventory", {nothing}) == S_OK);
    CHECK(answer->lVal == error::object_not_set);
    CHECK(last_statement() == "message Over_AddInventory():" + to_utf8(standard_text(error::object_not_set)));
}

TEST_CASE_FIXTURE(InvokeFixture, "Optional arguments may be left out in the middle, at the end, or be given by name") {
    const OwnedVariant id{Variant(u"B1")};
    const std::string unfiltered = "open select * from StockBillItems where BillId='B1'";
    CHECK(invoke(L"In_ReduceInventory", {*id}) == S_OK);
    const std::string all_defaults = last_statement();
    CHECK(invoke(L"In_ReduceInventory", {*id, missing_argument(), missing_argument()}) == S_OK);
    CHECK(last_statement() == all_defaults);

    CHECK(invoke(L"In_ReduceInventory", {*id, missing_argument(), plain(VT_I2, 1)}) == S_OK);
    const std::string filtered = last_statement();
    CHECK(filtered != all_defaults);

    // Named arguments come first in the list, behind the reversal last: iZYCP is the third parameter.
    CHECK(invoke(L"In_ReduceInventory", {*id, plain(VT_I2, 1)}, DISPATCH_METHOD, {2}) == S_OK);
    CHECK(last_statement() == filtered);
    CHECK(invoke(L"In_ReduceInventory", {plain(VT_I2, 1), *id}, DISPATCH_METHOD, {0, 2}) == S_OK);
    CHECK(last_statement() == filtered);
}

TEST_CASE_FIXTURE(InvokeFixture, "Only a misuse of COM itself is refused") {
    const OwnedVariant id{Variant(u"B1")};
    VARIANT null = plain(VT_NULL, 0);
    CHECK(invoke(L"ReduceInventory_Db", {}) == DISP_E_BADPARAMCOUNT);
    CHECK(invoke(L"ReduceInventory_Db", {*id, *id}) == DISP_E_BADPARAMCOUNT);
    CHECK(invoke(L"ReduceInventory_Db", {missing_argument()}) == DISP_E_PARAMNOTOPTIONAL);
    CHECK(invoke(L"ReduceInventory_Db", {null}) == DISP_E_TYPEMISMATCH);
    CHECK(invoke(L"Over_AddInventory", {*id, plain(VT_I2, 1)}) == DISP_E_TYPEMISMATCH);
    CHECK(wrong_argument == 1);  // the first of two, counted from the end
    CHECK(invoke(L"ReduceInventory_Db", {*id}, DISPATCH_PROPERTYPUT) == DISP_E_MEMBERNOTFOUND);
    CHECK(recorder.events.empty());
    DISPPARAMS none = {};
    CHECK(object->Invoke(12345, IID_NULL, 0, DISPATCH_METHOD, &none, nullptr, nullptr, nullptr) ==
          DISP_E_MEMBERNOTFOUND);
    CHECK(object->Invoke(0x60030003, IID_NULL, 0, DISPATCH_METHOD, nullptr, nullptr, nullptr, nullptr) == E_POINTER);
    CHECK(object->ReduceInventory_Db(nullptr, nullptr) == E_POINTER);
}

TEST_CASE_FIXTURE(InvokeFixture, "Names are known in any case, parameters' names too") {
    std::wstring method = L"in_reduceinventory", parameter = L"ICPZT", unknown = L"iNothing";
    LPOLESTR names[] = {method.data(), parameter.data()};
    DISPID found[2] = {};
    CHECK(object->GetIDsOfNames(IID_NULL, names, 2, LOCALE_USER_DEFAULT, found) == S_OK);
    CHECK(found[0] == 0x60030005);
    CHECK(found[1] == 3);
    LPOLESTR wrong[] = {method.data(), unknown.data()};
    CHECK(object->GetIDsOfNames(IID_NULL, wrong, 2, LOCALE_USER_DEFAULT, found) == DISP_E_UNKNOWNNAME);
    CHECK(found[1] == DISPID_UNKNOWN);
}

TEST_CASE_FIXTURE(InvokeFixture, "The properties are set and read by name, the connection by Set or without it") {
    const OwnedVariant kind{Variant(u"[Microsoft Access]")};
    CHECK(invoke(L"DATAType", {*kind}, DISPATCH_PROPERTYPUT, {DISPID_PROPERTYPUT}) == S_OK);
    CHECK(invoke(L"DATAType", {}, DISPATCH_PROPERTYGET) == S_OK);
    CHECK(text_of(answer->bstrVal) == u"[Microsoft Access]");

    CHECK(object->putref_ADOConn(nullptr) == S_OK);
    CHECK(connection->references() == 1);
    const OwnedVariant host_connection(connection.get());
    for (const WORD flags : {WORD{DISPATCH_PROPERTYPUT}, WORD{DISPATCH_PROPERTYPUTREF}}) {
        CHECK(invoke(L"ADOConn", {*host_connection}, flags, {DISPID_PROPERTYPUT}) == S_OK);
        CHECK(invoke(L"ADOConn", {}, DISPATCH_PROPERTYGET) == S_OK);
        REQUIRE(answer->vt == VT_DISPATCH);
        CHECK(answer->pdispVal == static_cast<IDispatch*>(connection.get()));
    }
    answer = OwnedVariant();
    RecordedLine line(recorder, one_line);
    const OwnedVariant no_connection(ComPointer<LineObject>(new LineObject(line)).get());
    CHECK(invoke(L"ADOConn", {*no_connection}, DISPATCH_PROPERTYPUTREF, {DISPID_PROPERTYPUT}) == DISP_E_TYPEMISMATCH);
    VARIANT nothing = plain(VT_DISPATCH, 0);
    nothing.pdispVal = nullptr;
    CHECK(invoke(L"ADOConn", {nothing}, DISPATCH_PROPERTYPUTREF, {DISPID_PROPERTYPUT}) == S_OK);
    CHECK(invoke(L"ADOConn", {}, DISPATCH_PROPERTYGET) == S_OK);
    CHECK(answer->pdispVal == nullptr);
}

TEST_CASE_FIXTURE(InvokeFixture, "A connection is taken under either generation of its identifier") {
    for (const auto generation : {ConnectionGeneration::earlier, ConnectionGeneration::later}) {
        const ComPointer<AdoConnection> of_generation(new AdoConnection(recorded, generation));
        CHECK(object->putref_ADOConn(of_generation.get()) == S_OK);
        CHECK(invoke(L"ReduceInventory_Db", {*OwnedVariant(Variant(u"B1"))}) == S_OK);
        CHECK(answer->lVal == 0);
        CHECK(object->putref_ADOConn(nullptr) == S_OK);
        CHECK(of_generation->references() == 1);
    }
}

/// Random calls. What they carry is well-formed, as COM's rules demand of a caller; everything else is at random.
class Chaos {
public:
    explicit Chaos(IDispatch& line) : line_(line) {}

    void call(_Inventory_Class& object) {
        owned_.clear();
        std::vector<VARIANT> arguments(below(7));
        for (VARIANT& argument : arguments) argument = value(2);
        std::vector<DISPID> named(arguments.empty() ? 0 : below(static_cast<unsigned>(arguments.size()) + 1));
        for (DISPID& name : named)
            name = below(4) == 0 ? static_cast<DISPID>(random_()) : static_cast<DISPID>(below(6));
        DISPPARAMS parameters = {arguments.data(), named.data(), static_cast<UINT>(arguments.size()),
                                 static_cast<UINT>(named.size())};
        OwnedVariant answer;
        EXCEPINFO exception = {};
        UINT wrong = 0;
        object.Invoke(identifier(), IID_NULL, 0, static_cast<WORD>(below(16)), &parameters,
                      below(2) == 0 ? answer.get() : nullptr, below(2) == 0 ? &exception : nullptr,
                      below(2) == 0 ? &wrong : nullptr);
    }

private:
    unsigned below(unsigned limit) { return static_cast<unsigned>(random_() % limit); }

    DISPID identifier() {
        if (below(8) == 0) return static_cast<DISPID>(random_());
        return static_cast<DISPID>(member_table()[below(member_count)].dispatch_id);
    }

    VARIANT value(unsigned depth) {
        constexpr VARTYPE types[] = {VT_EMPTY, VT_NULL,     VT_I2,    VT_I4,   VT_R4,      VT_R8,     VT_CY,  VT_DATE,
                                     VT_BSTR,  VT_DISPATCH, VT_ERROR, VT_BOOL, VT_I1,      VT_UI1,    VT_UI2, VT_UI4,
                                     VT_I8,    VT_UI8,      VT_INT,   VT_UINT, VT_UNKNOWN, VT_DECIMAL};
        VARIANT made;
        VariantInit(&made);
        made.vt = types[below(std::size(types))];
        if (made.vt == VT_DECIMAL) {
            made.decVal.Lo64 = random_();
            made.vt = VT_DECIMAL;
        } else if (made.vt == VT_BSTR) {
            owned_.emplace_back(Variant(below(2) == 0 ? u"B1" : u"-3.5"));
            made = *owned_.back();
        } else if (made.vt == VT_DISPATCH || made.vt == VT_UNKNOWN) {
            made.pdispVal = below(3) == 0 ? nullptr : &line_;
        } else if (made.vt == VT_ERROR) {
            made.scode = below(2) == 0 ? DISP_E_PARAMNOTFOUND : E_FAIL;
        } else {
            made.llVal = static_cast<LONGLONG>(random_());
        }
        if (depth == 0 || below(2) == 0) return made;
        return referred(made, depth);
    }

    /// A reference to a value, typed or to a variant, which may hold a reference itself.
    VARIANT referred(const VARIANT& target, unsigned depth) {
        variables_.push_back(below(2) == 0 ? value(depth - 1) : target);
        VARIANT& variable = variables_.back();
        if (below(2) == 0 || (variable.vt & VT_BYREF) != 0) return reference_to(variable);
        VARIANT made;
        made.vt = static_cast<VARTYPE>(variable.vt | VT_BYREF);
        made.byref = variable.vt == VT_DECIMAL ? static_cast<void*>(&variable.decVal) : &variable.llVal;
        const bool has_no_value = variable.vt == VT_EMPTY || variable.vt == VT_NULL;
        return has_no_value ? reference_to(variable) : made;
    }

    IDispatch& line_;
    std::mt19937_64 random_{20241109};
    std::deque<OwnedVariant> owned_;
    std::deque<VARIANT> variables_;
};

TEST_CASE_FIXTURE(InvokeFixture, "No random call crashes the library, or leaves a reference behind") {
    RecordedLine line(recorder, one_line);
    const ComPointer<LineObject> host_line(new LineObject(line));
    Chaos chaos(*host_line.get());
    constexpr int calls = 30'000;
    for (int i = 0; i < calls; ++i) {
        chaos.call(*object.get());
        recorder.events.clear();
    }
    CHECK(host_line->references() == 1);
    CHECK(object->putref_ADOConn(nullptr) == S_OK);
    CHECK(connection->references() == 1);
    MESSAGE(calls << " random calls");
}

}  // namespace
}  // namespace vantlo::test
