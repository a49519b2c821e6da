#pragma once

#include "system/system_calls.h"

namespace quillmere {

/// Whether the system supports translucent windows, as Windows 2000 and later do. Asks the system at each
/// call; false when it does not answer.
bool SupportsTranslucency(SystemCalls& system);

/// Sets or clears the layered style of the window and keeps its other extended styles. To be called only
/// where translucency is supported.
void SetTranslucent(SystemCalls& system, WindowHandle window, bool on);

/// Makes the window translucent or opaque. Does nothing where translucency is not supported.
void ApplyTranslucency(SystemCalls& system, WindowHandle window, bool blnTranslucent);

}  // namespace quillmere
