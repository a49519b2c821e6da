#include "textfile/line_stream.h"

#include "base/failure.h"

#include <bit>
#include <utility>

namespace quillmere {

namespace {

/// Where lines end in the 64 bytes at `part`, those from `end` on left out.
template <LineEnd lineEnd>
std::uint64_t LineEndsIn(const char* part, const char* end) {
    const std::uint64_t ends = ByteMask(part, LineEndText(lineEnd).front());
    const std::ptrdiff_t size = end - part;
    return size < std::ptrdiff_t{maskedBytes} ? ends & ((std::uint64_t{1} << size) - 1) : ends;
}

/// LineReader::NextParagraph for the bytes from `begin` to `end`. Made once for each kind of line end, since
/// it looks at every line of a file.
template <LineEnd lineEnd>
Paragraph FindParagraph(const char* begin, const char* end, LinePrefix prefix) {
    Paragraph found;
    const char* line = begin;
    for (const char* part = begin; part < end; part += maskedBytes) {
        std::uint64_t lineEnds = LineEndsIn<lineEnd>(part, end);
        if (part == begin) found.firstLineSize = static_cast<std::size_t>(std::countr_zero(lineEnds));
        for (; lineEnds != 0; lineEnds &= lineEnds - 1) {
            const char* const lineStop = part + std::countr_zero(lineEnds);
            const char* const next = lineStop + LineEndText(lineEnd).size();
            if (next[-1] != '\n') return {};
            if (lineStop == line) {
                if (next > end) return {};
                found.text = {begin, next};
                return found;
            }
            if (line[0] == prefix.first && line[1] == prefix.second) {
                if (!found.lineWithPrefix.empty()) return {};
                found.lineWithPrefix = {line, lineStop};
            }
            ++found.lines;
            line = next;
        }
    }
    return {};
}

}  // namespace

LineReader::LineReader(std::unique_ptr<ReadableFile> file, std::string path, LineEnd lineEnd)
    : file_(std::move(file)),
      path_(std::move(path)),
      lineEnd_(lineEnd),
      capacity_(usualCapacity),
      buffer_(std::make_unique_for_overwrite<char[]>(usualCapacity + slack)) {}

std::string LineReader::Position() const {
    return path_ + ", line " + std::to_string(linesRead_);
}

void LineReader::ThrowPastEnd() const {
    throw Failure(FailureKind::InputPastEnd, Position());
}

bool LineReader::LookForEnd() {
    if (begin_ == end_ && !Fill()) return true;
    if (lineFeedMayFollow_) {
        lineFeedMayFollow_ = false;
        if (buffer_[begin_] == '\n') ++begin_;
    }
    return begin_ == end_ && !Fill();
}

Paragraph LineReader::NextParagraph(LinePrefix prefix) const {
    const char* const begin = buffer_.get() + begin_;
    const char* const end = buffer_.get() + end_;
    return lineEnd_ == LineEnd::CrLf ? FindParagraph<LineEnd::CrLf>(begin, end, prefix)
                                     : FindParagraph<LineEnd::Lf>(begin, end, prefix);
}

/// The unread bytes hold no line end: reads on until one comes, or the end of the file.
std::string_view LineReader::NextLineBeyondBuffer() {
    for (;;) {
        const std::size_t searched = end_ - begin_;
        if (!Fill()) {
            ++linesRead_;
            return {buffer_.get() + std::exchange(begin_, end_), searched};
        }
        const char* const line = buffer_.get() + begin_;
        const void* const end = std::memchr(line + searched, Terminator(), end_ - begin_ - searched);
        if (end != nullptr) return TakeLine(static_cast<std::size_t>(static_cast<const char*>(end) - line));
    }
}

bool LineReader::Fill() {
    if (sourceAtEnd_) return false;
    MakeRoom();
    const std::size_t count = file_->Read(buffer_.get() + end_, capacity_ - end_);
    sourceAtEnd_ = count == 0;
    end_ += count;
    return !sourceAtEnd_;
}

/// Moves the unread bytes to the buffer's front. A buffer that is full of one line doubles; one that grew for
/// a line that has been read since goes back to its usual size.
void LineReader::MakeRoom() {
    const std::size_t unread = end_ - begin_;
    std::size_t wanted = capacity_;
    if (unread == capacity_) {
        wanted = capacity_ * 2;
    } else if (capacity_ > usualCapacity && unread < usualCapacity) {
        wanted = usualCapacity;
    }
    if (wanted != capacity_) {
        auto moved = std::make_unique_for_overwrite<char[]>(wanted + slack);
        std::memcpy(moved.get(), buffer_.get() + begin_, unread);
        buffer_ = std::move(moved);
        capacity_ = wanted;
    } else if (begin_ > 0) {
        std::memmove(buffer_.get(), buffer_.get() + begin_, unread);
    }
    begin_ = 0;
    end_ = unread;
}

LineWriter::LineWriter(std::unique_ptr<WritableFile> file, LineEnd lineEnd)
    : file_(std::move(file)),
      lineEnd_(LineEndText(lineEnd)),
      buffer_(std::make_unique_for_overwrite<char[]>(bufferSize)) {}

void LineWriter::Close() {
    const std::unique_ptr<WritableFile> file = std::move(file_);
    if (used_ > 0) file->Write({buffer_.get(), used_});
    file->Close();
}

/// Fills the buffer to its last byte, so that the system gets pieces of one size.
void LineWriter::AppendBeyondBuffer(std::string_view bytes) {
    const std::string_view fitting = bytes.substr(0, bufferSize - used_);
    Append(fitting);
    Flush();
    bytes.remove_prefix(fitting.size());
    if (bytes.size() > bufferSize) {
        file_->Write(bytes);
    } else {
        Append(bytes);
    }
}

void LineWriter::Flush() {
    if (used_ == 0) return;
    file_->Write({buffer_.get(), std::exchange(used_, 0)});
}

}  // namespace quillmere
