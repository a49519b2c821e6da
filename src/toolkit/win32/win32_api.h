#pragma once

// The headers of Windows in the order they need, without their macro Yield, which would rename
// Backend::Yield.

// clang-format off
#include <windows.h>
#include <commctrl.h>
// clang-format on

#undef Yield
