#include <doctest/doctest.h>

#include <thread>

#include "automation/error_text.h"
#include "tests/com/component_library.h"
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

/// Waits for the message box of another thread, reads it, and answers OK.
SeenBox read_and_dismiss_box() {
    constexpr int text_id = 0xFFFF;
    for (int attempt = 0; attempt < 1000; ++attempt, Sleep(10)) {
        const HWND box = FindWindowW(L"#32770", L"提示信息");
        if (box == nullptr || GetDlgItem(box, IDOK) == nullptr || !IsWindowVisible(box)) continue;
        SeenBox seen;
        seen.title = text_of_window(box);
        seen.text = text_of_window(GetDlgItem(box, text_id));
        seen.icon = icon_in(box);
        CHECK(GetDlgItem(box, IDCANCEL) == nullptr);
        PostMessageW(box, WM_COMMAND, IDOK, 0);
        return seen;
    }
    return {};
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

}  // namespace
}  // namespace vantlo::test
