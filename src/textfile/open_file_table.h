#pragma once

#include "base/failure.h"
#include "textfile/line_stream.h"

#include <array>
#include <cstdint>
#include <string>
#include <variant>

namespace quillmere {

/// Files that are open, each under a number from 1 to 255. One table serves the whole program, so that its
/// exit and a failing item reader can close them all at once.
class OpenFileTable {
 public:
    /// `fileSystem` must outlive the table.
    explicit OpenFileTable(FileSystem& fileSystem) : fileSystem_(fileSystem) {}

    /// Opens `path` under the lowest free number and returns that number. Fails with TooManyFiles when none
    /// is free, and as the file system fails.
    std::int32_t OpenForRead(const std::string& path, LineEnd lineEnd);
    std::int32_t OpenForWrite(const std::string& path, LineEnd lineEnd);

    bool IsOpen(std::int32_t number) const;
    /// The file open under `number`. Fails with BadFileNameOrNumber when none is, or not for that use.
    LineReader& Reader(std::int32_t number) { return *OpenFor<LineReader>(number); }
    LineWriter& Writer(std::int32_t number) { return *OpenFor<LineWriter>(number); }
    /// Whether no character is left to read; needs a file open for reading.
    bool AtEnd(std::int32_t number) { return Reader(number).AtEnd(); }

    /// Closes the file and frees its number, also when the last write or the close fails.
    void Close(std::int32_t number);
    /// Closes every open file after writing what is still in its buffer. For a program or a pass that is
    /// ending anyway: failures are ignored.
    void CloseAll() noexcept;

    FileSystem& System() { return fileSystem_; }

 private:
    static constexpr std::size_t highestNumber = 255;
    using Slot = std::variant<std::monostate, LineReader, LineWriter>;

    static bool IsNumber(std::int32_t number) {
        return number > 0 && static_cast<std::size_t>(number) <= highestNumber;
    }
    template <class Stream>
    Stream* OpenFor(std::int32_t number) {
        Stream* const stream = IsNumber(number) ? std::get_if<Stream>(&SlotOf(number)) : nullptr;
        if (stream == nullptr) ThrowBadNumber();
        return stream;
    }
    [[noreturn]] static void ThrowBadNumber();
    Slot& SlotOf(std::int32_t number) { return slots_[static_cast<std::size_t>(number)]; }
    std::int32_t FreeNumber() const;

    FileSystem& fileSystem_;
    std::array<Slot, highestNumber + 1> slots_;  ///< slot 0 is never used
};

}  // namespace quillmere
