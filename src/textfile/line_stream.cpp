#include "textfile/line_stream.h"

#include "base/failure.h"

#include <new>
#include <utility>

namespace quillmere {

LineReader::LineReader(std::unique_ptr<ReadableFile> file, std::string path, LineEnd lineEnd)
    : file_(std::move(file)), path_(std::move(path)), lineEnd_(lineEnd) {
    Resize(usualCapacity);
}

std::string LineReader::Position() const {
    return linesRead_ == 0 ? path_ : path_ + ", line " + std::to_string(linesRead_);
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
    if (begin_ > 0) std::memmove(buffer_.get(), buffer_.get() + begin_, unread);
    dropped_ += begin_;
    begin_ = 0;
    end_ = unread;
    if (unread == capacity_) {
        Resize(capacity_ * 2);
    } else if (capacity_ > usualCapacity && unread < usualCapacity) {
        Resize(usualCapacity);
    }
}

/// Keeps the bytes up to end_, which has to be within the new capacity.
void LineReader::Resize(std::size_t capacity) {
    void* const memory = std::realloc(buffer_.get(), capacity + slack);
    if (memory == nullptr) throw std::bad_alloc();
    static_cast<void>(buffer_.release());
    buffer_.reset(static_cast<char*>(memory));
    capacity_ = capacity;
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
