#include "tests/com/free_threaded_client.h"

#include <doctest/doctest.h>

#include <atomic>
#include <utility>

#include "tests/com/declared_line.h"
#include "tests/com/registered.h"
#include "tests/support/printing.h"

namespace vantlo::test {

namespace {

class FreeThreadedApartment {
public:
    FreeThreadedApartment() { REQUIRE(CoInitializeEx(nullptr, COINIT_MULTITHREADED) == S_OK); }
    FreeThreadedApartment(const FreeThreadedApartment&) = delete;
    FreeThreadedApartment& operator=(const FreeThreadedApartment&) = delete;
    ~FreeThreadedApartment() { CoUninitialize(); }
};

/// A line that counts how often it is asked.
class CountedLine final : public Line {
public:
    Variant value(TextView name) override {
        ++asked;
        if (name == u"Actualqty" || name == u"Qty") return 3.0F;
        if (name == u"Goodstutas") return std::int32_t{0};
        return Text(u"X");
    }

    std::atomic<int> asked = 0;
};

/// Whether a pointer leads to an object in another apartment.
bool is_proxy(IUnknown& object) {
    ComPointer<IUnknown> security;  // which proxies have, and the class itself has not
    return object.QueryInterface(IID_IClientSecurity, security.out_untyped()) == S_OK;
}

template <typename Interface>
ComPointer<Interface> make(REFIID identifier) {
    CLSID named;
    REQUIRE(CLSIDFromProgID(L"Vantlo.Inventory_Class.3", &named) == S_OK);
    ComPointer<Interface> object;
    REQUIRE(CoCreateInstance(named, nullptr, CLSCTX_INPROC_SERVER, identifier, object.out_untyped()) == S_OK);
    CHECK(is_proxy(*object.get()));
    return object;
}

// There is no connection: the posting ends in that, after the line was read.
LONG posted_early(CountedLine& line) {
    const auto object = make<_Inventory_Class>(IID__Inventory_Class);
    CHECK(object->put_DATAType(OwnedBstr(u"[Microsoft Access]").get()) == S_OK);
    OwnedBstr kind(u"");
    SysFreeString(std::exchange(*kind.out(), nullptr));
    CHECK(object->get_DATAType(kind.out()) == S_OK);
    CHECK(text_of(kind.get()) == u"[Microsoft Access]");
    const ComPointer<StockBillItem> item(new StockBillItem(line));
    _StockBillItemObject* passed = item.get();
    LONG number = -1;
    CHECK(object->AddInventory_Db(&passed, &number) == S_OK);
    CHECK(passed == item.get());
    return number;
}

LONG posted_late(CountedLine& line) {
    const auto object = make<IDispatch>(IID_IDispatch);
    std::wstring name = L"AddInventory_Db";
    LPOLESTR names = name.data();
    DISPID identifier = DISPID_UNKNOWN;
    REQUIRE(object->GetIDsOfNames(IID_NULL, &names, 1, LOCALE_USER_DEFAULT, &identifier) == S_OK);
    OwnedVariant item(ComPointer<StockBillItem>(new StockBillItem(line)).get());
    DISPPARAMS parameters = {item.get(), nullptr, 1, 0};
    OwnedVariant answer;
    CHECK(object->Invoke(identifier, IID_NULL, LOCALE_USER_DEFAULT, DISPATCH_METHOD, &parameters, answer.get(), nullptr,
                         nullptr) == S_OK);
    REQUIRE(answer->vt == VT_I4);
    return answer->lVal;
}

}  // namespace

void check_free_threaded_client() {
    SetEnvironmentVariableW(L"VANTLO_UNATTENDED", L"1");
    const RegisteredAdo ado;
    const long alive = objects_alive;
    {
        const FreeThreadedApartment apartment;
        CountedLine early, late;
        const LONG number = posted_early(early);
        CHECK(number != 0);
        CHECK(posted_late(late) == number);
        CHECK(early.asked > 4);
        CHECK(late.asked == early.asked);
    }
    CHECK(objects_alive == alive);
}

}  // namespace vantlo::test
