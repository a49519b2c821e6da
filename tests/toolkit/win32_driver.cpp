#include "system/windows_wide_text.h"
#include "tests/support/backend_driver.h"
#include "toolkit/access_key.h"
#include "toolkit/win32/win32_backend.h"
#include "toolkit/win32/win32_controls.h"

#include <dlgs.h>
#include <shlobj.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <deque>
#include <stdexcept>

namespace quillmere::test {
namespace {

/// Presses a key or releases it, as the keyboard does; 0 is no key.
void SendKey(BYTE key, DWORD flags) {
    if (key != 0) keybd_event(key, static_cast<BYTE>(MapVirtualKeyW(key, 0)), flags, 0);
}

/// Presses or releases a key that goes with another one, or with a click.
void SendHeld(Held held, DWORD flags) {
    constexpr std::array<BYTE, 4> inOrderOfHeld = {0, VK_SHIFT, VK_CONTROL, VK_MENU};
    SendKey(inOrderOfHeld.at(static_cast<std::size_t>(held)), flags);
}

/// Moves the mouse to a place on the screen, and presses or releases a button there.
void SendMouse(POINT place, DWORD flags) {
    constexpr LONG whole = 65536;
    const LONG x = (place.x * whole + whole / 2) / GetSystemMetrics(SM_CXSCREEN);
    const LONG y = (place.y * whole + whole / 2) / GetSystemMetrics(SM_CYSCREEN);
    mouse_event(flags | MOUSEEVENTF_MOVE | MOUSEEVENTF_ABSOLUTE, static_cast<DWORD>(x), static_cast<DWORD>(y),
                0, 0);
}

BYTE KeyCode(Key key) {
    constexpr std::array<BYTE, 11> inOrderOfKey = {VK_TAB, VK_RETURN, VK_ESCAPE, VK_SPACE,  VK_HOME, VK_LEFT,
                                                   VK_UP,  VK_RIGHT,  VK_DOWN,   VK_DELETE, VK_F10};
    const auto place = static_cast<std::size_t>(key);
    return place < inOrderOfKey.size() ? inOrderOfKey.at(place) : static_cast<BYTE>(key);
}

std::string TextOf(HWND window) {
    std::wstring text(static_cast<std::size_t>(GetWindowTextLengthW(window)) + 1, L'\0');
    GetWindowTextW(window, text.data(), static_cast<int>(text.size()));
    return Utf8FromWide(text.c_str());
}

HWND RootOf(const Window& window) {
    if (window.Handle() == 0) throw std::logic_error("the window " + window.Name() + " is not shown");
    return reinterpret_cast<HWND>(window.Handle());
}

/// The child window that shows `control`.
HWND HandleOf(const Control& control) {
    for (HWND child = GetWindow(RootOf(control.OwnerWindow()), GW_CHILD); child != nullptr;
         child = GetWindow(child, GW_HWNDNEXT)) {
        const Win32ControlView* const view = Win32ControlView::Of(child);
        if (view != nullptr && &view->Model() == &control) return child;
    }
    throw std::logic_error("the control " + control.Name() + " is not shown");
}

std::string HintOf(HWND control) {
    const HWND root = GetParent(control);
    std::array<wchar_t, 1000> text{};
    TTTOOLINFOW tool{};
    tool.cbSize = sizeof tool;
    tool.hwnd = root;
    tool.uId = reinterpret_cast<UINT_PTR>(control);
    tool.lpszText = text.data();
    for (HWND tip = nullptr; (tip = FindWindowExW(nullptr, tip, TOOLTIPS_CLASSW, nullptr)) != nullptr;)
        if (GetWindow(tip, GW_OWNER) == root)
            SendMessageW(tip, TTM_GETTEXTW, text.size(), reinterpret_cast<LPARAM>(&tool));
    return Utf8FromWide(text.data());
}

std::vector<std::string> RowsOf(HWND list) {
    std::vector<std::string> rows;
    for (LRESULT row = 0; row < SendMessageW(list, LB_GETCOUNT, 0, 0); ++row) {
        std::array<wchar_t, 1000> text{};
        SendMessageW(list, LB_GETTEXT, static_cast<WPARAM>(row), reinterpret_cast<LPARAM>(text.data()));
        rows.push_back(Utf8FromWide(text.data()));
    }
    return rows;
}

/// The files that the dialog lists. That of Wine has such a list.
std::vector<std::string> FilesIn(HWND dialog) {
    const HWND view = FindWindowExW(dialog, nullptr, L"SHELLDLL_DefView", nullptr);
    const HWND list = FindWindowExW(view, nullptr, WC_LISTVIEWW, nullptr);
    std::vector<std::string> files;
    for (int row = 0; row < ListView_GetItemCount(list); ++row) {
        std::array<wchar_t, MAX_PATH> text{};
        ListView_GetItemText(list, row, 0, text.data(), MAX_PATH);
        files.push_back(Utf8FromWide(text.data()));
    }
    return files;
}

/// Memory that can be given to another program.
HGLOBAL Shared(const std::wstring& text) {
    const HGLOBAL memory = GlobalAlloc(GHND, (text.size() + 1) * sizeof(wchar_t));
    std::ranges::copy(text, static_cast<wchar_t*>(GlobalLock(memory)));
    GlobalUnlock(memory);
    return memory;
}

bool ShowsButton(HWND dialog, int id) {
    const HWND button = GetDlgItem(dialog, id);
    return button != nullptr && (GetWindowLongW(button, GWL_STYLE) & WS_VISIBLE) != 0;
}

MessageIcon IconOf(HWND box) {
    const std::array inOrderOfIcon = {LoadIconW(nullptr, IDI_INFORMATION), LoadIconW(nullptr, IDI_QUESTION),
                                      LoadIconW(nullptr, IDI_ERROR)};
    const HWND picture = FindWindowExW(box, nullptr, L"STATIC", nullptr);
    const auto icon = reinterpret_cast<HICON>(SendMessageW(picture, STM_GETICON, 0, 0));
    return static_cast<MessageIcon>(std::ranges::find(inOrderOfIcon, icon) - inOrderOfIcon.begin());
}

/// Acts with the mouse and the keyboard. Looks for message boxes and file dialogs every few milliseconds.
class Win32Driver : public BackendDriver {
 public:
    Win32Driver() {
        constexpr UINT milliseconds = 10;
        driver = this;
        timer_ =
            SetTimer(nullptr, 0, milliseconds, [](HWND, UINT, UINT_PTR, DWORD) { driver->ActOrAnswer(); });
        SetDoubleClickTime(1);  // no two clicks of a test are one double click
    }
    ~Win32Driver() override {
        Settle();
        KillTimer(nullptr, timer_);
    }
    Backend& Target() override { return backend_; }

    void ClickCloseBox(Window& window) override {
        if (Activate(window)) PostMessageW(RootOf(window), WM_SYSCOMMAND, SC_CLOSE, 0);
        Look();
    }
    void Drop(Window& window, const std::vector<std::string>& paths) override {
        DROPFILES header{};
        header.pFiles = sizeof header;
        header.fWide = TRUE;
        std::wstring drop(sizeof header / sizeof(wchar_t), L'\0');
        std::memcpy(drop.data(), &header, sizeof header);
        for (const std::string& path : paths)
            drop += WideFromUtf8(path) + L'\0';
        PostMessageW(RootOf(window), WM_DROPFILES, reinterpret_cast<WPARAM>(Shared(drop)), 0);
        Look();
    }
    bool EndSession(Window& window) override {
        const LRESULT ends = SendMessageW(RootOf(window), WM_QUERYENDSESSION, 0, ENDSESSION_LOGOFF);
        SendMessageW(RootOf(window), WM_ENDSESSION, static_cast<WPARAM>(ends), ENDSESSION_LOGOFF);
        return ends != FALSE;
    }
    std::pair<int, int> HotSpot(const LinkLabel& link) override {
        const HWND handle = HandleOf(link);
        SendMessageW(handle, WM_SETCURSOR, reinterpret_cast<WPARAM>(handle),
                     MAKELPARAM(HTCLIENT, WM_MOUSEMOVE));
        ICONINFO pointer{};
        GetIconInfo(GetCursor(), &pointer);
        DeleteObject(pointer.hbmMask);
        return {pointer.xHotspot, pointer.yHotspot};
    }
    double ShownOpacity(const Window& window) override {
        BYTE alpha = 255;  // if it has no attributes
        GetLayeredWindowAttributes(RootOf(window), nullptr, &alpha, nullptr);
        return alpha / 255.0;
    }

 protected:
    bool Activate(const Window& window) override {
        if (IsWindowEnabled(RootOf(window)) == FALSE) return false;
        SetForegroundWindow(RootOf(window));
        Settle();
        return true;
    }
    void ClickIn(const Control& control, int row, Mouse how) override {
        const HWND handle = HandleOf(control);
        RECT place{};
        GetClientRect(handle, &place);
        if (row != ListBox::none)
            SendMessageW(handle, LB_GETITEMRECT, static_cast<WPARAM>(row), reinterpret_cast<LPARAM>(&place));
        POINT middle{(place.left + place.right) / 2, (place.top + place.bottom) / 2};
        ClientToScreen(handle, &middle);
        const Held held = how == Mouse::LeftWithControl ? Held::Control : Held::Nothing;
        SendHeld(held, 0);
        SendMouse(middle, how == Mouse::Right ? MOUSEEVENTF_RIGHTDOWN : MOUSEEVENTF_LEFTDOWN);
        SendMouse(middle, how == Mouse::Right ? MOUSEEVENTF_RIGHTUP : MOUSEEVENTF_LEFTUP);
        SendHeld(held, KEYEVENTF_KEYUP);
    }
    void Strike(Window& /*window*/, Held held, Key key, int repeats) override {
        SendHeld(held, 0);
        for (int i = 0; i <= repeats; ++i)
            SendKey(KeyCode(key), 0);
        SendKey(KeyCode(key), KEYEVENTF_KEYUP);
        SendHeld(held, KEYEVENTF_KEYUP);
    }
    void Settle() override { backend_.ServeMessages(); }
    void Post(std::function<void()> act) override { acts_.push_back(std::move(act)); }
    void Enter(Window& /*window*/, const std::string& text) override {
        for (const wchar_t letter : WideFromUtf8(text))
            PostMessageW(GetFocus(), WM_CHAR, letter, 0);
    }
    void CopyFromElsewhere(const std::string& text) override {
        OpenClipboard(nullptr);
        EmptyClipboard();
        SetClipboardData(CF_UNICODETEXT, Shared(WideFromUtf8(text)));
        CloseClipboard();
    }
    Appearance Shown(const Window& window) override {
        const LONG style = GetWindowLongW(RootOf(window), GWL_EXSTYLE);
        return {.text = TextOf(RootOf(window)), .takesFiles = (style & WS_EX_ACCEPTFILES) != 0};
    }
    Appearance Shown(const MenuItem& item) override {
        const Menu& parent = item.Parent();
        const HMENU menu = GetSubMenu(GetMenu(RootOf(parent.OwnerWindow())),
                                      static_cast<int>(PlaceIn(parent.OwnerWindow().Menus(), parent)));
        const auto line = static_cast<UINT>(PlaceIn(parent.Items(), item));
        std::array<wchar_t, 100> text{};
        GetMenuStringW(menu, line, text.data(), static_cast<int>(text.size()), MF_BYPOSITION);
        return {.text = Utf8FromWide(text.data()),
                .checked = (GetMenuState(menu, line, MF_BYPOSITION) & MF_CHECKED) != 0};
    }
    Appearance Shown(const Control& control) override {
        const HWND handle = HandleOf(control);
        const bool active = GetActiveWindow() == GetParent(handle);
        const bool isField = (GetWindowLongW(handle, GWL_EXSTYLE) & WS_EX_CLIENTEDGE) != 0;
        const bool isList = control.Kind() == ControlKind::ListBox;
        const bool isPicture = control.Kind() == ControlKind::Picture;  // Wine keeps no text of it
        const HWND named = isField ? GetWindow(handle, GW_HWNDPREV) : handle;
        return {
            .name = isPicture ? control.AccessibleName() : WithoutAccessKey(TextOf(named)),
            .text = isPicture ? "" : TextOf(handle),
            .hint = HintOf(handle),
            .enabled = IsWindowEnabled(handle) != FALSE,
            .focused = active ? GetFocus() == handle : control.HasFocus(),
            .checked = SendMessageW(handle, BM_GETCHECK, 0, 0) == BST_CHECKED,
            .items = RowsOf(handle),
            .selected = isList ? static_cast<int>(SendMessageW(handle, LB_GETCURSEL, 0, 0)) : ListBox::none};
    }

 private:
    /// Called by the timer. Answers each box and dialog once.
    void ActOrAnswer() {
        if (!acts_.empty()) {
            const auto act = std::move(acts_.front());
            acts_.pop_front();
            return act();
        }
        constexpr const wchar_t* seen = L"seen";
        constexpr ULONG_PTR dialogClass = 0x8002;
        const HWND prompt = GetActiveWindow();
        const bool isPrompt =
            GetClassLongPtrW(prompt, GCW_ATOM) == dialogClass && IsWindowVisible(prompt) != FALSE;
        if (!isPrompt || GetPropW(prompt, seen) != nullptr) return;
        SetPropW(prompt, seen, prompt);
        const HWND field = GetDlgItem(prompt, cmb13);  // for the file name
        field == nullptr ? AnswerBox(prompt) : AnswerDialog(prompt, field);
    }
    void AnswerBox(HWND box) {
        constexpr int textId = 0xFFFF;
        constexpr LONG letterWidth = 6;
        RECT place{};
        GetWindowRect(box, &place);
        EXPECT_GT(place.right - place.left, letterWidth * std::ssize(TextOf(box))) << "cuts its title";
        // Of a held key, which must not answer.
        PostMessageW(GetFocus(), WM_KEYDOWN, VK_RETURN, LPARAM{KF_REPEAT} << 16);
        const bool asks = ShowsButton(box, IDYES);
        constexpr std::array inOrderOfResult = {IDOK, IDYES, IDNO, IDCANCEL};
        const Message shown{TextOf(box), TextOf(GetDlgItem(box, textId)), IconOf(box),
                            asks ? MessageButtons::YesNoCancel : MessageButtons::Ok};
        const MessageResult result = AnswerTo(shown, asks && !ShowsButton(box, IDCANCEL));
        const int button = inOrderOfResult.at(static_cast<std::size_t>(result));
        // Windows calls the only button of a box Cancel, so that Escape presses it.
        PressButton(box, ShowsButton(box, button) ? button : asks ? IDCANCEL : IDOK);
    }
    void AnswerDialog(HWND dialog, HWND field) {
        const std::string path = PathFor(TextOf(dialog), [dialog] { return FilesIn(dialog); });
        SendMessageW(field, WM_SETTEXT, 0, reinterpret_cast<LPARAM>(WideFromUtf8(path).c_str()));
        PressButton(dialog, path.empty() ? IDCANCEL : IDOK);
    }
    static void PressButton(HWND dialog, int id) { PostMessageW(GetDlgItem(dialog, id), BM_CLICK, 0, 0); }

    static inline Win32Driver* driver = nullptr;  ///< the one that lives

    UINT_PTR timer_;
    std::deque<std::function<void()>> acts_;

    /// Opens no addresses.
    class Screen : public Driven<Win32Backend>, WindowsSystemCalls {
     public:
        using Driven::Driven;
        SystemCalls& Calls() override { return *this; }
        std::intptr_t ShellExecuteA(WindowHandle /*owner*/, const std::string& /*verb*/,
                                    const std::string& file, const std::string& /*parameters*/,
                                    const std::string& /*directory*/, int /*showCommand*/) override {
            constexpr std::intptr_t success = 33;
            driver_.opened.push_back(file);
            return success;
        }
    };
    Screen backend_{*this};
};

}  // namespace

std::unique_ptr<BackendDriver> MakeBackendDriver() {
    return std::make_unique<Win32Driver>();
}

}  // namespace quillmere::test
