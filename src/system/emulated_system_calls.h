#pragma once

#include "system/system_calls.h"

#include <functional>
#include <map>
#include <utility>

namespace quillmere {

/// The system calls for backends without the Windows API. They report a version that supports translucent
/// windows, keep the layered style of each window, and have the backend open addresses.
class EmulatedSystemCalls : public SystemCalls {
 public:
    /// What only the backend can do.
    struct Actions {
        /// Shows the window with an opacity from 0, invisible, to 1, opaque.
        std::function<void(WindowHandle window, double opacity)> showOpacity = [](WindowHandle, double) {};
        /// Opens a web address or mailto address; returns whether there was a program for it.
        std::function<bool(const std::string& address)> openAddress;
    };
    explicit EmulatedSystemCalls(Actions actions) : actions_(std::move(actions)) {}

    std::uint32_t majorVersion = 10;  ///< what GetVersionExA reports; 0 makes the call fail

    /// Adds an opaque window and returns its handle.
    WindowHandle AddWindow();
    void RemoveWindow(WindowHandle window) { styles_.erase(window); }
    /// From 0, invisible, to 1, opaque.
    double Opacity(WindowHandle window) const { return styles_.at(window).Opacity(); }

    bool GetVersionExA(VersionRecord& record) override;
    std::int32_t GetWindowLongA(WindowHandle window, int index) override;
    std::int32_t SetWindowLongA(WindowHandle window, int index, std::int32_t value) override;
    bool SetLayeredWindowAttributes(WindowHandle window, std::uint32_t colorKey, std::uint8_t alpha,
                                    std::uint32_t flags) override;
    std::intptr_t ShellExecuteA(WindowHandle owner, const std::string& verb, const std::string& file,
                                const std::string& parameters, const std::string& directory,
                                int showCommand) override;

 private:
    struct LayeredStyle {
        std::int32_t exStyle = 0;
        std::uint8_t alpha = 255;

        double Opacity() const { return (exStyle & WS_EX_LAYERED_STYLE) != 0 ? alpha / 255.0 : 1.0; }
    };
    /// Null for a window that does not exist.
    LayeredStyle* Find(WindowHandle window);

    Actions actions_;
    std::map<WindowHandle, LayeredStyle> styles_;
    WindowHandle lastHandle_ = 0;
};

}  // namespace quillmere
