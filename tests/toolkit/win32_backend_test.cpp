// What only the Windows backend has to do: follow the scale of the screen, and name controls for screen
// readers.

#include "tests/support/backend_driver.h"
#include "toolkit/win32/win32_api.h"

#include <gtest/gtest.h>

namespace quillmere::test {
namespace {

class Form : public Window {
 public:
    explicit Form(Backend& backend) : Window(backend, "Form", "Form", 4500, 3000) {}

    HWND Root() const { return reinterpret_cast<HWND>(Handle()); }
    /// The place of the window, or of one in it, on the screen.
    static RECT PlaceOf(HWND window) {
        RECT place{};
        GetWindowRect(window, &place);
        return place;
    }

    TextBox log{*this, "log", "Status log", {120, 120, 3000, 600}, TextBox::Style::ReadOnlyLines};
    Frame frame{*this, "frame", "Frame", {150, 900, 3000, 900}};
    Label label{frame, "label", "Name:", {150, 300, 600, 255}};
    TextBox text{frame, "text", "Name:", {900, 300, 1500, 300}};
    Menu menu{*this, "menu", "&Menu"};
};

TEST(Win32Form, HasOneLayoutAtAnyScaleNamesItsFieldsAndCentersModalWindows) {
    const std::unique_ptr<BackendDriver> user = MakeBackendDriver();
    Form form(user->Target());
    form.Show();
    const HWND log = FindWindowExW(form.Root(), nullptr, L"EDIT", nullptr);
    const HWND text = FindWindowExW(form.Root(), log, L"EDIT", nullptr);
    for (const int dpi : {144, 192, 96}) {
        SIZE size{};
        EXPECT_EQ(SendMessageW(form.Root(), WM_GETDPISCALEDSIZE, dpi, reinterpret_cast<LPARAM>(&size)), TRUE);
        const RECT suggested{50, 60, 50 + size.cx, 60 + size.cy};
        SendMessageW(form.Root(), WM_DPICHANGED, MAKEWPARAM(dpi, dpi), reinterpret_cast<LPARAM>(&suggested));
        EXPECT_EQ(Form::PlaceOf(form.Root()).left, suggested.left);
        EXPECT_EQ(Form::PlaceOf(form.Root()).top, suggested.top);
        RECT client{};
        GetClientRect(form.Root(), &client);
        EXPECT_EQ(client.right, 300 * dpi / 96);
        EXPECT_EQ(client.bottom, 200 * dpi / 96) << "without the menu bar";
        RECT place = Form::PlaceOf(text);
        MapWindowPoints(nullptr, form.Root(), reinterpret_cast<POINT*>(&place), 2);
        EXPECT_EQ(place.left, 70 * dpi / 96) << "of the frame and in it";
        EXPECT_EQ(place.top, 80 * dpi / 96);
        EXPECT_EQ(place.right - place.left, 100 * dpi / 96);
        LOGFONTW font{};
        GetObjectW(reinterpret_cast<HFONT>(SendMessageW(text, WM_GETFONT, 0, 0)), sizeof font, &font);
        EXPECT_NEAR(-font.lfHeight, 11 * dpi / 96.0, 0.5);
    }
    EXPECT_EQ(GetWindow(text, GW_HWNDPREV), FindWindowExW(form.Root(), nullptr, L"STATIC", L"Name:"));
    EXPECT_FALSE(IsWindowVisible(GetWindow(log, GW_HWNDPREV))) << "a label that only names the box";

    Form modal(user->Target());
    user->WhenModalOpens([&](Window& shown) {
        const RECT place = Form::PlaceOf(modal.Root());
        const RECT owner = Form::PlaceOf(form.Root());
        EXPECT_TRUE(EqualRect(&place, &owner)) << "in the middle of its owner, which has the same size";
        shown.Close();
    });
    modal.ShowModal();
    form.Close();
}

}  // namespace
}  // namespace quillmere::test
