#pragma once

#include "textfile/line_stream.h"

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

namespace quillmere {

/// The lines of one block in slots 0 to 5000, as one text just as it stands in a file: a block then costs no
/// allocation per line and is written with one copy. The text is either the object's own or borrowed from
/// where it was read. A slot that was not filled is empty.
class BlockLines {
 public:
    /// Body lines that one block can hold, in slots 1 to 5000.
    static constexpr std::size_t mostBodyLines = 5000;

    /// `lineEnd` ends each line in Text().
    explicit BlockLines(LineEnd lineEnd) : lineEnd_(LineEndText(lineEnd)), text_(lineEnd_) {}
    BlockLines(const BlockLines&) = delete;
    BlockLines& operator=(const BlockLines&) = delete;

    /// Empties every slot; the storage is kept for the next block.
    void Clear() {
        text_ = lineEnd_;
        count_ = 0;
    }
    /// Copies `line`, which is not empty, to the next slot. Not to a borrowed text: Clear comes first. Fails
    /// with SubscriptOutOfRange when slot 5000 is taken.
    void Append(std::string_view line);
    /// Fills the slots from 0 to `count` - 1 with the lines of `text`, which becomes Text(). It must stay
    /// where it is until the object changes.
    void Borrow(std::string_view text, std::size_t count) {
        text_ = text;
        count_ = count;
    }
    /// Slots filled.
    std::size_t Count() const { return count_; }
    /// The block as it stands in a file: all lines in slot order, each with its line end, then an empty line;
    /// the empty line alone when no slot is filled. Good until the object changes.
    std::string_view Text() const { return text_; }

 private:
    std::string_view lineEnd_;
    std::string_view text_;
    std::size_t count_ = 0;
    std::vector<char> storage_;  ///< of the text while it is the object's own; only grows
};

/// A part of a text.
struct TextRange {
    std::size_t begin = 0;
    std::size_t size = 0;
};

/// One item block of a world script. An empty record stands for no block: no code, no lines, all numbers 0.
struct WorldItem {
    explicit WorldItem(LineEnd lineEnd = LineEnd::CrLf) : Lines(lineEnd) {}

    BlockLines Lines;    ///< slot 0: the header line, trimmed; from slot 1: the body lines as read
    TextRange code;      ///< where Code() stands in the text of the lines
    std::int32_t X = 0;  ///< map coordinates from the position line
    std::int32_t Y = 0;
    std::int32_t Z = 0;      ///< height
    std::int32_t Facet = 0;  ///< number of the map
    bool Placed = false;     ///< whether there is a position line; what lies in a container has none

    /// Item definition code; good until the lines change.
    std::string_view Code() const { return {Lines.Text().data() + code.begin, code.size}; }
    /// Makes it the empty record; the storage is kept for the next block.
    void Clear() {
        Lines.Clear();
        code = {};
        X = Y = Z = Facet = 0;
        Placed = false;
    }
};

}  // namespace quillmere
