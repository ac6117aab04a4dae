// The library's door: what the system calls by name.

#include "com/server.h"

#include <olectl.h>
#include <vantlo.h>  // made from com/idl/vantlo.idl

#include <atomic>

#include "ado/com/com_connection.h"
#include "com/class_factory.h"
#include "com/message_box.h"
#include "com/registration.h"
#include "com/thread_state.h"

namespace vantlo::server {

namespace {

HMODULE own_module = nullptr;
std::atomic<long> holds = 0;

bool attach(HMODULE loaded) {
    own_module = loaded;
    set_shell_hooks({create_com_recordset, show_message_box, thread_state::current});
    return thread_state::open();
}

/// Asks the system for this module, which counts a reference to it or does what the flags say.
bool find_own_module(DWORD flags) {
    HMODULE found = nullptr;
    const auto* const address = reinterpret_cast<const wchar_t*>(&own_module);
    return GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | flags, address, &found) != FALSE;
}

/// Runs the body of an export that may run out of memory.
template <typename Body>
HRESULT exported(Body body) noexcept {
    try {
        return body();
    } catch (...) {
        return E_OUTOFMEMORY;
    }
}

}  // namespace

HMODULE module() { return own_module; }

std::wstring path() {
    for (std::wstring path(MAX_PATH, L'\0');; path.resize(path.size() * 2)) {
        const DWORD length = GetModuleFileNameW(own_module, path.data(), static_cast<DWORD>(path.size()));
        if (length < path.size()) return path.substr(0, length);
    }
}

void hold() noexcept { ++holds; }

void let_go() noexcept { --holds; }

bool add_reference() noexcept { return find_own_module(0); }

void remove_reference() noexcept { FreeLibrary(own_module); }

void stay_loaded() noexcept { find_own_module(GET_MODULE_HANDLE_EX_FLAG_PIN); }

}  // namespace vantlo::server

using namespace vantlo;

extern "C" BOOL WINAPI DllMain(HINSTANCE instance, DWORD reason, void* process_ends) {
    switch (reason) {
        case DLL_PROCESS_ATTACH: return server::attach(instance);
        case DLL_THREAD_DETACH: thread_state::discard(); break;
        case DLL_PROCESS_DETACH:
            if (process_ends != nullptr) break;
            thread_state::close();
            server::free_throwing_memory();
            break;
        default: break;
    }
    return TRUE;
}

STDAPI DllGetClassObject(REFCLSID identifier, REFIID interface_identifier, void** factory) {
    if (factory == nullptr) return E_POINTER;
    *factory = nullptr;
    if (identifier != CLSID_Inventory_Class) return CLASS_E_CLASSNOTAVAILABLE;
    return ClassFactory::instance().QueryInterface(interface_identifier, factory);
}

STDAPI DllCanUnloadNow() {
    // No object is left that could set the thread's project-wide copy again: what it still refers to is let go of here,
    // since nothing may be called while the library is unloaded.
    if (server::holds == 0) thread_state::reset();
    return thread_state::nothing_watched() && server::holds == 0 ? S_OK : S_FALSE;
}

STDAPI DllRegisterServer() {
    return server::exported([] { return register_component(RegistrationScope::machine, server::path()); });
}

STDAPI DllUnregisterServer() {
    return server::exported([] { return unregister_component(RegistrationScope::machine, server::path()); });
}

/// What `regsvr32 /n /i:user` calls: registration for the current user, which needs no administrator rights.
STDAPI DllInstall(BOOL install, const wchar_t* for_whom) {
    return server::exported([&] {
        const std::wstring_view who = for_whom != nullptr ? for_whom : L"";
        if (who != L"" && who != L"machine" && who != L"user") return E_INVALIDARG;
        const auto scope = who == L"user" ? RegistrationScope::user : RegistrationScope::machine;
        return install ? register_component(scope, server::path()) : unregister_component(scope, server::path());
    });
}
