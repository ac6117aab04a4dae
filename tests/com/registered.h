#pragma once

#include <doctest/doctest.h>

#include <string>
#include <utility>

#include "tests/support/com/automation_object.h"
#include "tests/support/com/script_host.h"

namespace vantlo::test {

/// A library registered with the system as long as this lasts.
class Registered {
public:
    explicit Registered(std::string file) : file_(std::move(file)) { REQUIRE(regsvr32(L"") == 0); }
    Registered(const Registered&) = delete;
    Registered& operator=(const Registered&) = delete;
    ~Registered() { regsvr32(L"/u"); }

private:
    DWORD regsvr32(const std::wstring& option) const {
        const Text path = windows_path(file_);
        return run_to_end(L"regsvr32.exe /s " + option + L" \"" + std::wstring(path.begin(), path.end()) + L"\"");
    }

    std::string file_;
};

/// ADO's type library, registered as on a machine that has ADO.
class RegisteredAdo {
public:
    RegisteredAdo() {
        const Text path = windows_path(VANTLO_TYPELIBS "/msado26.tlb");
        ComPointer<ITypeLib> library;
        REQUIRE(LoadTypeLibEx(std::wstring(path.begin(), path.end()).c_str(), REGKIND_REGISTER, library.out()) == S_OK);
        TLIBATTR* attributes = nullptr;
        REQUIRE(library->GetLibAttr(&attributes) == S_OK);
        attributes_ = *attributes;
        library->ReleaseTLibAttr(attributes);
    }
    RegisteredAdo(const RegisteredAdo&) = delete;
    RegisteredAdo& operator=(const RegisteredAdo&) = delete;
    ~RegisteredAdo() {
        UnRegisterTypeLib(attributes_.guid, attributes_.wMajorVerNum, attributes_.wMinorVerNum, attributes_.lcid,
                          attributes_.syskind);
    }

private:
    TLIBATTR attributes_ = {};
};

}  // namespace vantlo::test
