#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace quillmere {

/// `text` without the space characters at its two ends; tabs stay.
std::string_view TrimSpaces(std::string_view text);

/// The 32-bit number that `text` stands for: an optional sign, digits, an optional fraction (a point and
/// digits), spaces around. A fraction is rounded to the nearest whole number, a half to the even one.
/// Fails with TypeMismatch when the text is no number, with Overflow when the number does not fit.
std::int32_t NumberFromText(std::string_view text);

/// Decimal text that begins with a minus sign or, when the number is not negative, with a space.
std::string DecimalWithSignPosition(std::int64_t number);

}  // namespace quillmere
