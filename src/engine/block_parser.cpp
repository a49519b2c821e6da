#include "engine/block_parser.h"

#include "base/byte_mask.h"
#include "base/failure.h"
#include "base/number_text.h"

#include <bit>
#include <cstdint>

namespace quillmere {

namespace {

constexpr std::string_view positionPrefix = "P=";

/// Finds one place of a character in a text after the other, 64 bytes at a time.
class CharacterFinder {
 public:
    CharacterFinder(std::string_view text, char wanted) : text_(text), wanted_(wanted) { Look(0); }

    /// The next place; the text's size when there are no more. Not to be called again after that.
    std::size_t Next() {
        while (places_ == 0)
            [[unlikely]] Look(begin_ + maskedBytes);
        const std::size_t place = begin_ + static_cast<std::size_t>(std::countr_zero(places_));
        places_ &= places_ - 1;
        return place;
    }

 private:
    void Look(std::size_t begin) {
        begin_ = begin;
        places_ = ByteMask(text_.data() + begin, wanted_);
        const std::size_t left = text_.size() - begin;
        if (left >= maskedBytes) return;
        const std::uint64_t end = std::uint64_t{1} << left;
        places_ = (places_ & (end - 1)) | end;
    }

    std::string_view text_;
    char wanted_;
    std::size_t begin_ = 0;     ///< of the 64 bytes looked at
    std::uint64_t places_ = 0;  ///< those of them still to be returned, the text's end included
};

/// The code is the header's second piece, cut at every single space, without its last character; empty in a
/// header of one piece. Returns false when that piece has no last character.
bool TakeCode(WorldItem& item, std::string_view header) {
    item.code = {};
    CharacterFinder spaces(header, ' ');
    const std::size_t space = spaces.Next();
    if (space == header.size()) return true;
    const std::size_t begin = space + 1;
    const std::size_t end = spaces.Next();
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
    if (number < 0) [[unlikely]]
        return NumberFromText(text);
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
    item.Placed = true;
    return true;
}

/// Where lines end in the 64 bytes at `part`, those from `end` on left out.
template <LineEnd lineEnd>
std::uint64_t LineEndsIn(const char* part, const char* end) {
    const std::uint64_t ends = ByteMask(part, LineEndText(lineEnd).front());
    const std::ptrdiff_t size = end - part;
    return size < std::ptrdiff_t{maskedBytes} ? ends & ((std::uint64_t{1} << size) - 1) : ends;
}

/// A block as it lies in a text: complete, with proper line ends.
struct WholeBlock {
    std::size_t size = 0;  ///< bytes, the empty line included; 0 when there is no such block
    std::size_t lines = 0;
    std::string_view header;
    std::string_view position;  ///< the line; empty when there is none
};

/// The block at the front of `text`; none when it has two position lines. Made once for each kind of line
/// end, since a mask for a character that the compiler does not know costs as much as the search.
template <LineEnd lineEnd>
WholeBlock FindWholeBlock(std::string_view text) {
    WholeBlock block;
    const char* const end = text.data() + text.size();
    const char* line = text.data();
    for (const char* part = line; part < end; part += maskedBytes) {
        for (std::uint64_t ends = LineEndsIn<lineEnd>(part, end); ends != 0; ends &= ends - 1) {
            const char* const lineStop = part + std::countr_zero(ends);
            const char* const next = lineStop + LineEndText(lineEnd).size();
            if (next > end || next[-1] != '\n') return {};
            if (lineStop == line) {
                block.size = static_cast<std::size_t>(next - text.data());
                return block;
            }
            if (line[0] == positionPrefix[0] && line[1] == positionPrefix[1]) {
                if (!block.position.empty()) return {};
                block.position = {line, lineStop};
            }
            if (block.lines++ == 0) {
                block.header = {line, lineStop};
                // Not looked at further: after many sentinels in a row each would search far for an empty
                // line.
                if (block.header == endSentinel) return {};
            }
            line = next;
        }
    }
    return {};
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
    if (!IsHeader(text)) return 0;
    const WholeBlock block =
        lineEnd == LineEnd::CrLf ? FindWholeBlock<LineEnd::CrLf>(text) : FindWholeBlock<LineEnd::Lf>(text);
    if (block.size == 0 || block.lines > BlockLines::mostBodyLines + 1) return 0;
    if (block.header.back() == ' ') return 0;
    item.Clear();
    try {
        if (!TakeCode(item, block.header)) return 0;
        if (!block.position.empty() && !TakePosition(item, block.position)) return 0;
    } catch (const Failure&) {
        return 0;  // line by line it fails again, at a line that can be named
    }
    item.Lines.Borrow({text.data(), block.size}, block.lines);
    return block.size;
}

}  // namespace quillmere
