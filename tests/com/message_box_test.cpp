#include <doctest/doctest.h>

#include <string_view>
#include <thread>

#include "automation/error_text.h"
#include "tests/com/component_library.h"
#include "tests/com/process_use.h"
#include "tests/com/registered.h"
#include "tests/support/printing.h"

// The message box as a user sees it, in a real window.

namespace vantlo::test {
namespace {

/// What a message box shows.
struct SeenBox {
    Text title;
    Text text;
    HICON icon = nullptr;
};

Text text_of_window(HWND window) {
    wchar_t text[256] = {};
    const int length = GetWindowTextW(window, text, 256);
    return {text, text + length};
}

/// The icon of the one static control that has one.
HICON icon_in(HWND box) {
    for (HWND control = nullptr; (control = FindWindowExW(box, control, L"Static", nullptr)) != nullptr;) {
        const auto icon = reinterpret_cast<HICON>(SendMessageW(control, STM_GETICON, 0, 0));
        if (icon != nullptr) return icon;
    }
    return nullptr;
}

/// Waits until another thread's message box can be answered. Returns: null after ten seconds.
HWND wait_for_box() {
    for (int attempt = 0; attempt < 1000; ++attempt, Sleep(10)) {
        const HWND box = FindWindowW(L"#32770", L"提示信息");
        if (box != nullptr && GetDlgItem(box, IDOK) != nullptr && IsWindowVisible(box)) return box;
    }
    return nullptr;
}

/// Waits for the message box of another thread, reads it, and answers OK.
SeenBox read_and_dismiss_box() {
    constexpr int text_id = 0xFFFF;
    const HWND box = wait_for_box();
    SeenBox seen;
    if (box == nullptr) return seen;
    seen.title = text_of_window(box);
    seen.text = text_of_window(GetDlgItem(box, text_id));
    seen.icon = icon_in(box);
    CHECK(GetDlgItem(box, IDCANCEL) == nullptr);
    PostMessageW(box, WM_COMMAND, IDOK, 0);
    return seen;
}

TEST_CASE(
    "The user sees a box with the member's name, the error's text, an icon and OK, and the call goes on behind it") {
    const Apartment apartment;
    const ComponentLibrary library;
    library.show_messages_in_window();
    const ComPointer<_Inventory_Class> object = library.make_object();
    SeenBox seen;
    std::thread user([&] { seen = read_and_dismiss_box(); });
    LONG result = 0;
    OwnedBstr id(u"B1");
    CHECK(object->SaleIn_ReduceInventory(id.out(), &result) == S_OK);
    user.join();
    CHECK(result == error::object_not_set);
    CHECK(seen.title == u"提示信息");
    CHECK(seen.text == u"SaleIn_ReduceInventory():" + Text(standard_text(error::object_not_set)));
    CHECK(seen.icon == LoadIconW(nullptr, IDI_INFORMATION));
}

/// A host's window, which posts a bill whenever it is clicked on.
class HostWindow {
public:
    HostWindow() {
        WNDCLASSW window_class = {};
        window_class.lpfnWndProc = receive;
        window_class.hInstance = GetModuleHandleW(nullptr);
        window_class.lpszClassName = L"HostWindow";
        RegisterClassW(&window_class);
        window_ = CreateWindowW(L"HostWindow", L"host", WS_POPUP | WS_VISIBLE, 0, 0, 200, 200, nullptr, nullptr,
                                window_class.hInstance, nullptr);
        REQUIRE(window_ != nullptr);
        SetForegroundWindow(window_);
        clicks_ = 0;
    }
    HostWindow(const HostWindow&) = delete;
    HostWindow& operator=(const HostWindow&) = delete;
    ~HostWindow() { DestroyWindow(window_); }

    [[nodiscard]] HWND handle() const { return window_; }
    [[nodiscard]] int clicks() const { return clicks_; }

    /// A click as the mouse makes it.
    static void click() {
        SetCursorPos(100, 100);
        for (const DWORD event : std::initializer_list<DWORD>{MOUSEEVENTF_LEFTDOWN, MOUSEEVENTF_LEFTUP})
            mouse_event(event, 0, 0, 0, 0);
    }

    /// Takes the messages that wait for the window, for as long as a click may need to arrive.
    static void take_messages() {
        for (int i = 0; i < 20; ++i, Sleep(5)) {
            for (MSG message; PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE);) DispatchMessageW(&message);
        }
    }

private:
    static LRESULT CALLBACK receive(HWND window, UINT message, WPARAM first, LPARAM second) {
        if (message == WM_LBUTTONDOWN) ++clicks_;
        return DefWindowProcW(window, message, first, second);
    }

    static inline int clicks_ = 0;
    HWND window_ = nullptr;
};

void fail_with_box(_Inventory_Class& object) {
    OwnedBstr id(u"B1");
    LONG result = 0;
    CHECK(object.SaleIn_ReduceInventory(id.out(), &result) == S_OK);
    CHECK(result == error::object_not_set);
}

TEST_CASE("The box belongs to the host's active window, which takes no second click while it is open") {
    const Apartment apartment;
    const ComponentLibrary library;
    library.show_messages_in_window();
    const ComPointer<_Inventory_Class> object = library.make_object();
    const HostWindow host;
    HWND owner = nullptr;
    bool was_enabled = true;
    std::thread user([&] {
        const HWND box = wait_for_box();
        owner = GetWindow(box, GW_OWNER);
        was_enabled = IsWindowEnabled(host.handle());
        HostWindow::click();
        Sleep(100);
        PostMessageW(box, WM_COMMAND, IDOK, 0);
    });
    fail_with_box(*object.get());
    user.join();
    CHECK(owner == host.handle());
    CHECK_FALSE(was_enabled);
    HostWindow::take_messages();
    CHECK(host.clicks() == 0);
    CHECK(IsWindowEnabled(host.handle()));
    HostWindow::click();
    HostWindow::take_messages();
    CHECK(host.clicks() == 1);
}

/// Whether the host's window was enabled when a box of this thread was shown, and what is done about the box: by default
/// it is answered.
struct QuickUser {
    explicit QuickUser(const HostWindow& host_window, void (*do_about)(HWND box) = answer) {
        host = host_window.handle();
        act = do_about;
        box = nullptr;
        boxes = boxes_beside_an_enabled_host = 0;
        hook = SetWindowsHookExW(WH_CBT, on_event, nullptr, GetCurrentThreadId());
        REQUIRE(hook != nullptr);
    }
    QuickUser(const QuickUser&) = delete;
    QuickUser& operator=(const QuickUser&) = delete;
    ~QuickUser() { UnhookWindowsHookEx(hook); }

    static void answer(HWND shown) { PostMessageW(shown, WM_COMMAND, IDOK, 0); }

    static LRESULT CALLBACK on_event(int code, WPARAM window, LPARAM details) {
        const HWND seen = reinterpret_cast<HWND>(window);
        if (code == HCBT_DESTROYWND && seen == box) box = nullptr;
        // A window may become active again while it is open.
        if (code == HCBT_ACTIVATE && seen != host && seen != box) {
            box = seen;
            ++boxes;
            if (IsWindowEnabled(host)) ++boxes_beside_an_enabled_host;
            act(seen);
        }
        return CallNextHookEx(nullptr, code, window, details);
    }

    static inline HWND host = nullptr;
    static inline void (*act)(HWND box) = answer;
    static inline HWND box = nullptr;
    static inline int boxes = 0;
    static inline int boxes_beside_an_enabled_host = 0;
    HHOOK hook;
};

TEST_CASE("A thousand boxes leave the host's window as it was, and nothing of theirs") {
    const Apartment apartment;
    const ComponentLibrary library;
    library.show_messages_in_window();
    const ComPointer<_Inventory_Class> object = library.make_object();
    const HostWindow host;
    const QuickUser user(host);
    int runs = 0;
    check_thousand_runs_keep_nothing([&] {
        fail_with_box(*object.get());
        REQUIRE(IsWindowEnabled(host.handle()));
        REQUIRE(GetActiveWindow() == host.handle());
        ++runs;
    });
    CHECK(QuickUser::boxes == runs);
    CHECK(QuickUser::boxes_beside_an_enabled_host == 0);
}

TEST_CASE("A host without an active window takes no input either while a box is open") {
    const Apartment apartment;
    const ComponentLibrary library;
    library.show_messages_in_window();
    const ComPointer<_Inventory_Class> object = library.make_object();
    const HostWindow host;
    const QuickUser user(host);
    SetActiveWindow(nullptr);
    REQUIRE(GetActiveWindow() == nullptr);
    fail_with_box(*object.get());
    CHECK(QuickUser::boxes == 1);
    CHECK(QuickUser::boxes_beside_an_enabled_host == 0);
    CHECK(IsWindowEnabled(host.handle()));
}

/// A host that does something while a box is open, as a timer of its own would.
struct BusyHost {
    Apartment apartment;
    ComponentLibrary library;
    HostWindow window;
};

TEST_CASE_FIXTURE(BusyHost, "A host may post again while a box is open, and release the object") {
    library.show_messages_in_window();
    static ComPointer<_Inventory_Class> object;
    static int left;
    object = library.make_object();
    left = 3;
    const QuickUser user(window, [](HWND box) {
        if (left-- > 0) {
            fail_with_box(*object.get());
        } else {
            object = nullptr;
        }
        QuickUser::answer(box);
    });
    fail_with_box(*object.get());
    CHECK(QuickUser::boxes == 4);
    CHECK_FALSE(object);
    CHECK(library.can_unload());
    CHECK(IsWindowEnabled(window.handle()));
}

TEST_CASE_FIXTURE(BusyHost, "A host that destroys its window while the box is open gets its result") {
    library.show_messages_in_window();
    const ComPointer<_Inventory_Class> object = library.make_object();
    const QuickUser user(window, [](HWND) { PostMessageW(QuickUser::host, WM_CLOSE, 0, 0); });
    fail_with_box(*object.get());
    CHECK(QuickUser::boxes == 1);
    CHECK_FALSE(IsWindow(window.handle()));
}

TEST_CASE_FIXTURE(BusyHost, "A host that is told to end while the box is open gets its result, and ends") {
    library.show_messages_in_window();
    const ComPointer<_Inventory_Class> object = library.make_object();
    const QuickUser user(window, [](HWND) { PostQuitMessage(7); });
    fail_with_box(*object.get());
    CHECK(QuickUser::boxes == 1);
    MSG message = {};
    while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE) && message.message != WM_QUIT) DispatchMessageW(&message);
    CHECK(message.message == WM_QUIT);
    CHECK(message.wParam == 7);
}

/// How often the library asks the event log for its source.
struct EventLog {
    static HANDLE WINAPI refuse(const wchar_t*, const wchar_t* source) {
        CHECK(std::wstring_view(source) == L"Vantlo");
        ++asked;
        return nullptr;
    }

    static inline int asked = 0;
};

TEST_CASE("Where nobody sees a box and there is no stderr, the event log is told, if it knows the component") {
    const Apartment apartment;
    const ComponentLibrary library;
    library.show_messages_on_stderr();
    const ComPointer<_Inventory_Class> object = library.make_object();
    const auto refuse = reinterpret_cast<FARPROC>(reinterpret_cast<void*>(EventLog::refuse));
    const ReplacedImport event_log(library, L"advapi32.dll", "RegisterEventSourceW", refuse);
    const HANDLE host_stderr = GetStdHandle(STD_ERROR_HANDLE);
    EventLog::asked = 0;
    SetStdHandle(STD_ERROR_HANDLE, nullptr);
    fail_with_box(*object.get());
    SetStdHandle(STD_ERROR_HANDLE, host_stderr);
    CHECK(EventLog::asked == 0);
    {
        const Registered component(VANTLO_COMPONENT);
        SetStdHandle(STD_ERROR_HANDLE, nullptr);
        fail_with_box(*object.get());
        SetStdHandle(STD_ERROR_HANDLE, host_stderr);
    }
    CHECK(EventLog::asked == 1);
}

}  // namespace
}  // namespace vantlo::test
