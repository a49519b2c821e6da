#include "engine/item_reader.h"

#include "base/byte_mask.h"
#include "base/number_text.h"

#include <bit>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <utility>

namespace quillmere {

namespace {

constexpr std::string_view endSentinel = "[EOF]";
constexpr std::string_view positionPrefix = "P=";

/// The second piece of a header line, cut at every single space, without its last character; empty when the
/// line has one piece only. Nothing when that piece has no last character.
std::optional<std::string_view> CodeOfHeader(std::string_view header) {
    const std::size_t firstSpace = header.find(' ');
    if (firstSpace == std::string_view::npos) return std::string_view{};
    const std::string_view piece =
        header.substr(firstSpace + 1, header.find(' ', firstSpace + 1) - firstSpace - 1);
    if (piece.empty()) return std::nullopt;
    return piece.substr(0, piece.size() - 1);
}

/// Takes the code from a header line of `size` bytes when it is short, has two or more pieces and is written
/// as it is read, as all but a few are. Returns whether it did.
bool TakeUsualHeader(const char* line, std::size_t size, WorldItem& item) {
    if (size >= maskedBytes) return false;
    const std::uint64_t end = std::uint64_t{1} << size;
    const std::uint64_t spaces = ByteMask(line, ' ') & (end - 1);
    if (spaces == 0 || (spaces & end >> 1) != 0) return false;
    const auto begin = static_cast<std::size_t>(std::countr_zero(spaces)) + 1;
    const auto stop = static_cast<std::size_t>(std::countr_zero((spaces & (spaces - 1)) | end));
    if (begin == stop) return false;
    item.Code = {line + begin, stop - 1 - begin};
    return true;
}

/// Takes the position from a line that begins with "P=" when it is made of two to four short numbers, as all
/// but a few are. Returns whether it did; the position in `item` means nothing otherwise.
bool TakeUsualPosition(std::string_view line, WorldItem& item) {
    const char* const text = line.data() + positionPrefix.size();
    const std::size_t size = line.size() - positionPrefix.size();
    if (size >= maskedBytes) return false;
    const std::uint64_t end = std::uint64_t{1} << size;
    std::uint64_t stops = (ByteMask(text, ',') & (end - 1)) | end;
    if (stops == end) return false;
    std::size_t begin = 0;
    const auto take = [&](std::int32_t& field) {
        const bool negative = text[begin] == '-';
        if (negative) ++begin;
        const auto stop = static_cast<std::size_t>(std::countr_zero(stops));
        const std::int32_t number = ShortNumber(text + begin, stop - begin);
        field = negative ? -number : number;
        begin = stop + 1;
        stops &= stops - 1;
        return number >= 0;
    };
    if (!take(item.X) || !take(item.Y)) return false;
    if (stops != 0 && !take(item.Z)) return false;
    if (stops != 0 && !take(item.Facet)) return false;
    return stops == 0;
}

/// Takes the position from a line that begins with "P=". Returns false, and changes nothing, when the line
/// has no comma.
bool TakePosition(std::string_view line, WorldItem& item) {
    if (line.find(',') == std::string_view::npos) return false;
    std::string_view rest = line.substr(positionPrefix.size());
    for (std::int32_t* const field : {&item.X, &item.Y, &item.Z, &item.Facet}) {
        const std::size_t comma = rest.find(',');
        *field = NumberFromText(rest.substr(0, comma));
        if (comma == std::string_view::npos) break;
        rest.remove_prefix(comma + 1);
    }
    return true;
}

}  // namespace

ItemReader::ItemReader(modGlobal& shared, Log& log, std::function<void()> yield)
    : shared_(shared), log_(log), yield_(std::move(yield)) {}

void ItemReader::GetNextItem(std::int32_t inputNumber, std::int32_t outputNumber, WorldItem& item) {
    const auto failure = TrapFailure([&] { ScanForBlock(item, inputNumber, outputNumber); });
    if (failure) {
        Fail(*failure, inputNumber);
        item.Clear();
    }
}

void ItemReader::ScanForBlock(WorldItem& item, std::int32_t inputNumber, std::int32_t outputNumber) {
    item.Clear();
    while (!shared_.openFiles.AtEnd(inputNumber)) {
        yield_();
        if (TakeUsualBlock(item, shared_.openFiles.Reader(inputNumber))) return;
        const std::string_view line = TrimSpaces(shared_.objReader.GetNextLine(inputNumber));
        if (line == endSentinel) {
            shared_.objWriter.WriteNextLine(line, outputNumber);
            item.Clear();
            return;
        }
        if (!line.starts_with('[')) continue;
        item.Clear();
        item.Lines.Append(line);
        if (!CodeOfHeader(line)) throw Failure(FailureKind::InvalidProcedureCall);
        const bool complete = ReadBody(item, inputNumber);
        item.Code = CodeOfHeader(item.Lines[0]).value_or(std::string_view());
        if (complete) return;
    }
}

/// Reads the block that begins right here, when it does and is a block like nearly all: as it is to be
/// written, with numbers that are nothing but digits. Returns false and reads nothing otherwise: the way line
/// by line then takes or refuses it.
bool ItemReader::TakeUsualBlock(WorldItem& item, LineReader& input) {
    // Behind many lines with the sentinel the end of a paragraph would be looked for again and again.
    if (!input.Follows("[") || input.Follows(endSentinel)) return false;
    const Paragraph block = input.NextParagraph({positionPrefix[0], positionPrefix[1]});
    if (block.text.empty() || block.lines > BlockLines::mostBodyLines + 1) return false;
    if (item.Lines.Count() != 0) item.Clear();  // what stays of an abandoned block
    if (!TakeUsualHeader(block.text.data(), block.firstLineSize, item)) return false;
    if (!block.lineWithPrefix.empty() && !TakeUsualPosition(block.lineWithPrefix, item)) return false;
    item.Lines.Borrow(block.text, block.lines);
    input.Take(block);
    return true;
}

/// Returns whether the block is complete. It is not when the input ends first, nor when a position line has
/// no comma: such a block is abandoned, and what was read of it stays only if no further header line follows.
bool ItemReader::ReadBody(WorldItem& item, std::int32_t inputNumber) {
    LineReader& input = shared_.openFiles.Reader(inputNumber);
    while (!input.AtEnd()) {
        const std::string_view line = input.NextLine();
        if (line.empty()) return true;
        if (line.starts_with(positionPrefix) && !TakePosition(line, item)) return false;
        item.Lines.Append(line);
    }
    return false;
}

void ItemReader::Fail(const Failure& failure, std::int32_t inputNumber) {
    std::string where;
    if (shared_.openFiles.IsOpen(inputNumber)) where = shared_.openFiles.Reader(inputNumber).Position();
    shared_.blnIdle = true;
    shared_.openFiles.CloseAll();
    ReportFailure(log_, failure.At(where), "Error in item loader.  Pffft....");
}

}  // namespace quillmere
