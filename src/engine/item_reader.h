#pragma once

#include "base/failure_report.h"
#include "engine/mod_global.h"
#include "engine/world_item.h"

#include <cstdint>
#include <functional>
#include <string_view>

namespace quillmere {

/// Reads a world script block by block; block_parser.h says what a block is. Other lines between blocks are
/// skipped, and the line "[EOF]" is copied to the output.
class ItemReader {
 public:
    /// `yield` is called once per line scanned between blocks, never inside a block. `shared` and `log` must
    /// outlive the reader.
    ItemReader(modGlobal& shared, Log& log, std::function<void()> yield);

    /// Scans from the current position of the file open as `inputNumber` and makes `item`, whatever it held,
    /// the next block, good until the next operation on that file. It becomes the empty record when the scan
    /// meets "[EOF]" or finds no further header. When the input ends inside a block, or after one that was
    /// abandoned, `item` holds the lines read of it.
    ///
    /// A failure is reported to the log, sets blnIdle and closes every open file; `item` is then the empty
    /// record, and the caller's next operation on its files fails.
    void GetNextItem(std::int32_t inputNumber, std::int32_t outputNumber, WorldItem& item);

 private:
    void ScanForBlock(WorldItem& item, std::int32_t inputNumber, std::int32_t outputNumber);
    static bool ReadWholeBlock(WorldItem& item, LineReader& input);
    bool ReadBlock(WorldItem& item, std::string_view header, std::int32_t inputNumber);
    void Fail(const Failure& failure, std::int32_t inputNumber);

    modGlobal& shared_;
    Log& log_;
    std::function<void()> yield_;
};

}  // namespace quillmere
