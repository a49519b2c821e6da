#pragma once

#include <string>
#include <string_view>

namespace quillmere {

// In a caption, "&" marks the letter or digit after it as the access key.

/// The marked character, in lower case; 0 when the caption marks none.
char AccessKeyOf(std::string_view caption);
/// The caption without its "&".
std::string WithoutAccessKey(std::string_view caption);

}  // namespace quillmere
