#include "engine/item_reader.h"

#include "textfile/number_text.h"

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
