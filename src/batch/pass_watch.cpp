#include "batch/pass_watch.h"

#include "base/number_text.h"
#include "engine/block_parser.h"

#include <algorithm>
#include <string_view>

namespace quillmere {

namespace {

/// Whether the last line of a block is "[EOF]", which belongs to the block when no empty line comes before
/// it.
bool EndsWithSentinel(const WorldItem& item) {
    std::string_view text = item.Lines.Text();
    const std::string_view lineEnd = text.ends_with("\r\n\r\n") ? "\r\n" : "\n";
    text.remove_suffix(2 * lineEnd.size());
    if (text.back() != endSentinel.back() && text.back() != ' ') return false;  // nearly always, so first
    text = TrimSpaces(text);
    if (!text.ends_with(endSentinel)) return false;
    text.remove_suffix(endSentinel.size());
    return TrimSpaces(text).ends_with(lineEnd);
}

/// Whether a line after the header looks like a header, too. "[EOF]" may come without an empty line before
/// it.
bool HoldsSecondHeader(const WorldItem& item) {
    const std::string_view text = item.Lines.Text();
    const std::size_t lineFeed = text.find("\n[");
    return lineFeed != std::string_view::npos && !text.substr(lineFeed + 1).starts_with(endSentinel);
}

}  // namespace

void PassWatch::RecordJudged(const WorldItem& item, const Verdict& verdict) {
    if (item.Lines.Count() == 0) return;
    ++blocks_;
    removed_ += verdict.remove ? 1 : 0;
    removedWithHeader_ += verdict.remove && HoldsSecondHeader(item) ? 1 : 0;
    endsWithSentinel_ = EndsWithSentinel(item);
}

void PassWatch::LineSkipped(std::uint64_t number) {
    firstSkipped_ = linesSkipped_++ == 0 ? number : std::min(firstSkipped_, number);
    endsWithSentinel_ = false;
}

std::string PassWatch::Warning() const {
    if (linesSkipped_ == 0) return {};
    const std::string first = std::to_string(firstSkipped_);
    if (linesSkipped_ == 1) {
        return "warning: 1 line outside blocks was left out, line " + first + "; --removed FILE keeps it";
    }
    return "warning: " + std::to_string(linesSkipped_) +
           " lines outside blocks were left out, the first is line " + first + "; --removed FILE keeps them";
}

std::string PassWatch::WarningOfHeaders() const {
    if (removedWithHeader_ == 0) return {};
    return "warning: removed blocks that hold a second header: " + std::to_string(removedWithHeader_) +
           "; an empty line may be missing before it";
}

std::string PassWatch::Objection(const BatchOptions& options) const {
    if (!options.force && blocks_ == 0) return "no block was found, so this may be no save; --force goes on";
    if (!options.force && !endsWithSentinel_) {
        return "the last line is not [EOF], so the save may be cut short; save again, or --force goes on";
    }
    if (options.maxRemoved && removed_ * 100 > blocks_ * *options.maxRemoved) {
        return std::to_string(removed_) + " of " + std::to_string(blocks_) +
               " blocks would go, which is more than " + std::to_string(*options.maxRemoved) +
               "%; check list and filters, or raise --max-removed";
    }
    return {};
}

}  // namespace quillmere
