#include "textfile/open_file_table.h"

#include "base/failure_report.h"

#include <utility>

namespace quillmere {

std::int32_t OpenFileTable::OpenForRead(const std::string& path, LineEnd lineEnd) {
    const std::int32_t number = FreeNumber();
    SlotOf(number).emplace<LineReader>(fileSystem_.OpenForRead(path), path, lineEnd);
    return number;
}

std::int32_t OpenFileTable::OpenForWrite(const std::string& path, LineEnd lineEnd) {
    const std::int32_t number = FreeNumber();
    SlotOf(number).emplace<LineWriter>(fileSystem_.OpenForWrite(path), lineEnd);
    return number;
}

bool OpenFileTable::IsOpen(std::int32_t number) const {
    return IsNumber(number) &&
           !std::holds_alternative<std::monostate>(slots_[static_cast<std::size_t>(number)]);
}

void OpenFileTable::Close(std::int32_t number) {
    if (!IsOpen(number)) ThrowBadNumber();
    Slot closing = std::exchange(SlotOf(number), std::monostate{});
    if (auto* const writer = std::get_if<LineWriter>(&closing)) writer->Close();
}

void OpenFileTable::CloseAll() noexcept {
    for (std::int32_t number = 1; IsNumber(number); ++number) {
        if (IsOpen(number)) IgnoreFailure([&] { Close(number); });
    }
}

void OpenFileTable::ThrowBadNumber() {
    throw Failure(FailureKind::BadFileNameOrNumber);
}

std::int32_t OpenFileTable::FreeNumber() const {
    for (std::int32_t number = 1; IsNumber(number); ++number) {
        if (!IsOpen(number)) return number;
    }
    throw Failure(FailureKind::TooManyFiles);
}

}  // namespace quillmere
