#include "base/utf8.h"

#include <algorithm>
#include <cstddef>

namespace quillmere {

namespace {

constexpr unsigned bitsPerByte = 6;  // that each byte after the first adds to its character

/// The characters with one number of bytes; the first byte tells the number.
struct CharacterForm {
    unsigned mask;  ///< the bits of the first byte that tell it
    unsigned mark;  ///< what these bits are
    std::size_t size;
    char32_t lowest;  ///< smaller characters have a shorter form
};

constexpr CharacterForm forms[] = {
    {0x80, 0x00, 1, 0}, {0xE0, 0xC0, 2, 0x80}, {0xF0, 0xE0, 3, 0x800}, {0xF8, 0xF0, 4, 0x10000}};

bool IsCharacter(char32_t value) {
    return value <= 0x10FFFF && (value < 0xD800 || value > 0xDFFF);
}

/// The character at the front of `utf8`, whose first byte has that form; nothing when it is not valid.
std::optional<char32_t> Decode(const CharacterForm& form, std::string_view utf8) {
    if (utf8.size() < form.size) return std::nullopt;
    char32_t value = static_cast<unsigned char>(utf8[0]) & ~form.mask;
    for (const char next : utf8.substr(1, form.size - 1)) {
        const auto byte = static_cast<unsigned char>(next);
        if ((byte & 0xC0U) != 0x80) return std::nullopt;
        value = (value << bitsPerByte) | (byte & 0x3FU);
    }
    if (value < form.lowest || !IsCharacter(value)) return std::nullopt;
    return value;
}

}  // namespace

std::optional<char32_t> TakeCharacter(std::string_view& utf8) {
    for (const CharacterForm& form : forms) {
        if ((static_cast<unsigned char>(utf8[0]) & form.mask) != form.mark) continue;
        const auto character = Decode(form, utf8);
        utf8.remove_prefix(character ? form.size : 1);
        return character;
    }
    utf8.remove_prefix(1);
    return std::nullopt;
}

bool IsValidUtf8(std::string_view text) {
    while (!text.empty()) {
        if (!TakeCharacter(text)) return false;
    }
    return true;
}

bool SameLetters(std::string_view one, std::string_view other) {
    const auto small = [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; };
    return std::ranges::equal(one, other, {}, small, small);
}

}  // namespace quillmere
