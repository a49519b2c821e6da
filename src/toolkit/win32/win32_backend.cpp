#include "toolkit/win32/win32_backend.h"

#include "toolkit/win32/win32_window.h"

#include <algorithm>
#include <utility>

namespace quillmere {

namespace {

constexpr UINT sweepMessage = WM_APP;

HWND Native(WindowHandle handle) {
    return reinterpret_cast<HWND>(handle);
}

void Deliver(const MSG& message) {
    TranslateMessage(&message);
    DispatchMessageW(&message);
}

}  // namespace

LRESULT CALLBACK Win32Backend::SweepProcedure(HWND handle, UINT message, WPARAM wParam, LPARAM lParam) {
    if (message != sweepMessage) return DefWindowProcW(handle, message, wParam, lParam);
    auto& backend = *reinterpret_cast<Win32Backend*>(wParam);
    std::erase_if(backend.gone_,
                  [&](const auto& window) { return window.get() == reinterpret_cast<Win32Window*>(lParam); });
    return 0;
}

UniqueWindow Win32Backend::MakeSweeper() {
    static const ATOM registered = [] {
        WNDCLASSEXW description{};
        description.cbSize = sizeof description;
        description.lpfnWndProc = SweepProcedure;
        description.hInstance = GetModuleHandleW(nullptr);
        description.lpszClassName = L"QuillmereSweeper";
        return RegisterClassExW(&description);
    }();
    return UniqueWindow(CreateWindowExW(0, MAKEINTATOM(registered), L"", 0, 0, 0, 0, 0, HWND_MESSAGE, nullptr,
                                        GetModuleHandleW(nullptr), nullptr));
}

Win32Backend::Win32Backend() : sweeper_(MakeSweeper()) {
    const INITCOMMONCONTROLSEX standardControls{sizeof standardControls,
                                                ICC_STANDARD_CLASSES | ICC_BAR_CLASSES};
    InitCommonControlsEx(&standardControls);
}

Win32Backend::~Win32Backend() = default;

int Win32Backend::Run() {
    MSG message{};
    while (!windows_.empty() && GetMessageW(&message, nullptr, 0, 0) > 0)
        Deliver(message);
    return EXIT_SUCCESS;
}

void Win32Backend::RunModal(Window& window) {
    const WindowHandle handle = window.Handle();
    MSG message{};
    while (Find(handle) != nullptr) {
        if (GetMessageW(&message, nullptr, 0, 0) <= 0) return PostQuitMessage(EXIT_SUCCESS);
        Deliver(message);
    }
}

void Win32Backend::ServeMessages() {
    MSG message{};
    while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE) != FALSE) {
        if (message.message == WM_QUIT) return PostQuitMessage(EXIT_SUCCESS);
        Deliver(message);
    }
}

void Win32Backend::Realize(Window& window) {
    auto view = std::make_unique<Win32Window>(window, prompts_);
    window.SetView(view.get(), reinterpret_cast<WindowHandle>(view->Handle()));
    windows_.push_back({std::move(view), {}});
}

void Win32Backend::MakeVisible(Window& window) {
    Shown* const shown = Find(window.Handle());
    if (shown == nullptr) return;  // it was closed while it was loading
    const HWND below = TopWindow();
    if (IsModal(window)) BlockOthers(*shown);
    shown->view->Show(IsModal(window) ? below : nullptr);
}

void Win32Backend::BlockOthers(Shown& shown) {
    for (const Shown& other : windows_) {
        const HWND handle = other.view->Handle();
        if (&other == &shown || IsWindowEnabled(handle) == FALSE) continue;
        shown.blocked.push_back(handle);
        EnableWindow(handle, FALSE);
    }
}

void Win32Backend::UnblockOthers(const Shown& shown) {
    for (const HWND handle : shown.blocked) {
        if (Find(reinterpret_cast<WindowHandle>(handle)) != nullptr) EnableWindow(handle, TRUE);
    }
}

/// Unblocks the other windows before Windows looks for the one to activate next.
void Win32Backend::Discard(Window& window) {
    Shown* const found = Find(window.Handle());
    if (found == nullptr) return;
    Shown shown = std::move(*found);
    windows_.erase(windows_.begin() + (found - windows_.data()));
    window.SetView(nullptr, 0);
    UnblockOthers(shown);
    const HWND below = TopWindow();
    if (below != nullptr && GetActiveWindow() == shown.view->Handle()) SetActiveWindow(below);
    Win32Window* const view = shown.view.get();
    gone_.push_back(std::move(shown.view));
    view->LetGo([this, view] {
        PostMessageW(sweeper_.get(), sweepMessage, reinterpret_cast<WPARAM>(this),
                     reinterpret_cast<LPARAM>(view));
    });
}

Win32Backend::Shown* Win32Backend::Find(WindowHandle handle) {
    const auto found = std::ranges::find_if(
        windows_, [&](const Shown& shown) { return shown.view->Handle() == Native(handle); });
    return found == windows_.end() ? nullptr : &*found;
}

HWND Win32Backend::TopWindow() const {
    for (auto shown = windows_.rbegin(); shown != windows_.rend(); ++shown) {
        if (IsWindowVisible(shown->view->Handle()) != FALSE) return shown->view->Handle();
    }
    return nullptr;
}

void Win32Backend::AskForAttention(Window& window) {
    constexpr UINT times = 3;
    FLASHWINFO flashing{sizeof flashing, Native(window.Handle()), FLASHW_ALL, times, 0};
    FlashWindowEx(&flashing);
    MessageBeep(MB_ICONWARNING);
}

void Win32Backend::Yield() {
    if (throttle_.Due()) ServeMessages();
}

}  // namespace quillmere
