#include "system/windows_wide_text.h"
#include "tests/support/queueing_driver.h"
#include "toolkit/win32/win32_backend.h"
#include "toolkit/win32/win32_controls.h"

#include <dlgs.h>
#include <shlobj.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <cstring>
#include <iterator>
#include <stdexcept>

namespace quillmere::test {
namespace {

/// Calls each function that it is given from a message of its own, and `search` every few milliseconds.
class Events {
 public:
    explicit Events(std::function<void()> search) : search_(std::move(search)), window_(Make()) {
        constexpr UINT milliseconds = 10;
        SetWindowLongPtrW(window_.get(), GWLP_USERDATA, reinterpret_cast<LONG_PTR>(this));
        SetTimer(window_.get(), 1, milliseconds, nullptr);
    }
    void Post(std::function<void()> act) {
        acts_.push_back(std::move(act));
        PostMessageW(window_.get(), WM_APP, 0, 0);
    }

 private:
    static UniqueWindow Make() {
        static const ATOM registered = [] {
            WNDCLASSEXW description{};
            description.cbSize = sizeof description;
            description.lpfnWndProc = Procedure;
            description.lpszClassName = L"TestEvents";
            return RegisterClassExW(&description);
        }();
        return UniqueWindow(CreateWindowExW(0, MAKEINTATOM(registered), L"", 0, 0, 0, 0, 0, HWND_MESSAGE,
                                            nullptr, nullptr, nullptr));
    }
    static LRESULT CALLBACK Procedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
        auto* const self = reinterpret_cast<Events*>(GetWindowLongPtrW(window, GWLP_USERDATA));
        if (self != nullptr && message == WM_APP) return self->RunNext();
        if (self != nullptr && message == WM_TIMER) self->search_();
        return DefWindowProcW(window, message, wParam, lParam);
    }
    LRESULT RunNext() {
        const std::function<void()> act = std::move(acts_.front());
        acts_.pop_front();
        act();
        return 0;
    }

    std::function<void()> search_;
    std::deque<std::function<void()>> acts_;
    UniqueWindow window_;
};

/// The calls of Windows, except that addresses are not opened.
class DrivenCalls : public WindowsSystemCalls {
 public:
    explicit DrivenCalls(BackendDriver& driver) : driver_(driver) {}

    std::intptr_t ShellExecuteA(WindowHandle /*owner*/, const std::string& /*verb*/, const std::string& file,
                                const std::string& /*parameters*/, const std::string& /*directory*/,
                                int /*showCommand*/) override {
        constexpr std::intptr_t success = 33;
        driver_.opened.push_back(file);
        return success;
    }

 private:
    BackendDriver& driver_;
};

/// Records file dialogs, calls `modalOpened`, and delivers events at a Yield if `eventArrives` has posted
/// one.
class DrivenBackend : public Win32Backend {
 public:
    DrivenBackend(BackendDriver& driver, std::function<void(Window&)> modalOpened,
                  std::function<bool()> eventArrives)
        : driver_(driver),
          modalOpened_(std::move(modalOpened)),
          eventArrives_(std::move(eventArrives)),
          calls_(driver) {}

    void MakeVisible(Window& window) override {
        Win32Backend::MakeVisible(window);
        if (IsModal(window)) modalOpened_(window);
    }
    std::string ShowFileDialog(const FileDialog& dialog) override {
        driver_.dialogs.push_back(dialog);
        return Win32Backend::ShowFileDialog(dialog);
    }
    void Yield() override {
        if (eventArrives_()) return ServeMessages();
        Win32Backend::Yield();
    }
    void EndProgram() override { ADD_FAILURE() << "the program was ended"; }
    SystemCalls& Calls() override { return calls_; }

 private:
    BackendDriver& driver_;
    std::function<void(Window&)> modalOpened_;
    std::function<bool()> eventArrives_;
    DrivenCalls calls_;
};

/// Holds a key down for this thread while it lives.
class HeldKey {
 public:
    explicit HeldKey(BYTE key) {
        GetKeyboardState(before_.data());
        auto held = before_;
        held[key] = 0x80;
        SetKeyboardState(held.data());
    }
    ~HeldKey() { SetKeyboardState(before_.data()); }
    HeldKey(const HeldKey&) = delete;
    HeldKey& operator=(const HeldKey&) = delete;

 private:
    std::array<BYTE, 256> before_{};
};

LPARAM KeyDetails(BYTE key, bool withAlt) {
    return 1 | static_cast<LPARAM>(MapVirtualKeyW(key, MAPVK_VK_TO_VSC)) << 16 | LPARAM{withAlt} << 29;
}

void PostKeyDown(HWND target, BYTE key, bool withAlt, bool repeats) {
    PostMessageW(target, withAlt || key == VK_F10 ? WM_SYSKEYDOWN : WM_KEYDOWN, key,
                 KeyDetails(key, withAlt) | LPARAM{repeats} << 30);
}

void PostKey(HWND target, BYTE key, bool withAlt = false, bool repeats = false) {
    PostKeyDown(target, key, withAlt, repeats);
    PostMessageW(target, withAlt || key == VK_F10 ? WM_SYSKEYUP : WM_KEYUP, key,
                 KeyDetails(key, withAlt) | LPARAM{3} << 30);
}

void PostClick(HWND target, POINT place, Mouse how = Mouse::Left) {
    const bool right = how == Mouse::Right;
    const WPARAM control = how == Mouse::LeftWithControl ? MK_CONTROL : 0;
    PostMessageW(target, right ? WM_RBUTTONDOWN : WM_LBUTTONDOWN, control | (right ? MK_RBUTTON : MK_LBUTTON),
                 MAKELPARAM(place.x, place.y));
    PostMessageW(target, right ? WM_RBUTTONUP : WM_LBUTTONUP, control, MAKELPARAM(place.x, place.y));
}

POINT MiddleOf(HWND window) {
    RECT place{};
    GetClientRect(window, &place);
    return {place.right / 2, place.bottom / 2};
}

BYTE KeyCode(Key key) {
    static constexpr std::array<BYTE, 7> inOrderOfKey = {VK_TAB,    VK_TAB, VK_SPACE, VK_RETURN,
                                                         VK_ESCAPE, VK_UP,  VK_DOWN};
    return inOrderOfKey.at(static_cast<std::size_t>(key));
}

int ButtonFor(MessageResult result) {
    static constexpr std::array inOrderOfResult = {IDOK, IDYES, IDNO, IDCANCEL};
    return inOrderOfResult.at(static_cast<std::size_t>(result));
}

std::string TextOf(HWND window) {
    std::wstring text(static_cast<std::size_t>(SendMessageW(window, WM_GETTEXTLENGTH, 0, 0)) + 1, L'\0');
    const LRESULT length =
        SendMessageW(window, WM_GETTEXT, text.size(), reinterpret_cast<LPARAM>(text.data()));
    return Utf8FromWide({text.data(), static_cast<std::size_t>(length)});
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

/// The place of a menu item: the number of its menu in the bar and of its line in the menu.
struct MenuPlace {
    HWND root;
    int menu;
    int line;
    int linesToSkip;  ///< separators before it, which the Down key skips
};

MenuPlace PlaceOf(const MenuItem& item) {
    const Window& window = item.Parent().OwnerWindow();
    const auto menu = std::ranges::find(window.Menus(), &item.Parent());
    const auto& items = item.Parent().Items();
    const auto line = std::ranges::find(items, &item);
    const auto separators =
        std::count_if(items.begin(), line, [](const MenuItem* other) { return other->IsSeparator(); });
    return {RootOf(window), static_cast<int>(menu - window.Menus().begin()),
            static_cast<int>(line - items.begin()), static_cast<int>(separators)};
}

MessageIcon IconOf(HWND box) {
    for (HWND child = GetWindow(box, GW_CHILD); child != nullptr; child = GetWindow(child, GW_HWNDNEXT)) {
        const auto icon = reinterpret_cast<HICON>(SendMessageW(child, STM_GETICON, 0, 0));
        if (icon == LoadIconW(nullptr, IDI_INFORMATION)) return MessageIcon::Information;
        if (icon == LoadIconW(nullptr, IDI_QUESTION)) return MessageIcon::Question;
        if (icon == LoadIconW(nullptr, IDI_ERROR)) return MessageIcon::Critical;
    }
    ADD_FAILURE() << "the box " << TextOf(box) << " has no icon, or an unknown one";
    return {};
}

bool ShowsButton(HWND dialog, int id) {
    const HWND button = GetDlgItem(dialog, id);
    return button != nullptr && (GetWindowLongW(button, GWL_STYLE) & WS_VISIBLE) != 0;
}

SeenMessage Seen(HWND box) {
    constexpr int textId = 0xFFFF;
    return {TextOf(box), TextOf(GetDlgItem(box, textId)), IconOf(box),
            ShowsButton(box, IDYES) ? MessageButtons::YesNoCancel : MessageButtons::Ok};
}

/// The field for the file name; null in a message box.
HWND FileNameField(HWND dialog) {
    const HWND edit = GetDlgItem(dialog, edt1);
    return edit != nullptr ? edit : GetDlgItem(dialog, cmb13);
}

/// Acts with mouse and keyboard by posting the messages that Windows would. Looks for message boxes and file
/// dialogs every few milliseconds.
class Win32Driver : public QueueingDriver {
 public:
    ~Win32Driver() override { Settle(); }
    Backend& Target() override { return backend_; }

    void Click(Control& control) override {
        const HWND handle = HandleOf(control);
        ClickAt(handle, MiddleOf(handle));
    }
    void ClickItem(ListBox& list, int index, Mouse how) override {
        const HWND handle = HandleOf(list);
        RECT place{};
        SendMessageW(handle, LB_GETITEMRECT, static_cast<WPARAM>(index), reinterpret_cast<LPARAM>(&place));
        ClickAt(handle, {(place.left + place.right) / 2, (place.top + place.bottom) / 2}, how);
    }
    void Type(TextBox& box, const std::string& text) override {
        Click(box);
        if (!ShownFocus(box)) return;
        const HWND handle = HandleOf(box);
        {
            const HeldKey control(VK_CONTROL);
            PostKey(handle, 'A');
            Settle();
        }
        PostKey(handle, VK_DELETE);
        for (const wchar_t letter : WideFromUtf8(text))
            PostMessageW(handle, WM_CHAR, letter, 1);
        Settle();
    }
    void Paste(TextBox& box, const std::string& text) override {
        Click(box);
        const std::wstring wide = WideFromUtf8(text) + L'\0';
        const HGLOBAL memory = GlobalAlloc(GMEM_MOVEABLE, wide.size() * sizeof(wchar_t));
        std::ranges::copy(wide, static_cast<wchar_t*>(GlobalLock(memory)));
        GlobalUnlock(memory);
        OpenClipboard(HandleOf(box));
        EmptyClipboard();
        SetClipboardData(CF_UNICODETEXT, memory);
        CloseClipboard();
        PostKey(HandleOf(box), VK_HOME);
        PostMessageW(HandleOf(box), WM_PASTE, 0, 0);
        Settle();
    }
    void Press(Window& window, Key key, int repeats) override {
        std::optional<HeldKey> shift;
        if (key == Key::BackTab) shift.emplace(static_cast<BYTE>(VK_SHIFT));
        for (int i = 0; i < repeats; ++i) {
            PostKeyDown(KeyTarget(window), KeyCode(key), false, i > 0);
            Settle();
        }
        PostKey(KeyTarget(window), KeyCode(key), false, repeats > 0);
        Settle();
    }
    void PressAccessKey(Window& window, char key) override {
        const HWND target = KeyTarget(window);
        const HeldKey alt(VK_MENU);
        PostKey(target, static_cast<BYTE>(key - 'a' + 'A'), true);
        Settle();
    }
    void Choose(MenuItem& item) override {
        const MenuPlace place = PlaceOf(item);
        if (IsWindowEnabled(place.root) == FALSE) return;
        Activate(place.root);
        PostKey(KeyTarget(item.Parent().OwnerWindow()), VK_F10);
        for (int i = 0; i < place.menu; ++i)
            PostKey(place.root, VK_RIGHT);
        for (int i = place.linesToSkip; i <= place.line; ++i)
            PostKey(place.root, VK_DOWN);
        PostKey(place.root, VK_RETURN);
        Settle();
    }
    void ClickCloseBox(Window& window) override {
        const HWND root = RootOf(window);
        if (IsWindowEnabled(root) != FALSE) PostMessageW(root, WM_SYSCOMMAND, SC_CLOSE, 0);
        Settle();
    }
    void Drop(Window& window, const std::vector<std::string>& paths) override {
        std::wstring names;
        for (const std::string& path : paths)
            names += WideFromUtf8(path) + L'\0';
        const std::size_t bytes = (names.size() + 1) * sizeof(wchar_t);
        const HGLOBAL drop = GlobalAlloc(GHND, sizeof(DROPFILES) + bytes);
        auto* const header = static_cast<DROPFILES*>(GlobalLock(drop));
        header->pFiles = sizeof(DROPFILES);
        header->fWide = TRUE;
        std::memcpy(header + 1, names.c_str(), bytes);
        GlobalUnlock(drop);
        const HWND root = RootOf(window);
        EXPECT_EQ((GetWindowLongW(root, GWL_EXSTYLE) & WS_EX_ACCEPTFILES) != 0, window.TakesFiles());
        PostMessageW(root, WM_DROPFILES, reinterpret_cast<WPARAM>(drop), 0);
        Settle();
    }
    bool EndSession(Window& window) override {
        const LRESULT ends = SendMessageW(RootOf(window), WM_QUERYENDSESSION, 0, ENDSESSION_LOGOFF);
        SendMessageW(RootOf(window), WM_ENDSESSION, static_cast<WPARAM>(ends), ENDSESSION_LOGOFF);
        return ends != FALSE;
    }
    void Deactivate(Window& /*window*/) override {
        const UniqueWindow otherProgram(CreateWindowExW(0, L"STATIC", L"Other", WS_POPUP | WS_VISIBLE, 0, 0,
                                                        9, 9, nullptr, nullptr, nullptr, nullptr));
        SetForegroundWindow(otherProgram.get());
        Settle();
    }
    void Wait(std::chrono::milliseconds time) override {
        using Clock = std::chrono::steady_clock;
        const auto end = Clock::now() + time;
        for (auto left = time; left.count() > 0;) {
            MsgWaitForMultipleObjects(0, nullptr, FALSE, static_cast<DWORD>(left.count()), QS_ALLINPUT);
            Settle();
            left = std::chrono::ceil<std::chrono::milliseconds>(end - Clock::now());
        }
    }

    std::string ShownText(const Control& control) override {
        Settle();
        return TextOf(HandleOf(control));
    }
    std::string ShownHint(const Control& control) override {
        const HWND root = RootOf(control.OwnerWindow());
        std::array<wchar_t, 1000> text{};
        TTTOOLINFOW tool{};
        tool.cbSize = sizeof tool;
        tool.hwnd = root;
        tool.uId = reinterpret_cast<UINT_PTR>(HandleOf(control));
        tool.lpszText = text.data();
        for (HWND tip = nullptr; (tip = FindWindowExW(nullptr, tip, TOOLTIPS_CLASSW, nullptr)) != nullptr;) {
            if (GetWindow(tip, GW_OWNER) == root)
                SendMessageW(tip, TTM_GETTEXTW, text.size(), reinterpret_cast<LPARAM>(&tool));
        }
        return Utf8FromWide(text.data());
    }
    bool ShownEnabled(const Control& control) override { return IsWindowEnabled(HandleOf(control)) != FALSE; }
    bool ShownChecked(const Control& control) override {
        return SendMessageW(HandleOf(control), BM_GETCHECK, 0, 0) == BST_CHECKED;
    }
    bool ShownChecked(const MenuItem& item) override {
        const MenuPlace place = PlaceOf(item);
        const HMENU menu = GetSubMenu(GetMenu(place.root), place.menu);
        return (GetMenuState(menu, static_cast<UINT>(place.line), MF_BYPOSITION) & MF_CHECKED) != 0;
    }
    std::vector<std::string> ShownItems(const ListBox& list) override {
        const HWND handle = HandleOf(list);
        std::vector<std::string> items(static_cast<std::size_t>(SendMessageW(handle, LB_GETCOUNT, 0, 0)));
        for (std::size_t row = 0; row < items.size(); ++row) {
            const LRESULT length = SendMessageW(handle, LB_GETTEXTLEN, row, 0);
            std::wstring text(static_cast<std::size_t>(length), L'\0');
            SendMessageW(handle, LB_GETTEXT, row, reinterpret_cast<LPARAM>(text.data()));
            items[row] = Utf8FromWide(text);
        }
        return items;
    }
    int ShownSelection(const ListBox& list) override {
        return static_cast<int>(SendMessageW(HandleOf(list), LB_GETCURSEL, 0, 0));
    }
    std::string ShownTitle(const Window& window) override { return TextOf(RootOf(window)); }
    bool ShownFocus(const Control& control) override {
        Activate(RootOf(control.OwnerWindow()));
        return GetFocus() == HandleOf(control);
    }
    Pixel HotSpot(const LinkLabel& link) override {
        const HWND handle = HandleOf(link);
        SendMessageW(handle, WM_SETCURSOR, reinterpret_cast<WPARAM>(handle),
                     MAKELPARAM(HTCLIENT, WM_MOUSEMOVE));
        ICONINFO pointer{};
        GetIconInfo(GetCursor(), &pointer);
        DeleteObject(pointer.hbmMask);
        return {static_cast<int>(pointer.xHotspot), static_cast<int>(pointer.yHotspot)};
    }
    double ShownOpacity(const Window& window) override {
        const HWND root = RootOf(window);
        if ((GetWindowLongW(root, GWL_EXSTYLE) & WS_EX_LAYERED) == 0) return 1.0;
        BYTE alpha = 255;
        GetLayeredWindowAttributes(root, nullptr, &alpha, nullptr);
        return alpha / 255.0;
    }

 private:
    void Settle() { backend_.ServeMessages(); }

    /// Activates the window as a click on it would.
    void Activate(HWND root) {
        if (IsWindowEnabled(root) == FALSE || GetActiveWindow() == root) return;
        SetForegroundWindow(root);
        Settle();
    }
    /// As Windows does: a blocked window gets no click, and a click on a disabled control goes to its window.
    void ClickAt(HWND control, POINT place, Mouse how = Mouse::Left) {
        const HWND root = GetAncestor(control, GA_ROOT);
        if (IsWindowEnabled(root) == FALSE) return;
        Activate(root);
        const HWND target = IsWindowEnabled(control) != FALSE ? control : root;
        MapWindowPoints(control, target, &place, 1);
        PostClick(target, place, how);
        Settle();
    }
    HWND KeyTarget(const Window& window) {
        Activate(RootOf(window));
        return GetFocus() != nullptr ? GetFocus() : RootOf(window);
    }

    /// Answers each box and dialog once, from a message of its own since the answer may open another.
    void LookForPrompts() {
        EnumThreadWindows(GetCurrentThreadId(), NoteIfPrompt, reinterpret_cast<LPARAM>(this));
    }
    static BOOL CALLBACK NoteIfPrompt(HWND window, LPARAM driver) {
        constexpr const wchar_t* seen = L"seen";
        wchar_t name[16] = {};
        GetClassNameW(window, name, static_cast<int>(std::size(name)));
        const bool isDialog = std::wstring_view(name) == L"#32770";
        if (!isDialog || IsWindowVisible(window) == FALSE || GetPropW(window, seen) != nullptr) return TRUE;
        SetPropW(window, seen, window);
        auto& self = *reinterpret_cast<Win32Driver*>(driver);
        self.events_.Post([&self, window] { self.Answer(window); });
        return TRUE;
    }

    void Answer(HWND prompt) {
        if (FileNameField(prompt) != nullptr) return AnswerDialog(prompt);
        RECT place{};
        GetWindowRect(prompt, &place);
        constexpr LONG letterWidth = 6;
        EXPECT_GT(place.right - place.left, letterWidth * std::ssize(TextOf(prompt))) << "cuts its title";
        PostKeyDown(GetFocus(), VK_RETURN, false, true);  // of a held key, which must not answer
        if (GetWindow(prompt, GW_OWNER) != nullptr && ShowsButton(prompt, IDYES) &&
            !ShowsButton(prompt, IDCANCEL))
            return PressButton(prompt, MayReplace() ? IDYES : IDNO);
        const std::optional<MessageResult> result = AnswerTo(Seen(prompt));
        int button = result ? ButtonFor(*result) : IDCANCEL;
        if (!ShowsButton(prompt, button)) button = button == IDOK ? IDCANCEL : IDOK;
        PressButton(prompt, button);
    }
    void AnswerDialog(HWND dialog) {
        const std::string path = PathFor(TextOf(dialog));
        const auto text = WideFromUtf8(path);
        SendMessageW(FileNameField(dialog), WM_SETTEXT, 0, reinterpret_cast<LPARAM>(text.c_str()));
        PressButton(dialog, path.empty() ? IDCANCEL : IDOK);
    }
    static void PressButton(HWND dialog, int id) {
        const HWND button = GetDlgItem(dialog, id);
        if (button == nullptr) ADD_FAILURE() << "a prompt has no button " << id;
        PostClick(button, MiddleOf(button));
    }

    Events events_{[this] { LookForPrompts(); }};
    DrivenBackend backend_{*this,
                           [this](Window& window) { events_.Post([this, &window] { ActIn(window); }); },
                           [this] {
                               auto act = TakeYieldAct();
                               if (act) events_.Post(std::move(*act));
                               return act.has_value();
                           }};
};

}  // namespace

std::unique_ptr<BackendDriver> MakeBackendDriver() {
    return std::make_unique<Win32Driver>();
}

}  // namespace quillmere::test
