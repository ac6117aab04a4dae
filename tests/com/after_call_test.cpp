#include <doctest/doctest.h>
#include <ocidl.h>
#include <xmmintrin.h>

#include <cstdint>
#include <limits>

#include "automation/error_text.h"
#include "tests/com/posting_host.h"
#include "tests/support/printing.h"

// What a call leaves behind on the host's thread, and what the object says of itself.

namespace vantlo::test {

/// IProvideClassInfo as it lies in memory. A macro of the system's headers has its member's name. It lies outside the
/// unnamed namespace, or the compiler would take it for a class that nobody implements.
struct ClassInformationProvider : IUnknown {
    virtual HRESULT STDMETHODCALLTYPE class_information(ITypeInfo** information) = 0;
};

namespace {

/// Leaves an error object of that description on the thread.
void leave_error_object(const wchar_t* description) {
    ComPointer<ICreateErrorInfo> writer;
    REQUIRE(CreateErrorInfo(writer.out()) == S_OK);
    std::wstring text = description;
    writer->SetDescription(text.data());
    ComPointer<IErrorInfo> error;
    REQUIRE(writer->QueryInterface(IID_IErrorInfo, error.out_untyped()) == S_OK);
    SetErrorInfo(0, error.get());
}

/// The text of the thread's error object, which is taken away; "(none)" if there is none.
Text taken_error_text() {
    ComPointer<IErrorInfo> error;
    if (GetErrorInfo(0, error.out()) != S_OK) return u"(none)";
    BSTR text = nullptr;
    CHECK(error->GetDescription(&text) == S_OK);
    const OwnedBstr owned(text_of(text));
    SysFreeString(text);
    return text_of(owned.get());
}

/// A connection on which no statement succeeds. It leaves an error object, as ADO does.
class FailingConnection final : public Connection {
public:
    void add_reference() noexcept override {}
    void release() noexcept override {}
    RecordsetVariable execute(TextView) override {
        leave_error_object(L"of the database");
        throw Failure(error::syntax_error);
    }
};

struct HostWithFailures {
    Apartment apartment;
    UnattendedLibrary library;
    ClassRegistration recordsets = own_recordsets();
    FailingConnection failing;
    ComPointer<AdoConnection> connection{new AdoConnection(failing)};
    ComPointer<_Inventory_Class> object = library.make_object();
};

TEST_CASE_FIXTURE(HostWithFailures, "A posting that fails leaves no error object of the database on the thread") {
    REQUIRE(object->putref_ADOConn(connection.get()) == S_OK);
    for (const Road road : {Road::early_bound, Road::by_name}) {
        leave_error_object(L"of the host");
        CHECK(call_method(road, *object.get(), *find_method(u"AddInventory_ZZD_ZJ"), {{nullptr, Text(u"B1")}}) ==
              error::syntax_error);
        CHECK(taken_error_text() == u"(none)");
    }
    CHECK(object->putref_ADOConn(nullptr) == S_OK);
}

TEST_CASE_FIXTURE(HostWithFailures, "A call that COM refuses leaves its text on the thread") {
    ComPointer<ISupportErrorInfo> support;
    REQUIRE(object->QueryInterface(IID_ISupportErrorInfo, support.out_untyped()) == S_OK);
    CHECK(support->InterfaceSupportsErrorInfo(IID__Inventory_Class) == S_OK);
    CHECK(support->InterfaceSupportsErrorInfo(IID_IClassFactory) == S_FALSE);
    const auto text_of_failure = [](HRESULT result) {
        const bool is_chinese = PRIMARYLANGID(GetUserDefaultUILanguage()) == LANG_CHINESE;
        return Text(standard_text(result, is_chinese ? Language::chinese : Language::english));
    };

    CHECK(object->ReduceInventory_Db(nullptr, nullptr) == E_POINTER);
    CHECK(taken_error_text() == text_of_failure(E_POINTER));
    DISPPARAMS none = {};
    constexpr DISPID reduce_inventory = 0x60030003;
    CHECK(object->Invoke(reduce_inventory, IID_NULL, 0, DISPATCH_METHOD, &none, nullptr, nullptr, nullptr) ==
          DISP_E_BADPARAMCOUNT);
    CHECK(taken_error_text() == text_of_failure(DISP_E_BADPARAMCOUNT));
    CHECK(object->put_DATAType(nullptr) == S_OK);
    CHECK(taken_error_text() == u"(none)");
}

TEST_CASE_FIXTURE(HostWithFailures, "The object is named Inventory_Class by its class information") {
    ComPointer<ClassInformationProvider> provider;
    REQUIRE(object->QueryInterface(IID_IProvideClassInfo, provider.out_untyped()) == S_OK);
    ComPointer<ITypeInfo> information;
    REQUIRE(provider->class_information(information.out()) == S_OK);
    BSTR name = nullptr;
    REQUIRE(information->GetDocumentation(MEMBERID_NIL, &name, nullptr, nullptr, nullptr) == S_OK);
    CHECK(text_of(name) == u"Inventory_Class");
    SysFreeString(name);
    CHECK(provider->class_information(nullptr) == E_POINTER);
    ComPointer<IUnknown> through_provider, through_object;
    CHECK(provider->QueryInterface(IID_IUnknown, through_provider.out_untyped()) == S_OK);
    CHECK(object->QueryInterface(IID_IUnknown, through_object.out_untyped()) == S_OK);
    CHECK(through_provider.get() == through_object.get());
}

/// A host's thread on which an invalid operation, a division by zero or an overflow of floating-point numbers ends the
/// program.
class UnmaskedFloatingPoint {
public:
    UnmaskedFloatingPoint() {
        _mm_setcsr(sse_before_ & ~sse_masks);
        set_x87(static_cast<std::uint16_t>(x87_before_ & ~x87_masks));
    }
    UnmaskedFloatingPoint(const UnmaskedFloatingPoint&) = delete;
    UnmaskedFloatingPoint& operator=(const UnmaskedFloatingPoint&) = delete;
    ~UnmaskedFloatingPoint() {
        _mm_setcsr(sse_before_);
        set_x87(x87_before_);
    }

    static bool is_unmasked() { return (_mm_getcsr() & sse_masks) == 0 && (x87() & x87_masks) == 0; }

private:
    static constexpr unsigned sse_masks = _MM_MASK_INVALID | _MM_MASK_DIV_ZERO | _MM_MASK_OVERFLOW;
    static constexpr unsigned x87_masks = 1 | 4 | 8;  // the same three

    static std::uint16_t x87() {
        std::uint16_t control = 0;
        asm volatile("fnstcw %0" : "=m"(control));
        return control;
    }
    static void set_x87(std::uint16_t control) { asm volatile("fnclex; fldcw %0" : : "m"(control)); }

    unsigned sse_before_ = _mm_getcsr();
    std::uint16_t x87_before_ = x87();
};

TEST_CASE_FIXTURE(HostWithFailures,
                  "A quantity that is no number gives an error number where a host unmasks exceptions") {
    HostDatabase host;
    REQUIRE(object->putref_ADOConn(host.connection.get()) == S_OK);
    Recorder recorder;
    std::map<std::string, Variant> properties = one_piece().line;
    properties["Qty"] = std::numeric_limits<float>::quiet_NaN();
    RecordedLine line(recorder, properties);
    const ComPointer<LineObject> host_line(new LineObject(line));
    for (const Road road : {Road::early_bound, Road::by_name}) {
        LONG result = 0;
        bool stayed_unmasked = false;
        {
            const UnmaskedFloatingPoint unmasked;
            REQUIRE(UnmaskedFloatingPoint::is_unmasked());
            result = call_method(road, *object.get(), *find_method(u"RG_In_AddInventory"), {{host_line.get(), {}}});
            stayed_unmasked = UnmaskedFloatingPoint::is_unmasked();
        }
        CHECK(result == error::overflow);
        CHECK(stayed_unmasked);
    }
    CHECK(object->putref_ADOConn(nullptr) == S_OK);
}

}  // namespace
}  // namespace vantlo::test
