#include <doctest/doctest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <random>

#include "ado/native/native_connection.h"
#include "automation/error_text.h"
#include "support/dispatch_call.h"
#include "tests/com/line_object.h"
#include "tests/com/member_call.h"
#include "tests/com/process_use.h"
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
    RecordingHooks recording{recorder};
    RecordingConnection recorded{recorder, database->component_connection()};
    ComPointer<AdoConnection> connection{new AdoConnection(recorded)};
    ClassRegistration recordsets{
        ado::recordset_class, [] { return ComPointer<IUnknown>(new AdoRecordset(shell_hooks().create_recordset())); }};
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

TEST_CASE_FIXTURE(InvokeFixture, "More named arguments than arguments are a wrong count") {
    OwnedVariant id{Variant(u"B1")};
    DISPID names[] = {0, 1, 2};
    DISPPARAMS parameters = {id.get(), names, 1, 3};
    CHECK(object->Invoke(0x60030005, IID_NULL, 0, DISPATCH_METHOD, &parameters, nullptr, nullptr, &wrong_argument) ==
          DISP_E_BADPARAMCOUNT);
    CHECK(object->Invoke(0x68030001, IID_NULL, 0, DISPATCH_PROPERTYPUT, &parameters, nullptr, nullptr, nullptr) ==
          DISP_E_BADPARAMCOUNT);
    parameters = {nullptr, nullptr, 1, 0};
    CHECK(object->Invoke(0x60030005, IID_NULL, 0, DISPATCH_METHOD, &parameters, nullptr, nullptr, nullptr) ==
          E_INVALIDARG);
    parameters = {id.get(), nullptr, 1, 1};
    CHECK(object->Invoke(0x60030005, IID_NULL, 0, DISPATCH_METHOD, &parameters, nullptr, nullptr, nullptr) ==
          E_INVALIDARG);
}

TEST_CASE_FIXTURE(InvokeFixture, "A null pointer behind a reference of any type is a type mismatch") {
    RecordedLine line(recorder, one_line);
    const ComPointer<LineObject> host_line(new LineObject(line));
    const OwnedVariant line_value(host_line.get());
    for (const int type : std::initializer_list<int>{VT_I2,      VT_I4,
                                                     VT_R4,      VT_R8,
                                                     VT_CY,      VT_DATE,
                                                     VT_BSTR,    VT_DISPATCH,
                                                     VT_ERROR,   VT_BOOL,
                                                     VT_VARIANT, VT_UNKNOWN,
                                                     VT_DECIMAL, VT_I1,
                                                     VT_UI1,     VT_UI2,
                                                     VT_UI4,     VT_I8,
                                                     VT_UI8,     VT_INT,
                                                     VT_UINT,    VT_ARRAY | VT_BSTR}) {
        INFO("type " << type);
        VARIANT null = {};
        null.vt = static_cast<VARTYPE>(VT_BYREF | type);
        CHECK(invoke(L"Over_AddInventory", {*line_value, null}) == DISP_E_TYPEMISMATCH);
        CHECK(wrong_argument == 0);
        CHECK(invoke(L"Over_AddInventory", {null}) == DISP_E_TYPEMISMATCH);
        CHECK(invoke(L"ADOConn", {null}, DISPATCH_PROPERTYPUTREF, {DISPID_PROPERTYPUT}) == DISP_E_TYPEMISMATCH);
    }
    CHECK(recorder.events.empty());
    CHECK(host_line->references() == 2);  // the test's own, and the value's
}

TEST_CASE_FIXTURE(InvokeFixture, "A variant that refers to itself, or in a circle, is no valid type") {
    VARIANT self = {};
    self.vt = VT_BYREF | VT_VARIANT;
    self.pvarVal = &self;
    CHECK(invoke(L"ReduceInventory_Db", {self}) == DISP_E_BADVARTYPE);
    VARIANT one = self, other = self;
    one.pvarVal = &other;
    other.pvarVal = &one;
    CHECK(invoke(L"ReduceInventory_Db", {one}) == DISP_E_BADVARTYPE);
    CHECK(recorder.events.empty());
}

TEST_CASE_FIXTURE(InvokeFixture, "A parameter given twice is a name too many") {
    const OwnedVariant id{Variant(u"B1")}, other{Variant(u"B2")};
    // Written order: named arguments come last, and are first in the list.
    CHECK(invoke(L"In_ReduceInventory", {*id, *other}, DISPATCH_METHOD, {0}) == DISP_E_PARAMNOTFOUND);
    CHECK(wrong_argument == 0);
    CHECK(invoke(L"In_ReduceInventory", {*id, *other, *other}, DISPATCH_METHOD, {1, 1}) == DISP_E_PARAMNOTFOUND);
    CHECK(wrong_argument == 1);
    CHECK(recorder.events.empty());
}

/// An object whose default property is what the test says, itself by default.
class DefaultValueObject final : public AutomationObject<DefaultValueObject, IDispatch> {
public:
    static std::span<const IID> identifiers() { return {}; }
    static std::span<const ScriptMember<DefaultValueObject>> script_members() { return {}; }

    HRESULT STDMETHODCALLTYPE Invoke(DISPID id, REFIID, LCID, WORD, DISPPARAMS*, VARIANT* result, EXCEPINFO*,
                                     UINT*) override {
        ++asked;
        if (id != DISPID_VALUE) return DISP_E_MEMBERNOTFOUND;
        *result = value ? OwnedVariant(*value).detach() : OwnedVariant(this).detach();
        return S_OK;
    }

    std::optional<Variant> value;
    int asked = 0;
};

TEST_CASE_FIXTURE(InvokeFixture, "An object in the place of a text stands for its default property, if that ends") {
    const ComPointer<DefaultValueObject> object_value(new DefaultValueObject);
    const OwnedVariant passed(object_value.get());
    object_value->value = Variant(u"B1");
    CHECK(invoke(L"ReduceInventory_Db", {*passed}) == S_OK);
    CHECK(last_statement() == "execute select * from StockBillItems where BillId='B1'");
    object_value->value.reset();  // its default property is itself
    CHECK(invoke(L"ReduceInventory_Db", {*passed}) == DISP_E_TYPEMISMATCH);
    CHECK(object_value->asked < 10);
    CHECK(object_value->references() == 2);  // the test's own, and the value's
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

TEST_CASE_FIXTURE(InvokeFixture, "A null name is an unknown one") {
    std::wstring method = L"In_ReduceInventory";
    LPOLESTR names[] = {nullptr, method.data()};
    DISPID found[2] = {};
    CHECK(object->GetIDsOfNames(IID_NULL, names, 2, LOCALE_USER_DEFAULT, found) == DISP_E_UNKNOWNNAME);
    CHECK(found[0] == DISPID_UNKNOWN);
    CHECK(found[1] == DISPID_UNKNOWN);
    std::swap(names[0], names[1]);
    CHECK(object->GetIDsOfNames(IID_NULL, names, 2, LOCALE_USER_DEFAULT, found) == DISP_E_UNKNOWNNAME);
    CHECK(found[0] == 0x60030005);
    CHECK(found[1] == DISPID_UNKNOWN);
    CHECK(object->GetIDsOfNames(IID_NULL, names, 0, LOCALE_USER_DEFAULT, found) == E_INVALIDARG);
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

/// The HRESULT by which automation knows a misuse.
HRESULT result_of(ErrorNumber number) {
    switch (number) {
        case error::invalid_call: return E_INVALIDARG;
        case error::type_mismatch: return DISP_E_TYPEMISMATCH;
        case error::named_argument_not_found: return DISP_E_PARAMNOTFOUND;
        case error::argument_not_optional: return DISP_E_PARAMNOTOPTIONAL;
        case error::wrong_argument_count: return DISP_E_BADPARAMCOUNT;
        case error::bad_type: return DISP_E_BADVARTYPE;
        default: return E_UNEXPECTED;
    }
}

/// Calls out of bytes, and what became of them.
class FuzzedCalls {
public:
    FuzzedCalls(_Inventory_Class& object, IDispatch& line) : object_(object), line_(line) {}

    /// Whether the call ends as the rules say. Where they leave open whether a value converts, either end will do.
    bool ends_as_expected(const std::vector<std::uint8_t>& bytes) {
        const DispatchCall call(bytes, &line_);
        const PassedArguments& passed = call.passed();
        DISPPARAMS parameters = {reinterpret_cast<VARIANT*>(const_cast<DispatchValue*>(passed.values)),
                                 reinterpret_cast<DISPID*>(const_cast<std::int32_t*>(passed.names)), passed.value_count,
                                 passed.name_count};
        OwnedVariant answer;
        UINT wrong = 99;
        const HRESULT result = object_.Invoke(static_cast<DISPID>(call.member().dispatch_id), IID_NULL, 0, call.flags(),
                                              &parameters, answer.get(), nullptr, &wrong);
        const bool is_method = call.member().kind == MemberKind::method;
        const bool is_put = (call.flags() & (DISPATCH_PROPERTYPUT | DISPATCH_PROPERTYPUTREF)) != 0;
        if (is_method && (call.flags() & DISPATCH_METHOD) == 0) return result == DISP_E_MEMBERNOTFOUND;
        if (is_method) {
            const std::optional<Misuse> misuse = expected_arguments(call).misuse;
            if (misuse && misuse->number == error::wrong_argument_count) return result == DISP_E_BADPARAMCOUNT;
            if (misuse) return result == result_of(misuse->number) && wrong == misuse->place;
        } else if (is_put) {
            const ErrorNumber misuse = expected_assignment(call).number;
            if (misuse != 0) return result == result_of(misuse);
        } else {
            const bool is_get = (call.flags() & DISPATCH_PROPERTYGET) != 0;
            if (!is_get) return result == DISP_E_MEMBERNOTFOUND;
            return result == (passed.value_count == 0 ? S_OK : DISP_E_BADPARAMCOUNT);
        }
        if (result == S_OK) ++carried_out;
        // The system's own conversions refuse a date that is none as an invalid argument.
        return result == S_OK || result == DISP_E_TYPEMISMATCH || result == DISP_E_OVERFLOW || result == E_INVALIDARG;
    }

    int carried_out = 0;

private:
    _Inventory_Class& object_;
    IDispatch& line_;
};

struct CorpusInput {
    std::string file;
    std::vector<std::uint8_t> bytes;
};

/// The fuzzer's inputs.
std::vector<CorpusInput> corpus() {
    std::vector<CorpusInput> inputs;
    for (const auto& entry : std::filesystem::directory_iterator(VANTLO_SOURCE_DIR "/fuzz/corpus/dispatch_calls")) {
        std::ifstream file(entry.path(), std::ios::binary);
        inputs.push_back({entry.path().string(), {std::istreambuf_iterator<char>(file), {}}});
    }
    CHECK(inputs.size() > 60);
    return inputs;
}

TEST_CASE_FIXTURE(InvokeFixture, "Every call of the fuzzer's corpus ends through the library as the rules say") {
    RecordedLine line(recorder, one_line);
    const ComPointer<LineObject> host_line(new LineObject(line));
    FuzzedCalls calls(*object.get(), *host_line.get());
    for (const CorpusInput& input : corpus()) {
        INFO(input.file);
        CHECK(calls.ends_as_expected(input.bytes));
    }
    CHECK(calls.carried_out > 15);
    CHECK(host_line->references() == 1);
}

TEST_CASE_FIXTURE(InvokeFixture,
                  "A host that calls nonsense runs a thousand times without a lost byte, slot or reference") {
    RecordedLine line(recorder, one_line);
    const ComPointer<LineObject> host_line(new LineObject(line));
    FuzzedCalls calls(*object.get(), *host_line.get());
    const std::vector<CorpusInput> inputs = corpus();
    int unexpected = 0;
    check_thousand_runs_keep_nothing([&] {
        for (const CorpusInput& input : inputs) {
            if (!calls.ends_as_expected(input.bytes)) ++unexpected;
            recorder.events.clear();
        }
    });
    CHECK(unexpected == 0);
    CHECK(host_line->references() == 1);
}

TEST_CASE_FIXTURE(InvokeFixture,
                  "No random call crashes the library, ends in another way, or leaves a reference behind") {
    RecordedLine line(recorder, one_line);
    const ComPointer<LineObject> host_line(new LineObject(line));
    FuzzedCalls calls(*object.get(), *host_line.get());
    std::mt19937_64 random(20241109);
    constexpr int rounds = 30'000;
    for (int i = 0; i < rounds; ++i) {
        std::vector<std::uint8_t> bytes(48);
        for (std::uint8_t& byte : bytes) byte = static_cast<std::uint8_t>(random());
        if (i % 4 != 0) {  // so that most calls come as far as their arguments
            bytes[1] = DISPATCH_METHOD;
            bytes[2] = 0;
            const Member& member = member_table()[bytes[0] % member_table().size()];
            bytes[3] = static_cast<std::uint8_t>(member.parameters().size());
            bytes[4] = 0;
        }
        if (!calls.ends_as_expected(bytes)) FAIL_CHECK("call " << i << " ends in another way than expected");
        recorder.events.clear();
    }
    CHECK(calls.carried_out > rounds / 10);
    CHECK(host_line->references() == 1);
    CHECK(object->putref_ADOConn(nullptr) == S_OK);
    CHECK(connection->references() == 1);
    MESSAGE(rounds << " random calls, " << calls.carried_out << " of them carried out");
}

}  // namespace
}  // namespace vantlo::test
