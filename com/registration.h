#pragma once

#include <windows.h>

#include <string>

namespace vantlo {

/// For whom the component is registered: for everyone, which needs administrator rights, or for the current user.
enum class RegistrationScope { machine, user };

/// The machine's event sources, and the component's own among them, which is registered for everyone only.
inline constexpr wchar_t event_sources_key[] = L"SYSTEM\\CurrentControlSet\\Services\\EventLog\\Application";
inline constexpr wchar_t event_source[] = L"Vantlo";
inline constexpr wchar_t event_source_key[] = L"SYSTEM\\CurrentControlSet\\Services\\EventLog\\Application\\Vantlo";

/// Writes the keys under which hosts find the component and its type libraries in a file of that path; another copy's
/// give way. The line objects' library stays where it is if it is registered in a file of somebody else's. What was written is
/// taken away again if it cannot be completed.
HRESULT register_component(RegistrationScope scope, const std::wstring& path);

/// Removes those of the keys that point at a file of that path; what the component of the other bitness still needs stays
/// until that one is unregistered too.
HRESULT unregister_component(RegistrationScope scope, const std::wstring& path);

}  // namespace vantlo
