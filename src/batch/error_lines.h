#pragma once

#include "base/failure.h"

#include <string>

namespace quillmere {

/// The text of an error line, without the program's name: what the failure is about, its description and its
/// number, then what is wrong and what to do.
std::string ErrorLine(const Failure& failure);

}  // namespace quillmere
