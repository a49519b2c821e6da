#pragma once

#include "toolkit/win32/win32_api.h"

#include <string>

namespace quillmere {

/// Shows a control's hint: as a tool tip, and to screen readers as the control's description.
class Win32Hint {
 public:
    /// `control` is a child window.
    explicit Win32Hint(HWND control) : control_(control) {}

    /// An empty text takes the hint away.
    void Show(const std::wstring& text);

 private:
    HWND control_;
    HWND tip_ = nullptr;  ///< owned by the control's parent; null until there is a text
};

}  // namespace quillmere
