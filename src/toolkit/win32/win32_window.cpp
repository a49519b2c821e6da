#include "toolkit/win32/win32_window.h"

#include "system/windows_wide_text.h"
#include "toolkit/hand_pointer.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

namespace quillmere {

namespace {

constexpr UINT deactivatedMessage = WM_APP;
constexpr UINT firstCommand = 100;
constexpr int programIcon = 1;  // resource

constexpr DWORD windowStyle = WS_OVERLAPPED | WS_CAPTION | WS_SYSMENU;

/// A fixed dialog has no icon, neither in the taskbar nor in the title bar.
DWORD ExtendedStyleFor(Window::Border border) {
    return border == Window::Border::FixedDialog ? WS_EX_DLGMODALFRAME : WS_EX_APPWINDOW;
}

HICON ProgramIcon(int widthMetric, int heightMetric) {
    return static_cast<HICON>(LoadImageW(GetModuleHandleW(nullptr), MAKEINTRESOURCEW(programIcon), IMAGE_ICON,
                                         GetSystemMetrics(widthMetric), GetSystemMetrics(heightMetric),
                                         LR_SHARED));
}

/// A letter or digit, in lower case; 0 for other characters.
char PlainKey(WPARAM character) {
    if (character >= 'A' && character <= 'Z') return static_cast<char>(character - 'A' + 'a');
    const bool plain = (character >= 'a' && character <= 'z') || (character >= '0' && character <= '9');
    return plain ? static_cast<char>(character) : '\0';
}

/// Whether a key message comes from a key that was held down already.
bool Repeats(LPARAM details) {
    return (HIWORD(details) & KF_REPEAT) != 0;
}

/// Where `window` is centered on `owner`, or as near to that as the screen of `owner` allows.
POINT MiddleOf(HWND owner, HWND window) {
    RECT place{};
    RECT own{};
    GetWindowRect(owner, &place);
    GetWindowRect(window, &own);
    MONITORINFO monitor{};
    monitor.cbSize = sizeof monitor;
    GetMonitorInfoW(MonitorFromWindow(owner, MONITOR_DEFAULTTONEAREST), &monitor);
    const RECT& work = monitor.rcWork;
    const LONG width = own.right - own.left;
    const LONG height = own.bottom - own.top;
    const LONG left = std::min((place.left + place.right - width) / 2, work.right - width);
    const LONG top = std::min((place.top + place.bottom - height) / 2, work.bottom - height);
    return {std::max(work.left, left), std::max(work.top, top)};
}

/// Windows makes a pixel white where the first mask has 0 and the second 1, and black where both have 0.
HCURSOR MakeHand() {
    const HandPointer hand = MakeHandPointer();
    HandPointer::Bits transparent{};
    HandPointer::Bits white{};
    for (std::size_t i = 0; i < transparent.size(); ++i) {
        transparent[i] = static_cast<std::uint8_t>(~hand.opaque[i]);
        white[i] = static_cast<std::uint8_t>(hand.opaque[i] & ~hand.black[i]);
    }
    return CreateCursor(GetModuleHandleW(nullptr), HandPointer::hotX, HandPointer::hotY, HandPointer::size,
                        HandPointer::size, transparent.data(), white.data());
}

}  // namespace

ATOM Win32Window::WindowClass() {
    static const ATOM registered = [] {
        WNDCLASSEXW description{};
        description.cbSize = sizeof description;
        description.lpfnWndProc = WindowProcedure;
        description.hInstance = GetModuleHandleW(nullptr);
        description.hIcon = ProgramIcon(SM_CXICON, SM_CYICON);
        description.hIconSm = ProgramIcon(SM_CXSMICON, SM_CYSMICON);
        description.hCursor = LoadCursorW(nullptr, IDC_ARROW);
        description.hbrBackground = GetSysColorBrush(COLOR_BTNFACE);
        description.lpszClassName = L"QuillmereWindow";
        return RegisterClassExW(&description);
    }();
    return registered;
}

Win32Window::Win32Window(Window& model, const Win32Prompts& prompts)
    : model_(model),
      prompts_(prompts),
      handle_(CreateWindowExW(ExtendedStyleFor(model.BorderStyle()), MAKEINTATOM(WindowClass()),
                              WideFromUtf8(model.Caption()).c_str(), windowStyle, CW_USEDEFAULT,
                              CW_USEDEFAULT, 0, 0, nullptr, nullptr, GetModuleHandleW(nullptr), nullptr)),
      metrics_(GetDpiForWindow(handle_.get())) {
    SetWindowLongPtrW(Handle(), GWLP_USERDATA, reinterpret_cast<LONG_PTR>(this));
    MakeMenus();
    MakeControls();
    Resize(OuterSize(metrics_));
    FitContents();
    SendMessageW(Handle(), WM_CHANGEUISTATE, MAKEWPARAM(UIS_INITIALIZE, 0), 0);
    StartTimers();
    if (model.TakesFiles()) TakeFiles();
}

/// The system window goes first: its child windows refer to their views.
Win32Window::~Win32Window() {
    gate_.Shut([] {});
    handle_.reset();
}

void Win32Window::MakeControls() {
    for (Control* const control : model_.Controls()) {
        auto& view = views_[control] = MakeControlView(*control, Handle(), gate_);
        SetWindowSubclass(view->Handle(), ControlProcedure, 0, reinterpret_cast<DWORD_PTR>(this));
        control->SetView(view.get());
    }
}

void Win32Window::MakeMenus() {
    if (model_.Menus().empty()) return;
    const HMENU bar = CreateMenu();
    for (Menu* const menu : model_.Menus())
        MakeMenu(bar, *menu);
    SetMenu(Handle(), bar);
    for (const MenuItem* const item : items_)
        RefreshCheckMark(*item);
}

void Win32Window::MakeMenu(HMENU bar, Menu& menu) {
    const HMENU shown = CreatePopupMenu();
    AppendMenuW(bar, MF_POPUP, reinterpret_cast<UINT_PTR>(shown), WideFromUtf8(menu.Caption()).c_str());
    for (MenuItem* const item : menu.Items()) {
        if (item->IsSeparator()) {
            AppendMenuW(shown, MF_SEPARATOR, 0, nullptr);
            continue;
        }
        const UINT command = firstCommand + static_cast<UINT>(items_.size());
        AppendMenuW(shown, MF_STRING, command, WideFromUtf8(item->Caption()).c_str());
        items_.push_back(item);
    }
}

void Win32Window::StartTimers() {
    UINT_PTR id = 0;
    for (const Timer* const timer : model_.Timers())
        SetTimer(Handle(), ++id, static_cast<UINT>(timer->Interval().count()), nullptr);
}

/// Also from programs with fewer rights, such as the Explorer when this one runs as administrator.
void Win32Window::TakeFiles() {
    constexpr UINT copyGlobalData = 0x0049;  // WM_COPYGLOBALDATA, which the headers leave out
    for (const UINT message : {UINT{WM_DROPFILES}, UINT{WM_COPYDATA}, copyGlobalData})
        ChangeWindowMessageFilterEx(Handle(), message, MSGFLT_ALLOW, nullptr);
    DragAcceptFiles(Handle(), TRUE);
}

SIZE Win32Window::ClientSize(const Metrics& metrics) const {
    return {metrics.Pixels(model_.Width()), metrics.Pixels(model_.Height())};
}

SIZE Win32Window::OuterSize(const Metrics& metrics) const {
    const SIZE client = ClientSize(metrics);
    RECT place{0, 0, client.cx, client.cy};
    AdjustWindowRectExForDpi(&place, windowStyle, model_.Menus().empty() ? FALSE : TRUE,
                             ExtendedStyleFor(model_.BorderStyle()), metrics.Dpi());
    return {place.right - place.left, place.bottom - place.top};
}

void Win32Window::Resize(SIZE size) {
    SetWindowPos(Handle(), nullptr, 0, 0, size.cx, size.cy, SWP_NOMOVE | SWP_NOZORDER | SWP_NOACTIVATE);
}

/// Corrects the size of the client area, since only now the height of the menu bar is known, and places the
/// controls. Resizing may move the window to a screen of another scale, which changes the metrics.
void Win32Window::FitContents() {
    const SIZE wanted = ClientSize(metrics_);
    RECT outer{};
    RECT client{};
    GetWindowRect(Handle(), &outer);
    GetClientRect(Handle(), &client);
    if (client.right != wanted.cx || client.bottom != wanted.cy)
        Resize({outer.right - outer.left + wanted.cx - client.right,
                outer.bottom - outer.top + wanted.cy - client.bottom});
    for (const auto& [control, view] : views_)
        view->Fit(metrics_);
}

void Win32Window::MoveToMiddleOf(HWND owner) {
    const POINT middle = MiddleOf(owner, Handle());
    SetWindowPos(Handle(), nullptr, middle.x, middle.y, 0, 0, SWP_NOSIZE | SWP_NOZORDER | SWP_NOACTIVATE);
}

void Win32Window::Show(HWND owner) {
    if (owner != nullptr) {
        SetWindowLongPtrW(Handle(), GWLP_HWNDPARENT, reinterpret_cast<LONG_PTR>(owner));
        const UINT dpi = metrics_.Dpi();
        MoveToMiddleOf(owner);
        if (metrics_.Dpi() != dpi) MoveToMiddleOf(owner);  // on the owner's screen its size differs
    }
    ShowWindow(Handle(), SW_SHOW);
    SetForegroundWindow(Handle());
}

void Win32Window::LetGo(std::function<void()> whenIdle) {
    for (const auto& [control, view] : views_)
        view->Model().SetView(nullptr);
    gate_.Shut(std::move(whenIdle));
    ShowWindow(Handle(), SW_HIDE);
}

void Win32Window::RefreshCaption() {
    SetWindowTextW(Handle(), WideFromUtf8(model_.Caption()).c_str());
}

void Win32Window::RefreshCheckMark(const MenuItem& item) {
    const auto index = static_cast<UINT>(std::ranges::find(items_, &item) - items_.begin());
    CheckMenuItem(GetMenu(Handle()), firstCommand + index, item.Checked() ? MF_CHECKED : MF_UNCHECKED);
}

LRESULT CALLBACK Win32Window::WindowProcedure(HWND handle, UINT message, WPARAM wParam, LPARAM lParam) {
    auto* const window = reinterpret_cast<Win32Window*>(GetWindowLongPtrW(handle, GWLP_USERDATA));
    const bool known = window != nullptr && window->gate_.IsOpen();
    if (!known) return DefWindowProcW(handle, message, wParam, lParam);
    return window->Serve(message, wParam, lParam);
}

LRESULT Win32Window::Serve(UINT message, WPARAM wParam, LPARAM lParam) {
    switch (message) {
        case WM_COMMAND:
            return ServeCommand(HIWORD(wParam), LOWORD(wParam), reinterpret_cast<HWND>(lParam));
        case WM_DRAWITEM:
            return ServeDrawItem(*reinterpret_cast<const DRAWITEMSTRUCT*>(lParam));
        case WM_GETDPISCALEDSIZE:
            return ServeGetDpiScaledSize(static_cast<UINT>(wParam), *reinterpret_cast<SIZE*>(lParam));
        case WM_DPICHANGED:
            return ServeDpiChanged(HIWORD(wParam), *reinterpret_cast<const RECT*>(lParam));
        case WM_TIMER:
            return ServeTimer(wParam);
        case WM_CLOSE:
            return ServeClose();
        case WM_QUERYENDSESSION:
            return ServeQueryEndSession();
        case WM_ENDSESSION:
            return ServeEndSession(wParam != FALSE);
        case WM_SETFOCUS:
            return ServeSetFocus();
        case WM_DROPFILES:
            return ServeDropFiles(reinterpret_cast<HDROP>(wParam));
        case deactivatedMessage:
            return ReportDeactivation();
        case WM_ACTIVATE:
            NoteActivation(LOWORD(wParam));
            break;
        case WM_SETCURSOR:
            if (ServesSetCursor(reinterpret_cast<HWND>(wParam))) return TRUE;
            break;
        case WM_CTLCOLORSTATIC:
            if (ServesControlColor(reinterpret_cast<HDC>(wParam), reinterpret_cast<HWND>(lParam)))
                return reinterpret_cast<LRESULT>(GetSysColorBrush(COLOR_WINDOW));
            break;
        default:
            if (ServesKey(message, wParam, lParam)) return 0;
            break;
    }
    return DefWindowProcW(Handle(), message, wParam, lParam);
}

LRESULT Win32Window::ServeCommand(WORD code, WORD id, HWND control) {
    if (control != nullptr) {
        if (Win32ControlView* const view = Win32ControlView::Of(control)) view->Serve(code);
        return 0;
    }
    const std::size_t index = std::size_t{id} - firstCommand;
    if (index >= items_.size()) return 0;
    gate_.Pass([&] {
        items_[index]->UserChooses();
        RefreshCheckMark(*items_[index]);
    });
    return 0;
}

LRESULT Win32Window::ServeDrawItem(const DRAWITEMSTRUCT& drawing) {
    if (Win32ControlView* const view = Win32ControlView::Of(drawing.hwndItem)) view->Draw(drawing);
    return TRUE;
}

/// Tells Windows how large the window would be at that scale. Windows then suggests this size.
LRESULT Win32Window::ServeGetDpiScaledSize(UINT dpi, SIZE& size) {
    size = OuterSize(Metrics(dpi));
    return TRUE;
}

/// The window has moved to a screen of another scale, or the scale of its screen has changed. It goes
/// straight to the suggested place: a place in between could be on the old screen and change the scale back.
/// The old fonts live until the controls have the new ones.
LRESULT Win32Window::ServeDpiChanged(UINT dpi, const RECT& suggested) {
    const Metrics before = std::exchange(metrics_, Metrics(dpi));
    SetWindowPos(Handle(), nullptr, suggested.left, suggested.top, suggested.right - suggested.left,
                 suggested.bottom - suggested.top, SWP_NOZORDER | SWP_NOACTIVATE);
    FitContents();
    RedrawWindow(Handle(), nullptr, nullptr, RDW_INVALIDATE | RDW_ERASE | RDW_ALLCHILDREN);
    return 0;
}

LRESULT Win32Window::ServeTimer(UINT_PTR id) {
    const auto& timers = model_.Timers();
    if (id >= 1 && id <= timers.size()) gate_.Pass([&] { timers[id - 1]->OnTick(); });
    return 0;
}

LRESULT Win32Window::ServeClose() {
    gate_.Pass([this] { model_.UserCloses(); });
    return 0;
}

/// While the answer is no, Windows shows the reason and lets the user decide whether the session ends anyway.
LRESULT Win32Window::ServeQueryEndSession() {
    const std::string reason = model_.ReasonAgainstSessionEnd();
    if (reason.empty()) return TRUE;
    ShutdownBlockReasonCreate(Handle(), WideFromUtf8(reason).c_str());
    return FALSE;
}

/// Also called when the session does not end after all.
LRESULT Win32Window::ServeEndSession(bool ends) {
    ShutdownBlockReasonDestroy(Handle());
    if (ends) gate_.Pass([this] { model_.SessionEnds(); });
    return 0;
}

/// The window itself keeps no focus. It gives it to the control that should have it.
LRESULT Win32Window::ServeSetFocus() {
    const Control* const focused = model_.Focused();
    if (focused != nullptr) views_.at(focused)->Refresh(Aspect::Focus);
    return 0;
}

LRESULT Win32Window::ServeDropFiles(HDROP drop) {
    std::vector<std::string> paths(DragQueryFileW(drop, 0xFFFFFFFF, nullptr, 0));
    for (UINT i = 0; i < paths.size(); ++i) {
        std::wstring path(DragQueryFileW(drop, i, nullptr, 0), L'\0');
        DragQueryFileW(drop, i, path.data(), static_cast<UINT>(path.size()) + 1);
        paths[i] = Utf8FromWide(path);
    }
    DragFinish(drop);
    const bool blocked = IsWindowEnabled(Handle()) == FALSE;  // by a box, a dialog or a modal window
    if (!blocked) gate_.Pass([&] { model_.UserDropsFiles(paths); });
    return 0;
}

/// Reported by a message of its own: the window may then close itself, which must not happen while Windows is
/// still activating another one. The program's own message boxes and file dialogs do not count.
void Win32Window::NoteActivation(WORD state) {
    if (state == WA_INACTIVE && !prompts_.IsOpen() && !deactivated_)
        deactivated_ = PostMessageW(Handle(), deactivatedMessage, 0, 0) != FALSE;
}

LRESULT Win32Window::ReportDeactivation() {
    deactivated_ = false;
    if (GetActiveWindow() != Handle()) gate_.Pass([this] { model_.UserDeactivates(); });
    return 0;
}

bool Win32Window::ServesSetCursor(HWND control) {
    const Win32ControlView* const view = control == Handle() ? nullptr : Win32ControlView::Of(control);
    if (view == nullptr || view->Model().Kind() != ControlKind::LinkLabel) return false;
    static const HCURSOR hand = MakeHand();
    SetCursor(hand);
    return true;
}

/// A read-only text box gets the colors of one that can be changed.
bool Win32Window::ServesControlColor(HDC drawing, HWND control) {
    const Win32ControlView* const view = Win32ControlView::Of(control);
    if (view == nullptr || view->Model().Kind() != ControlKind::TextLines || !view->Model().Enabled())
        return false;
    SetTextColor(drawing, GetSysColor(COLOR_WINDOWTEXT));
    SetBkColor(drawing, GetSysColor(COLOR_WINDOW));
    return true;
}

LRESULT CALLBACK Win32Window::ControlProcedure(HWND handle, UINT message, WPARAM wParam, LPARAM lParam,
                                               UINT_PTR id, DWORD_PTR window) {
    if (message == WM_NCDESTROY) RemoveWindowSubclass(handle, ControlProcedure, id);
    auto& self = *reinterpret_cast<Win32Window*>(window);
    Win32ControlView* const view = Win32ControlView::Of(handle);
    if (!self.gate_.IsOpen() || view == nullptr) return DefSubclassProc(handle, message, wParam, lParam);
    return self.ServeControl(*view, message, wParam, lParam);
}

LRESULT Win32Window::ServeControl(Win32ControlView& view, UINT message, WPARAM wParam, LPARAM lParam) {
    if (ServesControlMessage(view, message, wParam, lParam) || ServesKey(message, wParam, lParam)) return 0;
    const LRESULT result = DefSubclassProc(view.Handle(), message, wParam, lParam);
    if (message == WM_SETFOCUS) gate_.Pass([&] { view.Model().UserFocuses(); });
    if (message == WM_SETFOCUS || message == WM_KILLFOCUS) view.NoteFocus(message == WM_SETFOCUS);
    return result;
}

bool Win32Window::ServesControlMessage(Win32ControlView& view, UINT message, WPARAM wParam, LPARAM lParam) {
    if (message == WM_KEYDOWN) return view.ServeKey(wParam, Repeats(lParam));
    if (message != Win32ControlView::nextRoundMessage) return false;
    view.NextRound();
    return true;
}

bool Win32Window::ServesKey(UINT message, WPARAM wParam, LPARAM lParam) {
    constexpr WPARAM controlA = 1;
    switch (message) {
        case WM_KEYDOWN:
            return ServesKeyDown(wParam);
        case WM_CHAR:  // of keys that WM_KEYDOWN handles or that do nothing; Windows would beep
            return wParam == VK_TAB || wParam == VK_ESCAPE || wParam == VK_RETURN || wParam == controlA;
        case WM_SYSKEYDOWN:
            ShowKeyboardCues();
            return false;
        case WM_SYSCHAR:
            return ServesAccessKey(wParam, lParam);
        default:
            return false;
    }
}

bool Win32Window::ServesKeyDown(WPARAM key) {
    if (key == VK_ESCAPE) return ServesEscape();
    if (key != VK_TAB || GetKeyState(VK_CONTROL) < 0) return false;
    ShowKeyboardCues();
    MoveFocus(GetKeyState(VK_SHIFT) < 0);
    return true;
}

bool Win32Window::ServesEscape() {
    bool served = false;
    gate_.Pass([&] { served = model_.UserPressesEscape(); });
    return served;
}

void Win32Window::MoveFocus(bool backwards) {
    gate_.Pass([&] {
        const Control* const control = model_.UserPressesTab(backwards);
        if (control == nullptr) return;
        Win32ControlView& view = *views_.at(control);
        view.Refresh(Aspect::Focus);
        view.NoteTab();
    });
}

/// Takes the key before Windows does, unless no control or menu has it.
bool Win32Window::ServesAccessKey(WPARAM character, LPARAM details) {
    const char key = PlainKey(character);
    if (key == '\0' || !model_.HasAccessKey(key)) return false;
    if (!Repeats(details)) PressAccessKey(key);
    return true;
}

void Win32Window::PressAccessKey(char key) {
    gate_.Pass([&] {
        if (model_.UserPressesAccessKey(key) != nullptr)
            PostMessageW(Handle(), WM_SYSCOMMAND, SC_KEYMENU, key);
    });
}

/// Shows the marks of access keys and the rectangle around the focus, which Windows hides until the keyboard
/// is used.
void Win32Window::ShowKeyboardCues() {
    SendMessageW(Handle(), WM_CHANGEUISTATE, MAKEWPARAM(UIS_CLEAR, UISF_HIDEACCEL | UISF_HIDEFOCUS), 0);
}

}  // namespace quillmere
