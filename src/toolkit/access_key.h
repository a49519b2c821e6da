#pragma once

#include <string>
#include <string_view>

namespace quillmere {

// In a caption the character "&" marks the letter after it as the access key.

/// The marked letter or digit in lower case; 0 when the caption marks none.
char AccessKeyOf(std::string_view caption);
/// The caption as it is read: without its marks.
std::string WithoutAccessKey(std::string_view caption);

}  // namespace quillmere
