#include "engine/item_reader.h"

#include "base/number_text.h"
#include "engine/block_parser.h"

#include <string>

namespace quillmere {

namespace {

/// What is wrong with a block that cannot be read; empty when the file or the memory is the cause.
std::string AdviceFor(FailureKind kind) {
    switch (kind) {
        case FailureKind::InvalidProcedureCall:
            return "The header has two spaces before the code; delete one of them.";
        case FailureKind::SubscriptOutOfRange:
            return "The block has more than " + std::to_string(BlockLines::mostBodyLines) +
                   " lines after its header; an empty line may be missing that ends it.";
        case FailureKind::TypeMismatch:
            return "A part of the position is not a number; correct the line, which reads "
                   "P=x,y,height,facet.";
        case FailureKind::Overflow:
            return "A number of the position has more than 32 bits; correct the line, which reads "
                   "P=x,y,height,facet.";
        default:
            return {};
    }
}

}  // namespace

ItemReader::ItemReader(modGlobal& shared, Log& log, ScanObserver& observer)
    : shared_(shared), log_(log), observer_(observer) {}

void ItemReader::GetNextItem(std::int32_t inputNumber, std::int32_t outputNumber, WorldItem& item) {
    const auto failure = TrapFailure([&] { ScanForBlock(item, inputNumber, outputNumber); });
    if (failure) {
        Fail(*failure, inputNumber);
        item.Clear();
    }
}

void ItemReader::ScanForBlock(WorldItem& item, std::int32_t inputNumber, std::int32_t outputNumber) {
    item.Clear();
    held_.clear();
    while (!shared_.openFiles.AtEnd(inputNumber)) {
        observer_.Yield();
        LineReader& input = shared_.openFiles.Reader(inputNumber);
        // Not while `item` is an abandoned block, whose lines are still needed.
        if (held_.empty() && ReadWholeBlock(item, input)) return;
        const std::string_view asRead = shared_.objReader.GetNextLine(inputNumber);
        const std::string_view line = TrimSpaces(asRead);
        if (line == endSentinel) {
            SkipAbandoned(item, input.LineEnding());
            shared_.objWriter.WriteNextLine(line, outputNumber);
            observer_.SentinelCopied();
            return item.Clear();
        }
        if (!IsHeader(line)) {
            SkipOrHold(asRead, input.LinesRead());
            continue;
        }
        SkipAbandoned(item, input.LineEnding());
        if (ReadBlock(item, line, input)) return;
    }
}

void ItemReader::SkipRest() {
    for (const HeldLine& line : held_)
        Skip(line.text, line.number);
    held_.clear();
}

bool ItemReader::SkipAbandoned(const WorldItem& item, LineEnd lineEnd) {
    if (held_.empty()) return false;
    std::string_view text = item.Lines.Text();
    const std::string_view end = LineEndText(lineEnd);
    for (std::size_t left = item.Lines.Count(); left > 0; --left) {
        const std::size_t size = text.find(end);
        Skip(text.substr(0, size), held_.front().number - left);
        text.remove_prefix(size + end.size());
    }
    SkipRest();
    return true;
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
bool ItemReader::ReadBlock(WorldItem& item, std::string_view header, LineReader& input) {
    BeginBlock(item, header);
    while (!input.AtEnd()) {
        const std::string_view line = input.NextLine();
        const BodyLine kind = AddBodyLine(item, line);
        if (kind == BodyLine::Ends) return true;
        if (kind == BodyLine::Abandons) {
            held_.push_back({std::string(line), input.LinesRead()});
            break;
        }
    }
    return false;
}

void ItemReader::SkipOrHold(std::string_view line, std::uint64_t number) {
    if (held_.empty() || held_.size() > BlockLines::mostBodyLines) {
        Skip(line, number);
    } else {
        held_.push_back({std::string(line), number});
    }
}

void ItemReader::Skip(std::string_view line, std::uint64_t number) {
    if (!TrimSpaces(line).empty()) observer_.LineSkipped(line, number);
}

void ItemReader::Fail(const Failure& failure, std::int32_t inputNumber) {
    std::string where;
    if (shared_.openFiles.IsOpen(inputNumber)) where = shared_.openFiles.Reader(inputNumber).Position();
    shared_.blnIdle = true;
    shared_.openFiles.CloseAll();
    Failure reported = failure.At(where);
    if (reported.Advice().empty()) reported = reported.Advised(AdviceFor(failure.Kind()));
    ReportFailure(log_, reported, "Error in item loader.  Pffft....");
}

}  // namespace quillmere
