#include "ui/mod_translucent.h"

#include <cstdint>

namespace quillmere {

namespace {

constexpr std::uint32_t windows2000 = 5;  // its major version
constexpr std::uint8_t translucentAlpha = 200;
constexpr std::uint32_t noColorKey = 0;

}  // namespace

bool SupportsTranslucency(SystemCalls& system) {
    static_assert(sizeof(VersionRecord) == 148);
    VersionRecord record;
    record.dwOSVersionInfoSize = sizeof record;
    system.GetVersionExA(record);
    return record.dwMajorVersion >= windows2000;
}

void SetTranslucent(SystemCalls& system, WindowHandle window, bool on) {
    const std::int32_t style = system.GetWindowLongA(window, GWL_EXSTYLE_INDEX);
    system.SetWindowLongA(window, GWL_EXSTYLE_INDEX,
                          on ? style | WS_EX_LAYERED_STYLE : style & ~WS_EX_LAYERED_STYLE);
}

void ApplyTranslucency(SystemCalls& system, WindowHandle window, bool blnTranslucent) {
    if (!SupportsTranslucency(system)) return;
    SetTranslucent(system, window, blnTranslucent);
    system.SetLayeredWindowAttributes(window, noColorKey, translucentAlpha, LWA_ALPHA_FLAG);
}

}  // namespace quillmere
