#pragma once

#include <doctest/doctest.h>

#include <string>
#include <utility>

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

}  // namespace vantlo::test
