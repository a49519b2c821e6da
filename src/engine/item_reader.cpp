#include "engine/item_reader.h"

#include "base/number_text.h"
#include "engine/block_parser.h"

#include <string>
#include <utility>

namespace quillmere {

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
        if (ReadWholeBlock(item, shared_.openFiles.Reader(inputNumber))) return;
        const std::string_view line = TrimSpaces(shared_.objReader.GetNextLine(inputNumber));
        if (line == endSentinel) {
            shared_.objWriter.WriteNextLine(line, outputNumber);
            return item.Clear();
        }
        if (IsHeader(line) && ReadBlock(item, line, inputNumber)) return;
    }
}

/// Reads the block that begins right here if it can be read whole.
bool ItemReader::ReadWholeBlock(WorldItem& item, LineReader& input) {
    const std::size_t size = ParseWholeBlock(item, input.Unread(), input.LineEnding());
    if (size == 0) return false;
    input.Skip(size, item.Lines.Count() + 1);
    return true;
}

/// Reads a block line by line. Returns whether it is complete. It is not when the input ends first or when it
/// is abandoned; what was read of it then stays in `item` until another header line follows.
bool ItemReader::ReadBlock(WorldItem& item, std::string_view header, std::int32_t inputNumber) {
    BeginBlock(item, header);
    BodyLine last = BodyLine::Added;
    while (last == BodyLine::Added && !shared_.openFiles.AtEnd(inputNumber))
        last = AddBodyLine(item, shared_.objReader.GetNextLine(inputNumber));
    return last == BodyLine::Ends;
}

void ItemReader::Fail(const Failure& failure, std::int32_t inputNumber) {
    std::string where;
    if (shared_.openFiles.IsOpen(inputNumber)) where = shared_.openFiles.Reader(inputNumber).Position();
    shared_.blnIdle = true;
    shared_.openFiles.CloseAll();
    ReportFailure(log_, failure.At(where), "Error in item loader.  Pffft....");
}

}  // namespace quillmere
