#include <doctest/doctest.h>

#include "tests/com/component_library.h"
#include "tests/com/free_threaded_client.h"

// A host that carries the library in its own folder, and was never registered against.

namespace vantlo::test {
namespace {

bool is_registered() {
    HKEY key = nullptr;
    const LSTATUS status = RegOpenKeyExW(HKEY_CLASSES_ROOT, L"Vantlo.Inventory_Class", 0, KEY_READ, &key);
    if (status == ERROR_SUCCESS) RegCloseKey(key);
    return status == ERROR_SUCCESS;
}

TEST_CASE("A host with a manifest makes the object without registration") {
    REQUIRE_FALSE(is_registered());
    const Apartment apartment;
    CLSID from_name;  // the manifest's own alias of the class
    REQUIRE(CLSIDFromProgID(L"Vantlo.Inventory_Class", &from_name) == S_OK);
    for (const CLSID& identifier : {CLSID(CLSID_Inventory_Class), from_name}) {
        ComPointer<_Inventory_Class> object;
        REQUIRE(CoCreateInstance(identifier, nullptr, CLSCTX_INPROC_SERVER, IID__Inventory_Class,
                                 object.out_untyped()) == S_OK);
        CHECK(object->put_DATAType(OwnedBstr(u"[Microsoft Access]").get()) == S_OK);
    }
}

TEST_CASE("A client in the multithreaded apartment gets the class without registration, early and late bound") {
    REQUIRE_FALSE(is_registered());
    check_free_threaded_client();
}

}  // namespace
}  // namespace vantlo::test
