#pragma once

#include "batch/batch_options.h"
#include "engine/decisions.h"
#include "engine/world_item.h"

#include <cstdint>
#include <string>

namespace quillmere {

/// Watches a pass and says afterwards what speaks against its output. A nightly run has nobody who would see
/// that the server's save was cut short, or that a list removes half the world.
class PassWatch {
 public:
    void RecordJudged(const WorldItem& item, const Verdict& verdict);
    /// A line outside blocks was left out. The lines need not come in their order.
    void LineSkipped(std::uint64_t number);
    /// The line "[EOF]" was copied.
    void SentinelCopied() { endsWithSentinel_ = true; }

    /// The lines outside blocks; empty when there were none.
    std::string Warning() const;
    /// The removed blocks that look like two, so that one is lost which no filter selects; empty when there
    /// were none.
    std::string WarningOfHeaders() const;
    /// Why the output must not take its place, and what to do; empty when nothing speaks against it.
    std::string Objection(const BatchOptions& options) const;

 private:
    std::int64_t blocks_ = 0;
    std::int64_t removed_ = 0;
    std::int64_t removedWithHeader_ = 0;
    bool endsWithSentinel_ = false;  ///< the last line so far that is not empty is "[EOF]"
    std::uint64_t linesSkipped_ = 0;
    std::uint64_t firstSkipped_ = 0;  ///< number of the first of these lines
};

}  // namespace quillmere
