#pragma once

#include <windows.h>

#include <string>

namespace vantlo::server {

/// The library's own module.
[[nodiscard]] HMODULE module();

/// The full path of the library's file.
std::wstring path();

/// Counts what keeps the library loaded: objects, class factories in a host's hands, and locks on the server.
void hold() noexcept;
void let_go() noexcept;

}  // namespace vantlo::server
