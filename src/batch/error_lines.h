#pragma once

#include "base/failure.h"

#include <string>
#include <string_view>

namespace quillmere {

/// The text of an error line, without the program's name: what the failure is about, its description and its
/// number, then what is wrong and what to do.
std::string ErrorLine(const Failure& failure);

/// How messages name what is read: `place` is a path, to which the number of a line may be added. For "-" it
/// is standard input.
std::string ShownPlace(std::string_view place);

}  // namespace quillmere
