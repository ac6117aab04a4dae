#include "com/message_box.h"

#include <windows.h>

#include "com/registration.h"

namespace vantlo {

namespace {

const wchar_t* wide(const char16_t* text) { return reinterpret_cast<const wchar_t*>(text); }

bool is_unattended() {
    wchar_t value[2] = {};
    return GetEnvironmentVariableW(L"VANTLO_UNATTENDED", value, 2) == 1 && value[0] == L'1';
}

/// Whether this process has a desktop that somebody may be sitting at; a service has none.
bool has_visible_desktop() {
    USEROBJECTFLAGS flags = {};
    DWORD size = 0;
    const bool known = GetUserObjectInformationW(GetProcessWindowStation(), UOI_FLAGS, &flags, sizeof flags, &size);
    return !known || (flags.dwFlags & WSF_VISIBLE) != 0;
}

/// Writes a text to stderr as UTF-8, piece by piece, without memory of its own. Returns: whether there is a stderr.
bool written_to_stderr(const wchar_t* text) {
    const HANDLE output = GetStdHandle(STD_ERROR_HANDLE);
    if (output == nullptr || output == INVALID_HANDLE_VALUE) return false;
    for (; *text != 0;) {
        const bool is_pair = IS_SURROGATE_PAIR(text[0], text[1]);
        char bytes[8];
        const int size = WideCharToMultiByte(CP_UTF8, 0, text, is_pair ? 2 : 1, bytes, sizeof bytes, nullptr, nullptr);
        DWORD written = 0;
        if (!WriteFile(output, bytes, static_cast<DWORD>(size), &written, nullptr)) return false;
        text += is_pair ? 2 : 1;
    }
    return true;
}

/// Puts the first of a thread's windows that a user could click on where `parameter` points.
BOOL CALLBACK take_clickable(HWND window, LPARAM parameter) {
    const bool is_clickable = IsWindowVisible(window) && IsWindowEnabled(window);
    if (is_clickable) *reinterpret_cast<HWND*>(parameter) = window;
    return !is_clickable;
}

/// The window that a box belongs to, and that nobody can click on while the box is open: the thread's active window or
/// its last popup. A program in the background has no active window; its foremost one is taken then.
HWND owner_of_boxes() {
    HWND window = GetActiveWindow();
    if (window == nullptr) EnumThreadWindows(GetCurrentThreadId(), take_clickable, reinterpret_cast<LPARAM>(&window));
    return window != nullptr ? GetLastActivePopup(window) : nullptr;
}

/// Whether the event log knows the component: a source that it does not know has no texts there.
bool is_event_source() {
    HKEY found = nullptr;
    if (RegOpenKeyExW(HKEY_LOCAL_MACHINE, event_source_key, 0, KEY_READ, &found) != ERROR_SUCCESS) return false;
    RegCloseKey(found);
    return true;
}

void write_to_event_log(const wchar_t* text) {
    constexpr DWORD text_as_it_stands = 1;  // the one event of the resource
    const HANDLE log = is_event_source() ? RegisterEventSourceW(nullptr, event_source) : nullptr;
    if (log == nullptr) return;
    ReportEventW(log, EVENTLOG_WARNING_TYPE, 0, text_as_it_stands, nullptr, 1, 0, &text, nullptr);
    DeregisterEventSource(log);
}

void report(const wchar_t* text) {
    OutputDebugStringW(text);
    OutputDebugStringW(L"\n");
    if (!written_to_stderr(text) || !written_to_stderr(L"\n")) write_to_event_log(text);
}

}  // namespace

void show_message_box(const char16_t* text, const char16_t* title, std::int32_t style) noexcept {
    const bool somebody_sees_it = !is_unattended() && has_visible_desktop();
    // A box that could not be made gives no positive answer.
    const bool shown =
        somebody_sees_it && MessageBoxW(owner_of_boxes(), wide(text), wide(title), static_cast<UINT>(style)) > 0;
    if (!shown) report(wide(text));
}

}  // namespace vantlo
