#pragma once

#include "base/failure_report.h"
#include "engine/mod_global.h"
#include "engine/world_item.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace quillmere {

/// What an item reader tells of the lines between blocks. A failure thrown by any of these is one of the
/// reader's.
class ScanObserver {
 public:
    virtual ~ScanObserver() = default;
    /// Called once per line scanned between blocks, never inside a block.
    virtual void Yield() {}
    /// The line with this number, from 1, is neither part of a block nor copied to the output. Lines that are
    /// empty or hold spaces only are not reported.
    virtual void LineSkipped(std::string_view /*line*/, std::uint64_t /*number*/) {}
    /// The line "[EOF]" was copied to the output.
    virtual void SentinelCopied() {}
};

/// Reads a world script block by block; block_parser.h says what a block is. Other lines between blocks are
/// skipped, and the line "[EOF]" is copied to the output. So every line is in a block, skipped, or copied.
class ItemReader {
 public:
    /// All of them must outlive the reader.
    ItemReader(modGlobal& shared, Log& log, ScanObserver& observer);

    /// Scans from the current position of the file open as `inputNumber` and makes `item`, whatever it held,
    /// the next block, good until the next operation on that file. It becomes the empty record when the scan
    /// meets "[EOF]" or finds no further header. When the input ends inside a block, or after one that was
    /// abandoned, `item` holds the lines read of it. The lines of any other abandoned block are skipped.
    ///
    /// A failure is reported to the log, sets blnIdle and closes every open file; `item` is then the empty
    /// record, and the caller's next operation on its files fails.
    void GetNextItem(std::int32_t inputNumber, std::int32_t outputNumber, WorldItem& item);
    /// To be called at the end of the input, once the last item is dealt with. Skips what follows the lines
    /// of that item when it is an abandoned block: its position line and all after that.
    void SkipRest();
    /// For a caller to whom an abandoned block is none, even at the end of the input: if `item`, the last one
    /// read, is one, skips its lines and all after them, and returns true.
    bool SkipAbandoned(const WorldItem& item, LineEnd lineEnd);

 private:
    void ScanForBlock(WorldItem& item, std::int32_t inputNumber, std::int32_t outputNumber);
    static bool ReadWholeBlock(WorldItem& item, LineReader& input);
    bool ReadBlock(WorldItem& item, std::string_view header, LineReader& input);
    void SkipOrHold(std::string_view line, std::uint64_t number);
    void Skip(std::string_view line, std::uint64_t number);
    void Fail(const Failure& failure, std::int32_t inputNumber);

    struct HeldLine {
        std::string text;
        std::uint64_t number;
    };

    modGlobal& shared_;
    Log& log_;
    ScanObserver& observer_;
    /// The position line of a block that was abandoned, and the lines after it. They wait until it is known
    /// whether that block is the last item, so that all of its lines are skipped in their order. No more
    /// lines wait than a block can hold; further ones are skipped at once, before those that wait.
    std::vector<HeldLine> held_;
};

}  // namespace quillmere
