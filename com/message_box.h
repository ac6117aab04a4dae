#pragma once

#include <cstdint>

namespace vantlo {

/// Shows a message to the user, and returns when it has been dismissed. The window that the user was in cannot be used
/// meanwhile.
///
/// Where nobody could see it (a service, a session without a display, or VANTLO_UNATTENDED=1 in the environment) it
/// returns at once, and the text goes to the debugger's output and to stderr, or to the event log if there is no stderr
/// and the component is registered for everyone.
void show_message_box(const char16_t* text, const char16_t* title, std::int32_t style) noexcept;

}  // namespace vantlo
