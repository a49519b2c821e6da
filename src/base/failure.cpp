#include "base/failure.h"

#include <algorithm>
#include <utility>

namespace quillmere {

Failure::Failure(FailureKind kind, std::string where) : kind_(kind), where_(std::move(where)) {}

const char* Failure::Description() const noexcept {
    switch (kind_) {
        case FailureKind::InvalidProcedureCall:
            return "Invalid procedure call or argument";
        case FailureKind::Overflow:
            return "Overflow";
        case FailureKind::OutOfMemory:
            return "Out of memory";
        case FailureKind::SubscriptOutOfRange:
            return "Subscript out of range";
        case FailureKind::TypeMismatch:
            return "Type mismatch";
        case FailureKind::BadFileNameOrNumber:
            return "Bad file name or number";
        case FailureKind::FileNotFound:
            return "File not found";
        case FailureKind::DeviceIoError:
            return "Device I/O error";
        case FailureKind::DiskFull:
            return "Disk full";
        case FailureKind::InputPastEnd:
            return "Input past end of file";
        case FailureKind::TooManyFiles:
            return "Too many files";
        case FailureKind::PermissionDenied:
            return "Permission denied";
        case FailureKind::PathFileAccessError:
            return "Path/File access error";
        case FailureKind::PathNotFound:
            return "Path not found";
        case FailureKind::FileChanged:
            return "File changed while it was read";
    }
    return "";
}

Failure Failure::At(const std::string& where) const {
    return where_.empty() ? Failure(kind_, where).Advised(advice_) : *this;
}

Failure Failure::Advised(std::string advice) const {
    Failure advised = *this;
    advised.advice_ = std::move(advice);
    return advised;
}

FailureKind KindOfError(std::span<const ErrorKind> table, std::uint32_t error, FailureKind otherwise) {
    const auto row = std::ranges::find(table, error, &ErrorKind::error);
    return row == table.end() ? otherwise : row->kind;
}

}  // namespace quillmere
