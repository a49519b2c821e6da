#include "system/windows_system_calls.h"

#include <windows.h>
#include <shellapi.h>

#include <algorithm>

namespace quillmere {

namespace {

HWND Native(WindowHandle handle) {
    return reinterpret_cast<HWND>(handle);
}

}  // namespace

bool WindowsSystemCalls::GetVersionExA(VersionRecord& record) {
    OSVERSIONINFOA answer{};
    answer.dwOSVersionInfoSize = record.dwOSVersionInfoSize;
#ifdef _MSC_VER
#pragma warning(suppress : 4996)  // deprecated, but its only successor is for drivers
#endif
    if (::GetVersionExA(&answer) == FALSE) return false;
    record.dwMajorVersion = answer.dwMajorVersion;
    record.dwMinorVersion = answer.dwMinorVersion;
    record.dwBuildNumber = answer.dwBuildNumber;
    record.dwPlatformId = answer.dwPlatformId;
    std::ranges::copy(answer.szCSDVersion, record.szCSDVersion);
    return true;
}

std::int32_t WindowsSystemCalls::GetWindowLongA(WindowHandle window, int index) {
    return ::GetWindowLongA(Native(window), index);
}

std::int32_t WindowsSystemCalls::SetWindowLongA(WindowHandle window, int index, std::int32_t value) {
    const std::int32_t before = ::SetWindowLongA(Native(window), index, value);
    const bool layeredNoMore = index == GWL_EXSTYLE_INDEX && (before & ~value & WS_EX_LAYERED_STYLE) != 0;
    // Windows does not repaint a window by itself when it stops being layered.
    if (layeredNoMore)
        RedrawWindow(Native(window), nullptr, nullptr,
                     RDW_ERASE | RDW_INVALIDATE | RDW_FRAME | RDW_ALLCHILDREN);
    return before;
}

bool WindowsSystemCalls::SetLayeredWindowAttributes(WindowHandle window, std::uint32_t colorKey,
                                                    std::uint8_t alpha, std::uint32_t flags) {
    return ::SetLayeredWindowAttributes(Native(window), colorKey, alpha, flags) != FALSE;
}

std::intptr_t WindowsSystemCalls::ShellExecuteA(WindowHandle owner, const std::string& verb,
                                                const std::string& file, const std::string& parameters,
                                                const std::string& directory, int showCommand) {
    return reinterpret_cast<std::intptr_t>(::ShellExecuteA(
        Native(owner), verb.c_str(), file.c_str(), parameters.c_str(), directory.c_str(), showCommand));
}

}  // namespace quillmere
