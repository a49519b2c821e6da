#include "toolkit/win32/win32_hint.h"

#include "toolkit/win32/win32_com.h"

// clang-format off
#include <initguid.h>  // makes oleacc.h define its identifiers
#include <oleacc.h>
// clang-format on

namespace quillmere {

namespace {

TTTOOLINFOW ToolFor(HWND control) {
    TTTOOLINFOW tool{};
    tool.cbSize = sizeof tool;
    tool.uFlags = TTF_IDISHWND | TTF_SUBCLASS;
    tool.hwnd = GetParent(control);
    tool.uId = reinterpret_cast<UINT_PTR>(control);
    return tool;
}

HWND MakeTip(HWND control) {
    constexpr LPARAM shownFor = 30'000;  // milliseconds
    const HWND window = GetParent(control);
    const HWND tip =
        CreateWindowExW(WS_EX_TOPMOST, TOOLTIPS_CLASSW, nullptr, WS_POPUP | TTS_ALWAYSTIP | TTS_NOPREFIX, 0,
                        0, 0, 0, window, nullptr, GetModuleHandleW(nullptr), nullptr);
    SendMessageW(tip, TTM_SETMAXTIPWIDTH, 0, SHRT_MAX);  // with any width, a line break starts a new line
    SendMessageW(tip, TTM_SETDELAYTIME, TTDT_AUTOPOP, shownFor);
    TTTOOLINFOW tool = ToolFor(control);
    SendMessageW(tip, TTM_ADDTOOLW, 0, reinterpret_cast<LPARAM>(&tool));
    return tip;
}

/// Tells screen readers. Wine ignores it.
void Describe(HWND control, const std::wstring& text) {
    IAccPropServices* made = nullptr;
    if (FAILED(CoCreateInstance(CLSID_AccPropServices, nullptr, CLSCTX_INPROC_SERVER, IID_IAccPropServices,
                                reinterpret_cast<void**>(&made))))
        return;
    const ComPtr<IAccPropServices> services(made);
    services->SetHwndPropStr(control, static_cast<DWORD>(OBJID_CLIENT), CHILDID_SELF, PROPID_ACC_DESCRIPTION,
                             text.c_str());
}

}  // namespace

void Win32Hint::Show(const std::wstring& text) {
    if (tip_ == nullptr && text.empty()) return;
    if (tip_ == nullptr) tip_ = MakeTip(control_);
    TTTOOLINFOW tool = ToolFor(control_);
    std::wstring shown = text;
    tool.lpszText = shown.data();
    SendMessageW(tip_, TTM_UPDATETIPTEXTW, 0, reinterpret_cast<LPARAM>(&tool));
    Describe(control_, text);
}

}  // namespace quillmere
