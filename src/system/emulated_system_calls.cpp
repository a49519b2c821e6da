#include "system/emulated_system_calls.h"

#include <utility>

namespace quillmere {

WindowHandle EmulatedSystemCalls::AddWindow() {
    styles_[++lastHandle_] = {};
    return lastHandle_;
}

EmulatedSystemCalls::LayeredStyle* EmulatedSystemCalls::Find(WindowHandle window) {
    const auto style = styles_.find(window);
    return style == styles_.end() ? nullptr : &style->second;
}

bool EmulatedSystemCalls::GetVersionExA(VersionRecord& record) {
    if (record.dwOSVersionInfoSize != sizeof record || majorVersion == 0) return false;
    record.dwMajorVersion = majorVersion;
    return true;
}

std::int32_t EmulatedSystemCalls::GetWindowLongA(WindowHandle window, int index) {
    const LayeredStyle* const style = Find(window);
    return style == nullptr || index != GWL_EXSTYLE_INDEX ? 0 : style->exStyle;
}

std::int32_t EmulatedSystemCalls::SetWindowLongA(WindowHandle window, int index, std::int32_t value) {
    LayeredStyle* const style = Find(window);
    if (style == nullptr || index != GWL_EXSTYLE_INDEX) return 0;
    const std::int32_t before = std::exchange(style->exStyle, value);
    actions_.showOpacity(window, style->Opacity());
    return before;
}

bool EmulatedSystemCalls::SetLayeredWindowAttributes(WindowHandle window, std::uint32_t /*colorKey*/,
                                                     std::uint8_t alpha, std::uint32_t flags) {
    LayeredStyle* const style = Find(window);
    if (style == nullptr) return false;
    if ((flags & LWA_ALPHA_FLAG) != 0) style->alpha = alpha;
    actions_.showOpacity(window, style->Opacity());
    return true;
}

std::intptr_t EmulatedSystemCalls::ShellExecuteA(WindowHandle /*owner*/, const std::string& /*verb*/,
                                                 const std::string& file, const std::string& /*parameters*/,
                                                 const std::string& /*directory*/, int /*showCommand*/) {
    constexpr std::intptr_t success = 33;
    constexpr std::intptr_t noProgramForIt = 31;
    return actions_.openAddress(file) ? success : noProgramForIt;
}

}  // namespace quillmere
