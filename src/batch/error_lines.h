#pragma once

#include "base/failure.h"

#include <string>
#include <string_view>

namespace quillmere {

// The texts of error lines, without the program's name.

/// What the failure is about, its description and its number, then what is wrong and what to do.
std::string ErrorLine(const Failure& failure);

/// `text` in a form that is safe to print: a save can hold any bytes, even ones that control a terminal.
/// `text` is in the code page, the result in UTF-8.
std::string Printable(std::string_view text);

}  // namespace quillmere
