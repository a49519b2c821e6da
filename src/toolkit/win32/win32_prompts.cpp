#include "toolkit/win32/win32_prompts.h"

#include "system/windows_wide_text.h"
#include "toolkit/win32/win32_handles.h"

#include <commdlg.h>

#include <iterator>
#include <vector>

namespace quillmere {

namespace {

UINT IconFor(MessageIcon icon) {
    switch (icon) {
        case MessageIcon::Information:
            return MB_ICONINFORMATION;
        case MessageIcon::Question:
            return MB_ICONQUESTION;
        case MessageIcon::Critical:
            break;
    }
    return MB_ICONERROR;
}

MessageResult ResultFor(int button, MessageButtons buttons) {
    if (buttons == MessageButtons::Ok) return MessageResult::Ok;
    if (button == IDYES) return MessageResult::Yes;
    return button == IDNO ? MessageResult::No : MessageResult::Cancel;
}

/// The width, in pixels, of a window that shows its whole title, with room for its icon and three buttons.
LONG WidthForTitle(HWND box) {
    constexpr int iconAndButtons = 4;
    const UINT dpi = GetDpiForWindow(box);
    NONCLIENTMETRICSW frame{};
    frame.cbSize = sizeof frame;
    SystemParametersInfoForDpi(SPI_GETNONCLIENTMETRICS, sizeof frame, &frame, 0, dpi);
    const UniqueFont font(CreateFontIndirectW(&frame.lfCaptionFont));
    wchar_t title[256] = {};
    const int length = GetWindowTextW(box, title, static_cast<int>(std::size(title)));
    const HDC screen = GetDC(nullptr);
    const HGDIOBJ before = SelectObject(screen, font.get());
    SIZE size{};
    GetTextExtentPoint32W(screen, title, length, &size);
    SelectObject(screen, before);
    ReleaseDC(nullptr, screen);
    return size.cx + iconAndButtons * GetSystemMetricsForDpi(SM_CXSIZE, dpi);
}

/// Widens the box to both sides.
void MakeRoomForTitle(HWND box) {
    RECT place{};
    GetWindowRect(box, &place);
    const LONG extra = (WidthForTitle(box) - (place.right - place.left) + 1) / 2;
    if (extra <= 0) return;
    SetWindowPos(box, nullptr, place.left - extra, place.top, place.right - place.left + 2 * extra,
                 place.bottom - place.top, SWP_NOZORDER | SWP_NOACTIVATE);
    for (HWND child = GetWindow(box, GW_CHILD); child != nullptr; child = GetWindow(child, GW_HWNDNEXT)) {
        RECT inBox{};
        GetWindowRect(child, &inBox);
        MapWindowPoints(nullptr, box, reinterpret_cast<POINT*>(&inBox), 2);
        SetWindowPos(child, nullptr, inBox.left + extra, inBox.top, 0, 0,
                     SWP_NOSIZE | SWP_NOZORDER | SWP_NOACTIVATE);
    }
}

/// A hook into the messages of this thread, for as long as it lives.
class ThreadHook {
 public:
    ThreadHook(int kind, HOOKPROC procedure)
        : hook_(SetWindowsHookExW(kind, procedure, nullptr, GetCurrentThreadId())) {}
    ~ThreadHook() { UnhookWindowsHookEx(hook_); }
    ThreadHook(const ThreadHook&) = delete;
    ThreadHook& operator=(const ThreadHook&) = delete;

 private:
    HHOOK hook_;
};

/// Makes each message box wide enough for its title, which not every version of Windows does itself.
LRESULT CALLBACK MakeRoomForTitles(int code, WPARAM wParam, LPARAM lParam) {
    constexpr ULONG_PTR dialogClass = 0x8002;  // #32770, that of message boxes
    const auto window = reinterpret_cast<HWND>(wParam);
    const bool isBox = code == HCBT_ACTIVATE && GetClassLongPtrW(window, GCW_ATOM) == dialogClass;
    if (isBox) MakeRoomForTitle(window);
    return CallNextHookEx(nullptr, code, wParam, lParam);
}

/// Keeps message boxes from answering to the repeats of a key that is held, which may be the one that opened
/// the box.
LRESULT CALLBACK DropHeldKeys(int code, WPARAM wParam, LPARAM lParam) {
    if (code != MSGF_DIALOGBOX) return CallNextHookEx(nullptr, code, wParam, lParam);
    const auto& message = *reinterpret_cast<const MSG*>(lParam);
    return message.message == WM_KEYDOWN && (HIWORD(message.lParam) & KF_REPEAT) != 0 ? TRUE : FALSE;
}

/// `flags` holds the buttons and the icon. Returns the number of the button pressed.
int ShowBox(HWND owner, const std::string& title, const std::string& text, UINT flags) {
    if (owner == nullptr) flags |= MB_TASKMODAL;
    const ThreadHook room(WH_CBT, MakeRoomForTitles);
    const ThreadHook keys(WH_MSGFILTER, DropHeldKeys);
    return MessageBoxW(owner, WideFromUtf8(text).c_str(), WideFromUtf8(title).c_str(), flags);
}

/// Descriptions and patterns in turn, each ended by a NUL; another NUL ends the list.
std::wstring FilterOf(const FileDialog& dialog) {
    std::wstring filter;
    for (const FilePattern& pair : PatternsOf(dialog)) {
        filter += WideFromUtf8(pair.description) + L'\0';
        filter += WideFromUtf8(pair.pattern) + L'\0';
    }
    return filter;
}

std::wstring FolderOf(const std::wstring& path) {
    return path.substr(0, path.find_last_of(L"\\/") + 1);
}

/// Restores the process's current folder, which the dialog to open a file changes despite OFN_NOCHANGEDIR.
class CurrentFolderKept {
 public:
    CurrentFolderKept() : folder_(GetCurrentDirectoryW(0, nullptr), L'\0') {
        folder_.resize(GetCurrentDirectoryW(static_cast<DWORD>(folder_.size()), folder_.data()));
    }
    ~CurrentFolderKept() { SetCurrentDirectoryW(folder_.c_str()); }
    CurrentFolderKept(const CurrentFolderKept&) = delete;
    CurrentFolderKept& operator=(const CurrentFolderKept&) = delete;

 private:
    std::wstring folder_;
};

/// Shows the dialog once, with `path` as the file name. Returns what the user picked; empty when the user
/// cancelled.
std::wstring Ask(HWND owner, const FileDialog& dialog, const std::wstring& path, const std::wstring& folder) {
    constexpr std::size_t longestPath = 32768;  // with the NUL
    std::vector<wchar_t> picked(longestPath);
    path.copy(picked.data(), longestPath - 1);
    const std::wstring filter = FilterOf(dialog);
    const std::wstring title = WideFromUtf8(dialog.title);
    OPENFILENAMEW asked{};
    asked.lStructSize = sizeof asked;
    asked.hwndOwner = owner;
    asked.lpstrFilter = filter.c_str();
    asked.lpstrFile = picked.data();
    asked.nMaxFile = static_cast<DWORD>(longestPath);
    asked.lpstrInitialDir = folder.empty() ? nullptr : folder.c_str();
    asked.lpstrTitle = title.c_str();
    asked.Flags = OFN_EXPLORER | OFN_HIDEREADONLY | OFN_NOCHANGEDIR | OFN_NOTESTFILECREATE | OFN_ENABLESIZING;
    const CurrentFolderKept folderKept;
    const bool saves = dialog.purpose == FileDialog::Purpose::Save;
    const BOOL accepted = saves ? GetSaveFileNameW(&asked) : GetOpenFileNameW(&asked);
    return accepted != FALSE ? std::wstring(picked.data()) : std::wstring();
}

bool Exists(const std::string& path) {
    return GetFileAttributesW(WideFromUtf8(path).c_str()) != INVALID_FILE_ATTRIBUTES;
}

bool MayReplace(HWND owner, const std::string& path, const std::string& title) {
    const std::string name = path.substr(path.find_last_of("\\/") + 1);
    return ShowBox(owner, title, name + " already exists.\r\nDo you want to replace it?",
                   MB_YESNO | MB_ICONWARNING | MB_DEFBUTTON2) == IDYES;
}

}  // namespace

class Win32Prompts::Opened {
 public:
    explicit Opened(Win32Prompts& prompts) : open_(prompts.open_) { ++open_; }
    ~Opened() { --open_; }
    Opened(const Opened&) = delete;
    Opened& operator=(const Opened&) = delete;

 private:
    int& open_;
};

MessageResult Win32Prompts::ShowMessage(HWND owner, const Message& message) {
    const Opened opened(*this);
    const bool asks = message.buttons == MessageButtons::YesNoCancel;
    const UINT flags = IconFor(message.icon) | (asks ? MB_YESNOCANCEL : MB_OK);
    return ResultFor(ShowBox(owner, message.title, message.text, flags), message.buttons);
}

/// The default extension and the question about an existing file are not left to Windows, which adds the
/// extension in other cases than the program does.
std::string Win32Prompts::ShowFileDialog(HWND owner, const FileDialog& dialog) {
    const Opened opened(*this);
    std::wstring picked;
    while (!(picked = Ask(owner, dialog, picked, lastFolder_)).empty()) {
        lastFolder_ = FolderOf(picked);
        std::string path = WithDefaultExtension(dialog, Utf8FromWide(picked));
        if (!dialog.overwritePrompt || !Exists(path) || MayReplace(owner, path, dialog.title)) return path;
    }
    return {};
}

}  // namespace quillmere
