#pragma once

#include "toolkit/win32/win32_api.h"

#include <memory>
#include <type_traits>

namespace quillmere {

// Owners of things that have to be given back to Windows. Their destructors do so.

struct DeleteGdiObject {
    void operator()(HGDIOBJ object) const { DeleteObject(object); }
};
using UniqueFont = std::unique_ptr<std::remove_pointer_t<HFONT>, DeleteGdiObject>;
using UniqueBitmap = std::unique_ptr<std::remove_pointer_t<HBITMAP>, DeleteGdiObject>;

struct DestroyNativeWindow {
    void operator()(HWND window) const { DestroyWindow(window); }
};
using UniqueWindow = std::unique_ptr<std::remove_pointer_t<HWND>, DestroyNativeWindow>;

}  // namespace quillmere
