#pragma once

#include "toolkit/win32/win32_handles.h"

#include <string_view>

namespace quillmere {

/// The JPEG image scaled to `size` pixels; null when it cannot be decoded.
UniqueBitmap BitmapFromJpeg(std::string_view jpeg, SIZE size);

}  // namespace quillmere
