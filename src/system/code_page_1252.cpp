#include "base/utf8.h"
#include "system/code_page.h"

#include <algorithm>
#include <array>
#include <iterator>

namespace quillmere {

namespace {

/// The characters of the bytes 80 to 9F; every other byte is the character of the same value. So are 81, 8D,
/// 8F, 90 and 9D, which the page leaves undefined.
constexpr std::array<char16_t, 32> table = {
    0x20AC, 0x0081, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021,  // 80
    0x02C6, 0x2030, 0x0160, 0x2039, 0x0152, 0x008D, 0x017D, 0x008F,  // 88
    0x0090, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022, 0x2013, 0x2014,  // 90
    0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x009D, 0x017E, 0x0178,  // 98
};
constexpr unsigned tableBegin = 0x80;
constexpr unsigned tableEnd = tableBegin + table.size();

/// Appends a character below U+10000.
void AppendUtf8(std::string& text, unsigned character) {
    const auto append = [&](unsigned byte) { text += static_cast<char>(byte); };
    if (character < 0x80) {
        append(character);
    } else if (character < 0x800) {
        append(0xC0U | (character >> 6U));
        append(0x80U | (character & 0x3FU));
    } else {
        append(0xE0U | (character >> 12U));
        append(0x80U | ((character >> 6U) & 0x3FU));
        append(0x80U | (character & 0x3FU));
    }
}

std::optional<char> ByteOf(char32_t character) {
    if (character < tableBegin || (character >= tableEnd && character <= 0xFF))
        return static_cast<char>(character);
    const auto* const entry = std::ranges::find(table, character);
    if (entry == table.end()) return std::nullopt;
    return static_cast<char>(tableBegin + static_cast<unsigned>(std::distance(table.begin(), entry)));
}

/// Takes a character off the front of `utf8`. Returns its byte; none when it is not valid or not in the page.
std::optional<char> TakeByte(std::string_view& utf8) {
    const auto character = TakeCharacter(utf8);
    return character ? ByteOf(*character) : std::nullopt;
}

}  // namespace

std::string Utf8FromCodePage(std::string_view bytes) {
    std::string utf8;
    utf8.reserve(bytes.size());
    for (const char next : bytes) {
        const auto byte = static_cast<unsigned char>(next);
        AppendUtf8(utf8, byte >= tableBegin && byte < tableEnd ? table[byte - tableBegin] : byte);
    }
    return utf8;
}

std::string CodePageFromUtf8(std::string_view utf8) {
    std::string bytes;
    bytes.reserve(utf8.size());
    while (!utf8.empty())
        bytes += TakeByte(utf8).value_or('?');
    return bytes;
}

}  // namespace quillmere
