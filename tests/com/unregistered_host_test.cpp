#include <doctest/doctest.h>

#include <string>

#include "tests/com/component_library.h"
#include "tests/com/free_threaded_client.h"

// A host that carries the library in its own folder, and was never registered against.

namespace vantlo::test {
namespace {

bool is_registered() {
    wchar_t lines[39];
    StringFromGUID2(LIBID_Corvane, lines, 39);
    for (const std::wstring& name : {std::wstring(L"Vantlo.Inventory_Class"), std::wstring(L"TypeLib\\") + lines}) {
        HKEY key = nullptr;
        if (RegOpenKeyExW(HKEY_CLASSES_ROOT, name.c_str(), 0, KEY_READ, &key) != ERROR_SUCCESS) continue;
        RegCloseKey(key);
        return true;
    }
    return false;
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
    // Wine registers a type library that it loads for a manifest, as Windows does not.
    constexpr SYSKIND system = sizeof(void*) == 8 ? SYS_WIN64 : SYS_WIN32;
    UnRegisterTypeLib(LIBID_Vantlo, 3, 0, 0x409, system);
    UnRegisterTypeLib(LIBID_Corvane, 1, 0, 0x409, system);
    CHECK_FALSE(is_registered());
}

}  // namespace
}  // namespace vantlo::test
