#pragma once

#include <optional>
#include <string_view>

namespace quillmere {

/// Removes the first character of `utf8`, which must not be empty, and returns it. Where no valid character
/// begins, removes one byte and returns nothing: overlong forms, surrogates and numbers above U+10FFFF are
/// not valid.
std::optional<char32_t> TakeCharacter(std::string_view& utf8);
bool IsValidUtf8(std::string_view text);
/// Whether the texts differ at most in the case of the letters A to Z.
bool SameLetters(std::string_view one, std::string_view other);

/// What some programs write in front of a text in UTF-8.
inline constexpr std::string_view byteOrderMark = "\xEF\xBB\xBF";

/// Whether a terminal may take the character for something to do.
constexpr bool IsControl(char32_t character) {
    return character < U' ' || (character >= 0x7F && character <= 0x9F);
}

}  // namespace quillmere
