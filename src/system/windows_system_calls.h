#pragma once

#include "system/system_calls.h"

namespace quillmere {

/// The system's own calls. A window's handle is its HWND.
class WindowsSystemCalls : public SystemCalls {
 public:
    bool GetVersionExA(VersionRecord& record) override;
    std::int32_t GetWindowLongA(WindowHandle window, int index) override;
    std::int32_t SetWindowLongA(WindowHandle window, int index, std::int32_t value) override;
    bool SetLayeredWindowAttributes(WindowHandle window, std::uint32_t colorKey, std::uint8_t alpha,
                                    std::uint32_t flags) override;
    std::intptr_t ShellExecuteA(WindowHandle owner, const std::string& verb, const std::string& file,
                                const std::string& parameters, const std::string& directory,
                                int showCommand) override;
};

}  // namespace quillmere
