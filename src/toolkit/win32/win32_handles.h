#pragma once

#include "toolkit/win32/win32_api.h"

#include <memory>
#include <type_traits>

namespace quillmere {

// What has to be given back to the system, given back by its owner's destructor.

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
