#pragma once

#include <windows.h>

#include <string>

namespace vantlo {

/// For whom the component is registered: for everyone, which needs administrator rights, or for the current user.
enum class RegistrationScope { machine, user };

/// Writes the keys under which hosts find the component and its type libraries in a file of that path. What was written
/// is taken away again if it cannot be completed.
HRESULT register_component(RegistrationScope scope, const std::wstring& path);

/// Removes those keys; what the component of the other bitness still needs stays until that one is unregistered too.
HRESULT unregister_component(RegistrationScope scope);

}  // namespace vantlo
