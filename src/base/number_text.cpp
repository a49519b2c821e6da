#include "base/number_text.h"

#include "base/failure.h"

#include <limits>

namespace quillmere {

namespace {

bool IsDigit(char c) {
    return c >= '0' && c <= '9';
}

/// Takes the digits at the front of `text` off it and returns them.
std::string_view TakeDigits(std::string_view& text) {
    std::size_t count = 0;
    while (count < text.size() && IsDigit(text[count]))
        ++count;
    const std::string_view digits(text.data(), count);
    text = {text.data() + count, text.size() - count};
    return digits;
}

/// The digits' value, or a value beyond 32 bits when it does not fit.
std::int64_t ValueOfDigits(std::string_view digits) {
    constexpr std::int64_t beyond = std::int64_t{1} << 40;
    std::int64_t value = 0;
    for (const char digit : digits) {
        value = value * 10 + (digit - '0');
        if (value > beyond) return beyond;
    }
    return value;
}

/// Whether a whole number followed by the fraction digits is rounded away from zero.
bool RoundsUp(std::int64_t whole, std::string_view fraction) {
    if (fraction.empty() || fraction[0] < '5') return false;
    const bool exactlyHalf =
        fraction[0] == '5' && fraction.find_first_not_of('0', 1) == std::string_view::npos;
    return !exactlyHalf || whole % 2 != 0;
}

}  // namespace

std::string_view TrimSpaces(std::string_view text) {
    std::size_t begin = 0;
    std::size_t end = text.size();
    while (begin < end && text[begin] == ' ')
        ++begin;
    while (end > begin && text[end - 1] == ' ')
        --end;
    return text.substr(begin, end - begin);
}

std::int32_t NumberFromText(std::string_view text) {
    std::string_view rest = TrimSpaces(text);
    const bool negative = !rest.empty() && rest[0] == '-';
    if (!rest.empty() && (rest[0] == '-' || rest[0] == '+')) rest.remove_prefix(1);
    const std::string_view digits = TakeDigits(rest);
    std::string_view fraction;
    if (!rest.empty() && rest[0] == '.') {
        rest.remove_prefix(1);
        fraction = TakeDigits(rest);
        if (fraction.empty()) throw Failure(FailureKind::TypeMismatch);
    }
    if (digits.empty() || !rest.empty()) throw Failure(FailureKind::TypeMismatch);

    std::int64_t value = ValueOfDigits(digits);
    if (RoundsUp(value, fraction)) ++value;
    if (negative) value = -value;
    if (value < std::numeric_limits<std::int32_t>::min() ||
        value > std::numeric_limits<std::int32_t>::max()) {
        throw Failure(FailureKind::Overflow);
    }
    return static_cast<std::int32_t>(value);
}

std::string DecimalWithSignPosition(std::int64_t number) {
    const std::string digits = std::to_string(number);
    return number < 0 ? digits : std::string(1, ' ').append(digits);
}

}  // namespace quillmere
