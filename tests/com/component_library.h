#pragma once

// ADO's own headers first: they are what the component's header then takes for a connection.
#include "tests/support/ado_stand_in/ado_interfaces.h"
// Made from com/idl/vantlo.idl.
#include <vantlo.h>

#include <string>

#include "tests/support/com/automation_object.h"

namespace vantlo::test {

/// A thread's own apartment.
class Apartment {
public:
    Apartment() { CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED); }
    Apartment(const Apartment&) = delete;
    Apartment& operator=(const Apartment&) = delete;
    ~Apartment() { CoUninitialize(); }
};

/// Vantlo.dll, loaded and used without being registered.
class ComponentLibrary {
public:
    /// Errors: std::runtime_error.
    ComponentLibrary();
    ComponentLibrary(const ComponentLibrary&) = delete;
    ComponentLibrary& operator=(const ComponentLibrary&) = delete;
    ~ComponentLibrary();

    /// An export by name. Errors: std::runtime_error.
    template <typename Function>
    Function function(const char* name) const {
        return reinterpret_cast<Function>(reinterpret_cast<void*>(address(name)));
    }

    [[nodiscard]] ComPointer<IClassFactory> factory() const;
    [[nodiscard]] ComPointer<_Inventory_Class> make_object() const;
    [[nodiscard]] bool can_unload() const;
    [[nodiscard]] HMODULE module() const { return module_; }

    /// Lets the library show its messages as it does for a user.
    void show_messages_in_window() const { SetEnvironmentVariableW(L"VANTLO_UNATTENDED", nullptr); }

    /// Sends the messages that the library shows to stderr, as where nobody sits in front of the machine.
    void show_messages_on_stderr() const { SetEnvironmentVariableW(L"VANTLO_UNATTENDED", L"1"); }

    /// Gives the messages that the library shows to the test's hook instead of a window.
    void show_messages_on_platform() const;

    /// The file as it was built.
    static std::wstring path();

private:
    [[nodiscard]] FARPROC address(const char* name) const;

    HMODULE module_;
};

/// A function that the library calls in the place of one that it imports, as long as this lasts.
class ReplacedImport {
public:
    /// Errors   std::runtime_error if the library does not import that one.
    ReplacedImport(const ComponentLibrary& library, const wchar_t* from, const char* name, FARPROC replacement);
    ReplacedImport(const ReplacedImport&) = delete;
    ReplacedImport& operator=(const ReplacedImport&) = delete;
    ~ReplacedImport();

private:
    HMODULE module_;
    FARPROC imported_;
    FARPROC replacement_;
};

}  // namespace vantlo::test
