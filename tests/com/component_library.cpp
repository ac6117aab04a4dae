#include "tests/com/component_library.h"

#include <stdexcept>

#include "dataaccess/shell_hooks.h"
#include "tests/support/com/script_host.h"

namespace vantlo::test {

namespace {

int WINAPI show_on_platform(HWND, const wchar_t* text, const wchar_t* title, UINT style) {
    shell_hooks().show_message(reinterpret_cast<const char16_t*>(text), reinterpret_cast<const char16_t*>(title),
                               static_cast<std::int32_t>(style));
    return IDOK;
}

template <typename Structure>
Structure* at(HMODULE module, std::size_t offset) {
    return reinterpret_cast<Structure*>(reinterpret_cast<std::byte*>(module) + offset);
}

FARPROC message_box() { return GetProcAddress(GetModuleHandleW(L"user32.dll"), "MessageBoxW"); }

FARPROC message_box_on_platform() { return reinterpret_cast<FARPROC>(reinterpret_cast<void*>(show_on_platform)); }

/// Puts another function in the place of one that a module imports. Returns: whether the module imports that one.
bool replace_import(HMODULE module, FARPROC imported, FARPROC replacement) {
    const auto* const dos = at<IMAGE_DOS_HEADER>(module, 0);
    const auto* const headers = at<IMAGE_NT_HEADERS>(module, static_cast<std::size_t>(dos->e_lfanew));
    const auto& directory = headers->OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_IMPORT];
    for (auto* library = at<IMAGE_IMPORT_DESCRIPTOR>(module, directory.VirtualAddress); library->Name != 0; ++library) {
        for (auto* slot = at<FARPROC>(module, library->FirstThunk); *slot != nullptr; ++slot) {
            if (*slot != imported) continue;
            DWORD protection = 0;
            VirtualProtect(slot, sizeof *slot, PAGE_READWRITE, &protection);
            *slot = replacement;
            VirtualProtect(slot, sizeof *slot, protection, &protection);
            return true;
        }
    }
    return false;
}

}  // namespace

ComponentLibrary::ComponentLibrary() : module_(LoadLibraryW(path().c_str())) {
    if (module_ == nullptr) throw std::runtime_error("Vantlo.dll does not load");
}

ComponentLibrary::~ComponentLibrary() {
    // The library may stay loaded.
    replace_import(module_, message_box_on_platform(), message_box());
    FreeLibrary(module_);
}

FARPROC ComponentLibrary::address(const char* name) const {
    const FARPROC found = GetProcAddress(module_, name);
    if (found == nullptr) throw std::runtime_error(std::string("Vantlo.dll does not export ") + name);
    return found;
}

ComPointer<IClassFactory> ComponentLibrary::factory() const {
    using GetClassObject = HRESULT(STDAPICALLTYPE*)(REFCLSID, REFIID, void**);
    ComPointer<IClassFactory> made;
    const auto get_class_object = function<GetClassObject>("DllGetClassObject");
    if (FAILED(get_class_object(CLSID_Inventory_Class, IID_IClassFactory, made.out_untyped()))) {
        throw std::runtime_error("Vantlo.dll has no class factory");
    }
    return made;
}

ComPointer<_Inventory_Class> ComponentLibrary::make_object() const {
    ComPointer<_Inventory_Class> made;
    if (FAILED(factory()->CreateInstance(nullptr, IID__Inventory_Class, made.out_untyped()))) {
        throw std::runtime_error("the object cannot be made");
    }
    return made;
}

bool ComponentLibrary::can_unload() const { return function<HRESULT(STDAPICALLTYPE*)()>("DllCanUnloadNow")() == S_OK; }

void ComponentLibrary::show_messages_on_platform() const {
    show_messages_in_window();
    if (!replace_import(module_, message_box(), message_box_on_platform())) {
        throw std::runtime_error("the library does not import the function");
    }
}

ReplacedImport::ReplacedImport(const ComponentLibrary& library, const wchar_t* from, const char* name,
                               FARPROC replacement)
    : module_(library.module()), imported_(GetProcAddress(GetModuleHandleW(from), name)), replacement_(replacement) {
    if (imported_ == nullptr || !replace_import(module_, imported_, replacement_)) {
        throw std::runtime_error(std::string("the library does not import ") + name);
    }
}

ReplacedImport::~ReplacedImport() { replace_import(module_, replacement_, imported_); }

std::wstring ComponentLibrary::path() {
    const Text path = windows_path(VANTLO_COMPONENT);
    return {path.begin(), path.end()};
}

}  // namespace vantlo::test
