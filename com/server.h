#pragma once

#include <windows.h>

#include <string>

namespace vantlo::server {

/// The library's own module.
[[nodiscard]] HMODULE module();

/// The full path of the library's file.
std::wstring path();

/// Counts what keeps the library loaded: objects, class factories in a host's hands, and locks on the server. An object
/// lets go behind its own destructor.
void hold() noexcept;
void let_go() noexcept;

/// Adds a reference to the library's module as the system counts them. Returns: whether it could.
bool add_reference() noexcept;

/// Takes one away: only where a caller keeps the library loaded, or the code that is running goes with it.
void remove_reference() noexcept;

/// Keeps the library loaded until the process ends.
void stay_loaded() noexcept;

/// Gives back what the library keeps for throwing exceptions: the last thing before it is unloaded.
void free_throwing_memory() noexcept;

}  // namespace vantlo::server
