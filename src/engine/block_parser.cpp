#include "engine/block_parser.h"

#include "base/byte_mask.h"
#include "base/failure.h"
#include "base/number_text.h"

#include <algorithm>
#include <bit>
#include <cstdint>

namespace quillmere {

namespace {

constexpr std::string_view positionPrefix = "P=";

/// Finds the places of one character in a text, 64 bytes at a time.
class CharacterFinder {
 public:
    CharacterFinder(std::string_view text, char wanted)
        : text_(text), wanted_(wanted), mask_(ByteMask(text.data(), wanted)) {}

    /// The next place; the text's size when there is none.
    std::size_t Next() {
        while (mask_ == 0 && text_.size() - masked_ > maskedBytes) {
            masked_ += maskedBytes;
            mask_ = ByteMask(text_.data() + masked_, wanted_);
        }
        const std::size_t place = masked_ + static_cast<std::size_t>(std::countr_zero(mask_));
        mask_ &= mask_ - 1;
        return std::min(place, text_.size());
    }

 private:
    std::string_view text_;
    char wanted_;
    std::size_t masked_ = 0;  ///< where the masked bytes begin
    std::uint64_t mask_;      ///< those of them that are wanted and were not returned yet
};

/// The code is the header's second piece, cut at every single space, without its last character; empty in a
/// header of one piece. Returns false when that piece has no last character.
bool TakeCode(WorldItem& item, std::string_view header) {
    CharacterFinder spaces(header, ' ');
    const std::size_t begin = spaces.Next() + 1;
    const std::size_t end = spaces.Next();
    item.code = {};
    if (begin > header.size()) return true;
    if (begin == end) return false;
    item.code = {begin, end - 1 - begin};
    return true;
}

/// The number that the `count` digits at `text` stand for, or -1 when they are not 1 to 8 digits. All of them
/// at once, since their number is different from block to block, and a loop would end unforeseen.
std::int32_t ShortNumber(const char* text, std::size_t count) {
    if (count == 0 || count > 8) return -1;
    // Each byte becomes a digit's value; those after the digits leave, zeros come in before them.
    std::uint64_t digits = (EightBytes(text) ^ everyByte * '0') << (8 * (8 - count));
    const bool allDigits = (((digits + everyByte * (0x7F - 9)) | digits) & everyByte * 0x80) == 0;
    digits = (digits * (10 << 8 | 1) >> 8) & 0x00FF00FF00FF00FF;     // pairs
    digits = (digits * (100 << 16 | 1) >> 16) & 0x0000FFFF0000FFFF;  // fours
    return allDigits ? static_cast<std::int32_t>(digits * (std::uint64_t{10'000} << 32 | 1) >> 32) : -1;
}

std::int32_t Coordinate(std::string_view text) {
    const bool negative = text.starts_with('-');
    const std::int32_t number = ShortNumber(text.data() + negative, text.size() - negative);
    if (number < 0) return NumberFromText(text);
    return negative ? -number : number;
}

/// The position is X, Y and, if there are so many pieces, Z and the facet. Takes it from the pieces between
/// commas of a line that begins with "P=". Returns false, and changes nothing, when the line has no comma.
bool TakePosition(WorldItem& item, std::string_view line) {
    line.remove_prefix(positionPrefix.size());
    CharacterFinder commas(line, ',');
    std::size_t comma = commas.Next();
    if (comma == line.size()) return false;
    const char* piece = line.data();
    for (std::int32_t* const field : {&item.X, &item.Y, &item.Z, &item.Facet}) {
        const char* const end = line.data() + comma;
        *field = Coordinate({piece, end});
        if (comma == line.size()) break;
        piece = end + 1;
        comma = commas.Next();
    }
    return true;
}

/// Where lines end in the 64 bytes at `part`, those from `end` on left out.
template <LineEnd lineEnd>
std::uint64_t LineEndsIn(const char* part, const char* end) {
    const std::uint64_t ends = ByteMask(part, LineEndText(lineEnd).front());
    const std::ptrdiff_t size = end - part;
    return size < std::ptrdiff_t{maskedBytes} ? ends & ((std::uint64_t{1} << size) - 1) : ends;
}

/// Whether the lines of a whole block may be taken as they stand in the text.
bool TakeWholeLine(WorldItem& item, std::string_view line, std::size_t slot) {
    if (slot == 0) return line.back() != ' ' && TakeCode(item, line);
    return !(line[0] == positionPrefix[0] && line[1] == positionPrefix[1]) || TakePosition(item, line);
}

/// ParseWholeBlock for one kind of line end, since a mask for a character that the compiler does not know
/// costs as much as the search.
template <LineEnd lineEnd>
std::size_t ParseWhole(WorldItem& item, std::string_view text) {
    const char* const end = text.data() + text.size();
    const char* line = text.data();
    std::size_t lines = 0;
    for (const char* part = line; part < end; part += maskedBytes) {
        for (std::uint64_t ends = LineEndsIn<lineEnd>(part, end); ends != 0; ends &= ends - 1) {
            const char* const lineStop = part + std::countr_zero(ends);
            const char* const next = lineStop + LineEndText(lineEnd).size();
            if (next > end || next[-1] != '\n') return 0;
            if (lineStop == line) {
                const auto size = static_cast<std::size_t>(next - text.data());
                item.Lines.Borrow(text.substr(0, size), lines);
                return lines > BlockLines::mostBodyLines + 1 ? 0 : size;
            }
            if (!TakeWholeLine(item, {line, lineStop}, lines)) return 0;
            ++lines;
            line = next;
        }
    }
    return 0;
}

}  // namespace

void BeginBlock(WorldItem& item, std::string_view header) {
    item.Clear();
    if (!TakeCode(item, header)) throw Failure(FailureKind::InvalidProcedureCall);
    item.Lines.Append(header);
}

BodyLine AddBodyLine(WorldItem& item, std::string_view line) {
    if (line.empty()) return BodyLine::Ends;
    if (line.starts_with(positionPrefix) && !TakePosition(item, line)) return BodyLine::Abandons;
    item.Lines.Append(line);
    return BodyLine::Added;
}

std::size_t ParseWholeBlock(WorldItem& item, std::string_view text, LineEnd lineEnd) {
    // Not the sentinel: after many of them in a row each would look for an empty line far away.
    if (!IsHeader(text) || text.starts_with(endSentinel)) return 0;
    item.Clear();
    try {
        return lineEnd == LineEnd::CrLf ? ParseWhole<LineEnd::CrLf>(item, text)
                                        : ParseWhole<LineEnd::Lf>(item, text);
    } catch (const Failure&) {
        return 0;  // line by line it fails again, at a line that can be named
    }
}

}  // namespace quillmere
