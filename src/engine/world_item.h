#pragma once

#include "textfile/failure.h"
#include "textfile/line_stream.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>
#include <vector>

namespace quillmere {

/// The lines of one block in slots 0 to 5000, kept as one piece of text just as it stands in a file, so that
/// a block costs no allocation per line and is written with one copy. A slot that was not filled is empty.
class BlockLines {
 public:
    /// Body lines that one block can hold, in slots 1 to 5000.
    static constexpr std::size_t mostBodyLines = 5000;

    /// `lineEnd` ends each line in Text().
    explicit BlockLines(LineEnd lineEnd) : lineEnd_(LineEndText(lineEnd)) {}

    /// Empties every slot; the storage is kept for the next block.
    void Clear() { count_ = 0; }
    /// Fills the next slot with `line`, which is not empty. Fails with SubscriptOutOfRange when slot 5000 is
    /// taken.
    void Append(std::string_view line) {
        if (count_ > mostBodyLines) throw Failure(FailureKind::SubscriptOutOfRange);
        const std::size_t begin = EndOf(count_);
        const std::size_t end = begin + line.size() + lineEnd_.size();
        if (end > text_.size()) text_.resize(2 * end);
        std::memcpy(text_.data() + begin, line.data(), line.size());
        if (lineEnd_.size() == 2) text_[end - 2] = lineEnd_.front();  // no call for two bytes
        text_[end - 1] = lineEnd_.back();
        ends_[count_++] = end;
    }
    /// The line in `slot`; good until the object changes.
    std::string_view operator[](std::size_t slot) const {
        if (slot >= count_) return {};
        const std::size_t begin = EndOf(slot);
        return Text().substr(begin, ends_[slot] - lineEnd_.size() - begin);
    }
    /// Slots filled.
    std::size_t Count() const { return count_; }
    /// All lines in slot order, each with its line end; good until the object changes.
    std::string_view Text() const { return {text_.data(), EndOf(count_)}; }

 private:
    /// Where the first `slots` slots end in text_.
    std::size_t EndOf(std::size_t slots) const { return slots == 0 ? 0 : ends_[slots - 1]; }

    std::string_view lineEnd_;
    std::vector<char> text_;  ///< grows only; the bytes behind the last filled slot mean nothing
    std::size_t count_ = 0;
    std::array<std::size_t, mostBodyLines + 1> ends_;  ///< where each filled slot's line end stops in text_
};

/// One item block of a world script. An empty record stands for no block: no code, no lines, all numbers 0.
struct WorldItem {
    explicit WorldItem(LineEnd lineEnd = LineEnd::CrLf) : Lines(lineEnd) {}

    std::string Code;    ///< item definition code from the header line
    BlockLines Lines;    ///< slot 0: the header line, trimmed; from slot 1: the body lines as read
    std::int32_t X = 0;  ///< map coordinates from the position line
    std::int32_t Y = 0;
    std::int32_t Z = 0;      ///< height
    std::int32_t Facet = 0;  ///< number of the map

    /// Body lines stored, the header not counted.
    std::size_t LineCount() const { return Lines.Count() == 0 ? 0 : Lines.Count() - 1; }
    /// Makes it the empty record; the storage is kept for the next block.
    void Clear();
};

}  // namespace quillmere
