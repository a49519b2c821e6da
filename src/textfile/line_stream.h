#pragma once

#include "base/byte_mask.h"
#include "system/file_system.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>
#include <string_view>

namespace quillmere {

/// How the lines of a text file end.
enum class LineEnd {
    CrLf,  ///< written as CR LF; read, a line ends at a CR, an LF right after it belongs to it, a lone LF is
           ///< text
    Lf     ///< a line ends at an LF, a CR is text
};

/// The characters that end a written line.
constexpr std::string_view LineEndText(LineEnd lineEnd) {
    constexpr std::string_view pair = "\r\n";
    return lineEnd == LineEnd::CrLf ? pair : pair.substr(1);
}

/// Reads a file line by line through one large buffer, which grows only for a line longer than itself. The
/// bytes of a line are handed on as they are.
class LineReader {
 public:
    /// `path` only names the file in failures.
    LineReader(std::unique_ptr<ReadableFile> file, std::string path, LineEnd lineEnd);

    /// Whether no character is left to read. Ends the life of the last line's view.
    bool AtEnd() {
        const bool certainlyMore = begin_ < end_ && !lineFeedMayFollow_;
        return !certainlyMore && LookForEnd();
    }
    /// The next line without its end; a last line without one is returned whole. The view is good until the
    /// next call of AtEnd or NextLine. Fails with InputPastEnd when nothing is left, with OutOfMemory for a
    /// line that memory cannot hold.
    std::string_view NextLine() {
        if (AtEnd()) ThrowPastEnd();
        const char* const line = buffer_.get() + begin_;
        const void* const end = std::memchr(line, Terminator(), end_ - begin_);
        return end != nullptr ? TakeLine(static_cast<std::size_t>(static_cast<const char*>(end) - line))
                              : NextLineBeyondBuffer();
    }
    /// The unread bytes that the buffer holds, when AtEnd just said that there are some. They begin with the
    /// next line; where the buffer ends, lines may be cut. Good until the next call of AtEnd or NextLine.
    /// ByteMask may look from any of them on.
    std::string_view Unread() const { return {buffer_.get() + begin_, end_ - begin_}; }
    /// Reads the first `size` of the unread bytes, which are `lines` whole lines.
    void Skip(std::size_t size, std::size_t lines) {
        begin_ += size;
        linesRead_ += lines;
    }
    /// The file and the number, from 1, of the line returned last, if there is one, for an error line.
    std::string Position() const;
    std::uint64_t LinesRead() const { return linesRead_; }
    /// The bytes of the file before the next line, when AtEnd was called since the last line was read.
    std::uint64_t Offset() const { return dropped_ + begin_; }
    LineEnd LineEnding() const { return lineEnd_; }
    bool CanBeReadAgain() const { return file_->CanBeReadAgain(); }
    FileState State() const { return file_->State(); }

 private:
    char Terminator() const { return LineEndText(lineEnd_).front(); }
    /// Takes a line of `length` bytes, and its end, from the front of the unread bytes.
    std::string_view TakeLine(std::size_t length) {
        const std::string_view line(buffer_.get() + begin_, length);
        begin_ += length + 1;
        ++linesRead_;
        if (lineEnd_ == LineEnd::CrLf) {
            if (begin_ == end_) {
                lineFeedMayFollow_ = true;
            } else if (buffer_[begin_] == '\n') {
                ++begin_;
            }
        }
        return line;
    }
    [[noreturn]] void ThrowPastEnd() const;
    bool LookForEnd();
    std::string_view NextLineBeyondBuffer();
    bool Fill();
    void MakeRoom();
    void Resize(std::size_t capacity);

    static constexpr std::size_t usualCapacity = std::size_t{128} * 1024;  // bytes
    /// Bytes after the buffer, never filled: ByteMask may look at 64 bytes from the end of the text on.
    static constexpr std::size_t slack = maskedBytes;

    std::unique_ptr<ReadableFile> file_;
    std::string path_;
    LineEnd lineEnd_;
    std::size_t capacity_ = 0;
    struct FreeMemory {
        void operator()(char* memory) const { std::free(memory); }
    };
    std::unique_ptr<char[], FreeMemory> buffer_;  ///< from realloc, which grows a large one without a copy
    std::size_t begin_ = 0;                       ///< the unread bytes are those from begin_ up to end_
    std::size_t end_ = 0;
    std::uint64_t dropped_ = 0;  ///< bytes that the buffer no longer holds
    bool sourceAtEnd_ = false;
    bool lineFeedMayFollow_ = false;  ///< the last line ended at a CR that was the last byte in the buffer
    std::uint64_t linesRead_ = 0;
};

/// Writes a file line by line through one large buffer. A failed write is reported by the call that met it;
/// the bytes still in the buffer are then dropped, so that Close does not write after a gap.
class LineWriter {
 public:
    LineWriter(std::unique_ptr<WritableFile> file, LineEnd lineEnd);

    void WriteLine(std::string_view text) {
        Append(text);
        Append(lineEnd_);
    }
    /// Writes lines that carry their line ends already.
    void WriteText(std::string_view lines) { Append(lines); }
    /// Writes what the buffer holds and closes the file; closes it also when that write fails. The last call.
    void Close();

 private:
    void Append(std::string_view bytes) {
        if (bytes.size() > bufferSize - used_) {
            AppendBeyondBuffer(bytes);
            return;
        }
        bytes.copy(buffer_.get() + used_, bytes.size());
        used_ += bytes.size();
    }
    void AppendBeyondBuffer(std::string_view bytes);
    void Flush();

    static constexpr std::size_t bufferSize = std::size_t{128} * 1024;  // bytes

    std::unique_ptr<WritableFile> file_;
    std::string_view lineEnd_;
    std::unique_ptr<char[]> buffer_;
    std::size_t used_ = 0;
};

}  // namespace quillmere
