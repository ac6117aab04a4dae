// The stand-in as a server of its own, so that scripts make it with CreateObject("ADODB.Connection"), and beside it a line
// object for those whose own classes cannot have every property: CreateObject("VantloTest.Line").

#include <olectl.h>

#include <string>

#include "ado/native/native_connection.h"
#include "tests/support/ado_stand_in/ado_connection.h"
#include "tests/support/ado_stand_in/ado_recordset.h"
#include "tests/support/com/class_factory.h"
#include "tests/support/com/property_bag.h"

namespace vantlo::test {
namespace {

struct ServedClass {
    const CLSID& identifier;
    const wchar_t* name;
    ComPointer<IUnknown> (*make)();
};

constexpr CLSID line_class = {0x2ac8be41, 0x5d0f, 0x4c7a, {0x9b, 0x63, 0x11, 0x7e, 0x48, 0xd2, 0x06, 0xfa}};

const ServedClass served_classes[] = {
    {line_class, L"VantloTest.Line", [] { return ComPointer<IUnknown>(new PropertyBag()); }},
    {ado::connection_class, L"ADODB.Connection", [] { return ComPointer<IUnknown>(new AdoConnection()); }},
    {ado::recordset_class, L"ADODB.Recordset",
     [] { return ComPointer<IUnknown>(new AdoRecordset(make_client_recordset())); }},
};

HMODULE this_module() {
    HMODULE module = nullptr;
    GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
                       reinterpret_cast<const wchar_t*>(served_classes), &module);
    return module;
}

bool set_key(const std::wstring& key, const wchar_t* name, const std::wstring& value) {
    const auto size = static_cast<DWORD>((value.size() + 1) * sizeof(wchar_t));
    return RegSetKeyValueW(HKEY_CLASSES_ROOT, key.c_str(), name, REG_SZ, value.c_str(), size) == ERROR_SUCCESS;
}

}  // namespace
}  // namespace vantlo::test

using namespace vantlo::test;

STDAPI DllGetClassObject(REFCLSID identifier, REFIID interface_identifier, void** factory) {
    *factory = nullptr;
    for (const ServedClass& served : served_classes) {
        if (identifier == served.identifier) {
            const ComPointer<IUnknown> made(new ClassFactory(served.make));
            return made->QueryInterface(interface_identifier, factory);
        }
    }
    return CLASS_E_CLASSNOTAVAILABLE;
}

STDAPI DllCanUnloadNow() { return objects_alive == 0 ? S_OK : S_FALSE; }

STDAPI DllRegisterServer() {
    wchar_t path[MAX_PATH];
    if (GetModuleFileNameW(this_module(), path, MAX_PATH) == 0) return SELFREG_E_CLASS;
    for (const ServedClass& served : served_classes) {
        wchar_t identifier[40];
        StringFromGUID2(served.identifier, identifier, 40);
        const std::wstring server = std::wstring(L"CLSID\\") + identifier + L"\\InprocServer32";
        const bool written = set_key(server, nullptr, path) && set_key(server, L"ThreadingModel", L"Apartment") &&
                             set_key(std::wstring(served.name) + L"\\CLSID", nullptr, identifier);
        if (!written) return SELFREG_E_CLASS;
    }
    return S_OK;
}
