#pragma once

// The system's headers in the order they need, without the macro that has the name of Backend::Yield.

// clang-format off
#include <windows.h>
#include <commctrl.h>
// clang-format on

#undef Yield
