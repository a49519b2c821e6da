#pragma once

#include <cstdint>
#include <string>

namespace quillmere {

// The calls of the Windows API that the program's windows make. The backend on that API makes them for real
// (windows_system_calls.h); the others emulate them (emulated_system_calls.h).

using WindowHandle = std::uintptr_t;

inline constexpr int GWL_EXSTYLE_INDEX = -20;
inline constexpr std::int32_t WS_EX_LAYERED_STYLE = 0x80000;
inline constexpr std::uint32_t LWA_ALPHA_FLAG = 2;

struct VersionRecord {
    std::uint32_t dwOSVersionInfoSize = 0;  ///< in bytes; the call accepts only 148
    std::uint32_t dwMajorVersion = 0;
    std::uint32_t dwMinorVersion = 0;
    std::uint32_t dwBuildNumber = 0;
    std::uint32_t dwPlatformId = 0;
    char szCSDVersion[128] = {};
};

class SystemCalls {
 public:
    virtual ~SystemCalls() = default;
    /// Returns whether `record` was filled. Its size has to be set before.
    virtual bool GetVersionExA(VersionRecord& record) = 0;
    virtual std::int32_t GetWindowLongA(WindowHandle window, int index) = 0;
    virtual std::int32_t SetWindowLongA(WindowHandle window, int index, std::int32_t value) = 0;
    virtual bool SetLayeredWindowAttributes(WindowHandle window, std::uint32_t colorKey, std::uint8_t alpha,
                                            std::uint32_t flags) = 0;
    /// Hands `file`, a web address or a mailto address, to the user's program for it. Returns more than 32 on
    /// success.
    virtual std::intptr_t ShellExecuteA(WindowHandle owner, const std::string& verb, const std::string& file,
                                        const std::string& parameters, const std::string& directory,
                                        int showCommand) = 0;
};

}  // namespace quillmere
