#include <doctest/doctest.h>
#include <xmmintrin.h>

#include <functional>
#include <limits>
#include <optional>
#include <thread>
#include <utility>

#include "tests/com/posting_host.h"
#include "tests/com/process_use.h"
#include "tests/support/printing.h"

// Hosts whose lines, connections and threads do what nobody would expect of them.

namespace vantlo::test {
namespace {

/// A line whose properties are what a function makes of them.
class OddLine final : public AutomationObject<OddLine, IDispatch> {
public:
    using Read = std::function<HRESULT(TextView name, VARIANT& value, EXCEPINFO& exception)>;

    explicit OddLine(Read read) : read_(std::move(read)) {}

    static std::span<const IID> identifiers() { return {}; }
    static std::span<const ScriptMember<OddLine>> script_members() { return {}; }

    HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID, LPOLESTR* names, UINT, LCID, DISPID* ids) override {
        names_.emplace_back(reinterpret_cast<const char16_t*>(names[0]));
        ids[0] = static_cast<DISPID>(names_.size() - 1);
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE Invoke(DISPID id, REFIID, LCID, WORD, DISPPARAMS*, VARIANT* result, EXCEPINFO* exception,
                                     UINT*) override {
        const Text name = names_.at(static_cast<std::size_t>(id));
        const HRESULT outcome = read_(name, *result, *exception);
        if (outcome != S_FALSE) return outcome;
        *result = OwnedVariant(one_piece().line.at(to_utf8(name))).detach();
        return S_OK;
    }

private:
    ~OddLine() override = default;

    Read read_;
    std::vector<Text> names_;
};

/// What a property answers to leave its value as it is on a line of one piece.
constexpr HRESULT as_usual = S_FALSE;

struct HostileHost {
    HostileHost() {
        library.show_messages_on_platform();  // which shows nothing
        REQUIRE(object->putref_ADOConn(connection.get()) == S_OK);
    }
    ~HostileHost() { object->putref_ADOConn(nullptr); }

    LONG post(IDispatch& line, Road road = Road::by_name) {
        return call_method(road, *object.get(), *find_method(u"RG_In_AddInventory"), {ComArgument{&line, {}}});
    }
    LONG post(OddLine::Read read) { return post(*ComPointer<OddLine>(new OddLine(std::move(read))).get()); }

    /// Posts a line with one property of the given value.
    LONG post_with(TextView property, const VARIANT& value) {
        return post([&](TextView name, VARIANT& result, EXCEPINFO&) {
            return name == property ? VariantCopy(&result, const_cast<VARIANT*>(&value)) : as_usual;
        });
    }

    /// The last statement that was sent.
    std::string last_statement() { return recorder.trace(Detail::statements).back(); }

    [[nodiscard]] std::vector<std::string> ledger() const { return read_ledger(database->connection()); }

    Apartment apartment;
    ComponentLibrary library;
    std::optional<ClassRegistration> recordsets{std::in_place, ado::recordset_class, make_own_recordset};
    std::unique_ptr<TestDatabase> database = make_sqlite_database();
    Recorder recorder;
    RecordingConnection recorded{recorder, database->connection()};
    ComPointer<AdoConnection> connection{new AdoConnection(recorded)};
    ComPointer<_Inventory_Class> object = library.make_object();
};

HRESULT STDMETHODCALLTYPE fill_in_late(EXCEPINFO* exception) {
    exception->scode = static_cast<HRESULT>(0x800A0000 + 1005);
    exception->bstrDescription = SysAllocString(L"late");
    return S_OK;
}

TEST_CASE_FIXTURE(HostileHost,
                  "A line's property that raises gives its number, whatever else it says, and costs nothing") {
    struct Raised {
        const char* what;
        WORD code;
        HRESULT scode;
        UINT description;  ///< its length
        LONG number;
    };
    const auto raise = [&](const Raised& raised) {
        return post([&](TextView, VARIANT&, EXCEPINFO& exception) {
            exception.wCode = raised.code;
            exception.scode = raised.scode;
            if (raised.description > 0) exception.bstrDescription = SysAllocStringLen(nullptr, raised.description);
            exception.bstrSource = SysAllocString(L"line");
            exception.bstrHelpFile = SysAllocString(L"line.hlp");
            return DISP_E_EXCEPTION;
        });
    };
    const auto of_automation = [](unsigned number) { return static_cast<HRESULT>(0x800A0000 + number); };
    for (const Raised& raised :
         {Raised{"no description", 0, of_automation(1004), 0, 1004},
          Raised{"a huge description", 0, of_automation(1004), 10'000'000, 1004}, Raised{"a code", 57, 0, 5, 57},
          Raised{"both", 57, of_automation(1004), 5, 57}, Raised{"neither", 0, 0, 5, error::automation_error},
          Raised{"a success", 0, S_FALSE, 5, error::automation_error},
          Raised{"automation's facility alone", 0, of_automation(0), 5, of_automation(0)}}) {
        INFO(raised.what);
        raise(raised);
        const std::size_t before = ProcessUse::now().heap_bytes;
        for (int i = 0; i < 10; ++i) CHECK(raise(raised) == raised.number);
        CHECK(ProcessUse::now().heap_bytes < before + 1000);
    }
    CHECK(post([](TextView, VARIANT&, EXCEPINFO& exception) {
              exception.pfnDeferredFillIn = fill_in_late;
              return DISP_E_EXCEPTION;
          }) == 1005);
    CHECK(ledger().empty());
}

TEST_CASE_FIXTURE(HostileHost, "Rubbish that a failed property leaves in its result is not touched") {
    for (const VARTYPE type : std::initializer_list<VARTYPE>{VT_BSTR, VT_DISPATCH, VT_UNKNOWN, VT_ARRAY | VT_BSTR}) {
        for (const HRESULT failure : {DISP_E_EXCEPTION, E_FAIL, DISP_E_MEMBERNOTFOUND}) {
            INFO("type " << type << ", result " << failure);
            CHECK(post([&](TextView, VARIANT& result, EXCEPINFO&) {
                      result.vt = type;
                      result.byref = reinterpret_cast<void*>(1);
                      return failure;
                  }) != 0);
        }
    }
}

VARIANT value_of_type(int type) {
    VARIANT value = {};
    value.vt = static_cast<VARTYPE>(type);
    return value;
}

TEST_CASE_FIXTURE(HostileHost, "Numbers of types that automation hosts seldom use are quantities all the same") {
    VARIANT wide = value_of_type(VT_I8), unsigned_wide = value_of_type(VT_UI8), decimal = value_of_type(VT_DECIMAL);
    wide.llVal = 5;
    unsigned_wide.ullVal = 5;
    decimal.decVal.Lo64 = 50;
    decimal.decVal.scale = 1;
    VARIANT small = value_of_type(VT_I1), word = value_of_type(VT_UI2), machine = value_of_type(VT_UINT);
    small.cVal = 5;
    word.uiVal = 5;
    machine.uintVal = 5;
    double behind = 5;
    VARIANT reference = value_of_type(VT_BYREF | VT_R8);
    reference.pdblVal = &behind;
    int posted = 0;
    for (const VARIANT& value : {wide, unsigned_wide, decimal, small, word, machine, reference}) {
        INFO("type " << value.vt);
        const LONG result = post([&](TextView name, VARIANT& answer, EXCEPINFO&) {
            if (name != u"Qty") return as_usual;
            answer = value;
            return S_OK;
        });
        CHECK(result == 0);
        posted += 5;
        CHECK(ledger() == std::vector<std::string>{"W1 G1 '' '' 1 | in " + std::to_string(posted) + " out 0 current " +
                                                   std::to_string(posted) + " | '' pcs ''"});
    }
}

TEST_CASE_FIXTURE(HostileHost, "A value that is neither number nor text fails a quantity and is an empty literal") {
    SAFEARRAYBOUND bound = {3, 0};
    VARIANT array = value_of_type(VT_ARRAY | VT_BSTR);
    array.parray = SafeArrayCreate(VT_BSTR, 1, &bound);
    REQUIRE(array.parray != nullptr);
    VARIANT object_value = value_of_type(VT_DISPATCH);
    object_value.pdispVal = object.get();
    VARIANT failure = value_of_type(VT_ERROR);
    failure.scode = DISP_E_PARAMNOTFOUND;
    for (const VARIANT& value : {array, object_value, failure, value_of_type(VT_UNKNOWN)}) {
        INFO("type " << value.vt);
        CHECK(post_with(u"Qty", value) == error::type_mismatch);
        CHECK(post_with(u"SpRemarks", value) != 0);  // the database refuses a list of values that ends in nothing
        CHECK(last_statement().ends_with(",0,1,)"));
    }
    VariantClear(&array);
    // Types that no value has, as a line in error hands them over.
    for (const int type : {int{VT_RECORD}, int{VT_LPWSTR}, int{VT_CLSID}, int{VT_VECTOR | VT_I4}, 0x0FFF}) {
        INFO("type " << type);
        const auto answer = [&](TextView name, VARIANT& result, EXCEPINFO&) {
            if (name != u"Qty") return as_usual;
            result = value_of_type(type);
            return S_OK;
        };
        CHECK(post(answer) == error::type_mismatch);
    }
    CHECK(ledger().empty());
}

TEST_CASE_FIXTURE(HostileHost, "Arrays, records and objects in the place of a line or a text are refused") {
    SAFEARRAYBOUND bound = {2, 0};
    VARIANT lines = value_of_type(VT_ARRAY | VT_DISPATCH);
    lines.parray = SafeArrayCreate(VT_DISPATCH, 1, &bound);
    REQUIRE(lines.parray != nullptr);
    VARIANT itself = value_of_type(VT_DISPATCH);
    itself.pdispVal = object.get();
    const auto invoke = [&](DISPID member, VARIANT argument, LCID locale = LOCALE_USER_DEFAULT) {
        DISPPARAMS parameters = {&argument, nullptr, 1, 0};
        VARIANT answer = {};
        const HRESULT result =
            object->Invoke(member, IID_NULL, locale, DISPATCH_METHOD, &parameters, &answer, nullptr, nullptr);
        return SUCCEEDED(result) ? answer.lVal : result;
    };
    constexpr DISPID takes_line = 0x6003000E, takes_text = 0x60030003;
    for (const DISPID member : {takes_line, takes_text}) {
        CHECK(invoke(member, lines) == DISP_E_TYPEMISMATCH);
        CHECK(invoke(member, value_of_type(VT_RECORD)) == DISP_E_BADVARTYPE);
    }
    CHECK(invoke(takes_text, itself) == DISP_E_TYPEMISMATCH);    // it has no default property
    CHECK(invoke(takes_line, itself) == error::no_such_member);  // it is no line
    CHECK(object->putref_ADOConn(reinterpret_cast<_Connection*>(object.get())) == DISP_E_TYPEMISMATCH);
    VariantClear(&lines);
    CHECK(recorder.events.empty());
}

TEST_CASE_FIXTURE(HostileHost, "A number in a text has a point, whatever locale the call names") {
    for (const LCID locale : std::initializer_list<LCID>{0, 0x400, 0x407, 0x409, 0x40C, 0x804, 0x1000, 0xFFFFFFFF}) {
        INFO("locale " << locale);
        VARIANT text = value_of_type(VT_R8);
        text.dblVal = 1.5;
        DISPPARAMS parameters = {&text, nullptr, 1, 0};
        OwnedVariant answer;
        constexpr DISPID reduce_inventory = 0x60030003;
        REQUIRE(object->Invoke(reduce_inventory, IID_NULL, locale, DISPATCH_METHOD, &parameters, answer.get(), nullptr,
                               nullptr) == S_OK);
        CHECK(answer->lVal == 0);
        CHECK(last_statement() == "execute select * from StockBillItems where BillId='1.5'");
        wchar_t name[] = L"ReduceInventory_Db";
        LPOLESTR names = name;
        DISPID identifier = 0;
        CHECK(object->GetIDsOfNames(IID_NULL, &names, 1, locale, &identifier) == S_OK);
        CHECK(identifier == reduce_inventory);
    }
}

TEST_CASE_FIXTURE(HostileHost, "A date that is none fails its literal, and no call crashes on it") {
    constexpr double infinity = std::numeric_limits<double>::infinity();
    for (const double days :
         {std::numeric_limits<double>::quiet_NaN(), infinity, -infinity, 1e300, -1e300, 2958466.0}) {
        INFO("day " << days);
        VARIANT date = value_of_type(VT_DATE);
        date.date = days;
        CHECK(post_with(u"SpRemarks", date) != 0);
        CHECK(last_statement().ends_with(",0,1,)"));
        CHECK(post_with(u"Gid", date) != 0);
    }
    CHECK(ledger().empty());
}

TEST_CASE_FIXTURE(HostileHost, "A text goes out whole, null characters, halves of pairs and all") {
    for (const Text& text : {Text(u"a\0b", 3), Text(1, char16_t{0xD800}), Text(u"\uFFFE\u202E")}) {
        const OwnedVariant value{Variant(text)};
        post_with(u"SpRemarks", *value);
        CHECK(last_statement().find(to_utf8(text)) != std::string::npos);
    }
    // A text of an odd number of bytes is as many characters as it has in whole.
    VARIANT odd = value_of_type(VT_BSTR);
    odd.bstrVal = SysAllocStringByteLen("a\0b\0c", 5);
    database->connection().run(u"delete from Inventory");
    CHECK(post_with(u"SpRemarks", odd) == 0);
    CHECK(last_statement().find("'ab'") != std::string::npos);
    VariantClear(&odd);
}

/// A connection that answers every statement with no rows, and remembers how long the last one was.
class LengthConnection final : public Connection {
public:
    void add_reference() noexcept override {}
    void release() noexcept override {}
    RecordsetVariable execute(TextView statement) override {
        last_length = statement.size();
        return make_client_recordset(ResultTable{{u"id"}, {}, true});
    }

    std::size_t last_length = 0;
};

TEST_CASE_FIXTURE(HostileHost, "A text of a hundred megabytes goes out or ends in error 7") {
    LengthConnection measured;
    const ComPointer<AdoConnection> host_connection(new AdoConnection(measured));
    REQUIRE(object->putref_ADOConn(host_connection.get()) == S_OK);
    constexpr UINT length = 50'000'000;
    VARIANT remarks = value_of_type(VT_BSTR);
    remarks.bstrVal = SysAllocStringLen(nullptr, length);
    REQUIRE(remarks.bstrVal != nullptr);
    std::fill_n(remarks.bstrVal, length, L'\'');
    const LONG result = post_with(u"SpRemarks", remarks);
    CHECK((result == 0 || result == error::out_of_memory));
    if (result == 0) CHECK(measured.last_length > 2 * length);
    VariantClear(&remarks);
    CHECK(post_with(u"SpRemarks", value_of_type(VT_NULL)) == 0);
    REQUIRE(object->putref_ADOConn(nullptr) == S_OK);
    CHECK(host_connection->references() == 1);
}

TEST_CASE_FIXTURE(HostileHost,
                  "A property may post other lines through the same object, and the connection to itself") {
    int depth = 0;
    const OddLine::Read read = [&](TextView name, VARIANT&, EXCEPINFO&) {
        if (name == u"Model1" && depth < 5) {
            ++depth;
            CHECK(post(read) == 0);
            CHECK(object->putref_ADOConn(connection.get()) == S_OK);
        }
        return as_usual;
    };
    CHECK(post(read) == 0);
    CHECK(depth == 5);
    CHECK(ledger() == std::vector<std::string>{"W1 G1 '' '' 1 | in 6 out 0 current 6 | '' pcs ''"});
    CHECK(object->putref_ADOConn(nullptr) == S_OK);
    CHECK(connection->references() == 1);
}

/// A recordset that answers for its fields, or for one of them, with success and nothing.
class HollowRecordset final : public AdoRecordset {
public:
    explicit HollowRecordset(bool has_fields) : AdoRecordset(make_client_recordset()), has_fields_(has_fields) {}

    HRESULT STDMETHODCALLTYPE get_Fields(ADOFields** fields) override {
        *fields = has_fields_ ? ComPointer<AdoFields>(new HollowFields(*this)).detach() : nullptr;
        return S_OK;
    }

private:
    class HollowFields final : public AdoFields {
    public:
        using AdoFields::AdoFields;
        HRESULT STDMETHODCALLTYPE get_Item(VARIANT, ADOField** field) override {
            *field = nullptr;
            return S_OK;
        }
    };

    bool has_fields_;
};

TEST_CASE_FIXTURE(HostileHost, "ADO's objects that are nothing are error 91") {
    database->connection().run(u"insert into GoodsUnit(id,Unit,UnitConverter) values('G1','pcs',12)");
    int in = 0;
    for (const bool has_fields : {false, true}) {
        recordsets.reset();
        recordsets.emplace(ado::recordset_class,
                           [has_fields] { return ComPointer<IUnknown>(new HollowRecordset(has_fields)); });
        // The unit look-up fails, and its error's number is the factor.
        CHECK(post([](TextView, VARIANT&, EXCEPINFO&) { return as_usual; }) == 0);
        in += error::object_not_set;
        CHECK(ledger() == std::vector<std::string>{"W1 G1 '' '' 1 | in " + std::to_string(in) + " out 0 current " +
                                                   std::to_string(in) + " | '' pcs ''"});
    }
}

/// What a host's thread may have set for floating-point numbers: 3D libraries set 24 bits on 32-bit Windows.
class OddFloatingPoint {
public:
    OddFloatingPoint(std::uint16_t x87_precision, unsigned rounding) {
        asm volatile("fnstcw %0" : "=m"(x87_));
        const auto odd = static_cast<std::uint16_t>((x87_ & ~0x0F00U) | x87_precision | (rounding << 10U));
        asm volatile("fldcw %0" : : "m"(odd));
        _mm_setcsr((sse_ & ~unsigned{_MM_ROUND_MASK}) | (rounding << 13U));
    }
    OddFloatingPoint(const OddFloatingPoint&) = delete;
    OddFloatingPoint& operator=(const OddFloatingPoint&) = delete;
    ~OddFloatingPoint() {
        asm volatile("fldcw %0" : : "m"(x87_));
        _mm_setcsr(sse_);
    }

private:
    std::uint16_t x87_ = 0;
    unsigned sse_ = _mm_getcsr();
};

TEST_CASE_FIXTURE(HostileHost, "A posting is exact whatever precision and rounding the host has set") {
    database->connection().run(u"insert into GoodsUnit(id,Unit,UnitConverter) values('G1','pcs',1.0001)");
    const Variant quantities[] = {16777217.0625,
                                  0.1F,
                                  1e10 / 3,
                                  Text(u"16777217.0625"),
                                  Text(u"0.00005"),
                                  Text(u"1E-1"),
                                  Text(u"922337203685.4775")};
    for (const Variant& quantity : quantities) {
        const OwnedVariant value(quantity);
        const auto posted = [&] {
            recorder.events.clear();
            database->connection().run(u"delete from Inventory");
            const LONG result = post_with(u"Qty", *value);
            return std::to_string(result) + " " + last_statement();
        };
        const std::string expected = posted();
        CHECK(expected.starts_with("0 execute insert"));
        for (const std::uint16_t precision : std::initializer_list<std::uint16_t>{0x000, 0x200, 0x300}) {
            for (const unsigned rounding : {0U, 1U, 2U, 3U}) {
                INFO("precision " << precision << ", rounding " << rounding);
                std::string through;
                {
                    const OddFloatingPoint odd(precision, rounding);
                    through = posted();
                }
                CHECK(through == expected);
            }
        }
    }
}

TEST_CASE("A call in which the thread uninitialises its apartment comes to its end, on the connection that it holds") {
    const Apartment apartment;
    const ComponentLibrary library;
    library.show_messages_on_platform();
    HostDatabase host;
    const std::map<std::string, Variant> properties = one_piece().line;
    for (const auto& [property, value] : properties) {
        INFO(property);
        const Text uninitialises = from_utf8(property);
        LONG result = -1;
        std::thread([&] {
            CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
            const ClassRegistration recordsets = own_recordsets();
            bool is_initialised = true;
            const ComPointer<_Inventory_Class> object = library.make_object();
            REQUIRE(object->putref_ADOConn(host.connection.get()) == S_OK);
            const ComPointer<OddLine> line(new OddLine([&](TextView name, VARIANT&, EXCEPINFO&) {
                if (name == uninitialises && std::exchange(is_initialised, false)) CoUninitialize();
                return as_usual;
            }));
            result = call_method(Road::by_name, *object.get(), *find_method(u"RG_In_AddInventory"), {{line.get(), {}}});
            if (is_initialised) CoUninitialize();
        }).join();
        CHECK(result == 0);
        CHECK(host.connection->references() == 1);
    }
    CHECK(library.can_unload());
}

}  // namespace
}  // namespace vantlo::test
