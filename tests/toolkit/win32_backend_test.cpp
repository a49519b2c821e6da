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

    TextBox log{*this, "log", "Status log", {120, 120, 3000, 600}, TextBox::Style::ReadOnlyLines};
    Frame frame{*this, "frame", "Frame", {150, 900, 3000, 900}};
    Label label{frame, "label", "Name:", {150, 300, 600, 255}};
    TextBox text{frame, "text", "Name:", {900, 300, 1500, 300}};
    Menu menu{*this, "menu", "&Menu"};
};

class Win32Form : public testing::Test {
 protected:
    Win32Form() { form.Show(); }
    ~Win32Form() override { form.Close(); }

    HWND Root() const { return reinterpret_cast<HWND>(form.Handle()); }
    /// The text boxes in their order.
    HWND Log() const { return FindWindowExW(Root(), nullptr, L"EDIT", nullptr); }
    HWND Text() const { return FindWindowExW(Root(), Log(), L"EDIT", nullptr); }

    std::unique_ptr<BackendDriver> user = MakeBackendDriver();
    Form form{user->Target()};
};

TEST_F(Win32Form, ScreensOfAnyScaleShowTheSameLayout) {
    for (const int dpi : {144, 96, 192}) {
        SIZE size{};
        EXPECT_EQ(SendMessageW(Root(), WM_GETDPISCALEDSIZE, dpi, reinterpret_cast<LPARAM>(&size)), TRUE);
        const RECT suggested{50, 60, 50 + size.cx, 60 + size.cy};
        SendMessageW(Root(), WM_DPICHANGED, MAKEWPARAM(dpi, dpi), reinterpret_cast<LPARAM>(&suggested));
        RECT taken{};
        GetWindowRect(Root(), &taken);
        EXPECT_EQ(taken.left, suggested.left);
        EXPECT_EQ(taken.top, suggested.top);
        RECT client{};
        GetClientRect(Root(), &client);
        EXPECT_EQ(client.right, 300 * dpi / 96);
        EXPECT_EQ(client.bottom, 200 * dpi / 96) << "without the menu bar";
        RECT place{};
        GetWindowRect(Text(), &place);
        MapWindowPoints(nullptr, Root(), reinterpret_cast<POINT*>(&place), 2);
        EXPECT_EQ(place.left, 70 * dpi / 96) << "of the frame and in it";
        EXPECT_EQ(place.top, 80 * dpi / 96);
        EXPECT_EQ(place.right - place.left, 100 * dpi / 96);
        LOGFONTW font{};
        const auto handle = reinterpret_cast<HFONT>(SendMessageW(Text(), WM_GETFONT, 0, 0));
        GetObjectW(handle, sizeof font, &font);
        EXPECT_NEAR(-font.lfHeight, 11 * dpi / 96.0, 0.5);
    }
}

TEST_F(Win32Form, AModalWindowOpensInTheMiddleOfItsOwner) {
    SetWindowPos(Root(), nullptr, 300, 200, 0, 0, SWP_NOSIZE | SWP_NOZORDER);
    Form modal(user->Target());
    user->WhenModalOpens([&](Window& shown) {
        RECT place{};
        RECT owner{};
        GetWindowRect(reinterpret_cast<HWND>(shown.Handle()), &place);
        GetWindowRect(Root(), &owner);
        EXPECT_TRUE(EqualRect(&place, &owner)) << "it has the same size";
        shown.Close();
    });
    modal.ShowModal();
}

TEST_F(Win32Form, ATextBoxWithoutALabelHasItsNameInOneThatIsHidden) {
    EXPECT_EQ(GetWindow(Text(), GW_HWNDPREV), FindWindowExW(Root(), nullptr, L"STATIC", L"Name:"));
    EXPECT_FALSE(IsWindowVisible(GetWindow(Log(), GW_HWNDPREV)));
}

}  // namespace
}  // namespace quillmere::test
