#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace quillmere {

// Windows takes and gives text as UTF-16; the program holds it as UTF-8. For Windows only.

/// Nothing when `utf8` is not valid UTF-8.
std::optional<std::wstring> WideFromValidUtf8(std::string_view utf8);
/// What is not valid UTF-8 becomes the replacement character U+FFFD.
std::wstring WideFromUtf8(std::string_view utf8);
/// A surrogate without its other half becomes the replacement character U+FFFD.
std::string Utf8FromWide(std::wstring_view wide);

}  // namespace quillmere
