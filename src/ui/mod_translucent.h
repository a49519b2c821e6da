#pragma once

#include "system/system_calls.h"

namespace quillmere {

/// Whether the system knows translucent windows: Windows 2000 or later. Asked afresh at each call; a query
/// that fails means no.
bool SupportsTranslucency(SystemCalls& system);

/// Sets or clears the layered style of the window and keeps its other extended styles. To be called only
/// where translucency is supported, like the system calls behind it.
void SetTranslucent(SystemCalls& system, WindowHandle window, bool on);

/// Gives the window the setting: partly see-through, or opaque. Does nothing where translucency is not
/// supported.
void ApplyTranslucency(SystemCalls& system, WindowHandle window, bool blnTranslucent);

}  // namespace quillmere
