#pragma once

#include "base/byte_mask.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace quillmere {

/// `text` without the space characters at its two ends; tabs stay.
std::string_view TrimSpaces(std::string_view text);

/// The 32-bit number that `text` stands for: an optional sign, digits, an optional fraction (a point and
/// digits), blanks around. A fraction is rounded to the nearest whole number, a half to the even one.
/// Fails with TypeMismatch when the text is no number, with Overflow when the number does not fit.
std::int32_t NumberFromText(std::string_view text);

/// The number that the `count` digits at `text` stand for, or -1 when they are not 1 to 8 digits. All of them
/// at once, since a pass reads several numbers for each block: 8 bytes at `text` have to be readable.
inline std::int32_t ShortNumber(const char* text, std::size_t count) {
    if (count == 0 || count > 8) return -1;
    // Each byte becomes a digit's value; those behind the digits leave, zeros come in before them.
    std::uint64_t digits = (EightBytes(text) ^ everyByte * '0') << (8 * (8 - count));
    const bool allDigits = (((digits + everyByte * (0x7F - 9)) | digits) & everyByte * 0x80) == 0;
    digits = (digits * (10 << 8 | 1) >> 8) & 0x00FF00FF00FF00FF;     // pairs
    digits = (digits * (100 << 16 | 1) >> 16) & 0x0000FFFF0000FFFF;  // fours
    return allDigits ? static_cast<std::int32_t>(digits * (std::uint64_t{10'000} << 32 | 1) >> 32) : -1;
}

/// Decimal text with a position for the sign: a blank stands there when the number is not negative.
std::string DecimalWithSignPosition(std::int32_t number);

}  // namespace quillmere
