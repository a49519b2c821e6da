#include "base/failure.h"

#include <algorithm>
#include <utility>

namespace quillmere {

namespace {

struct Row {
    FailureKind kind;
    const char* description;
};

constexpr Row descriptions[] = {
    {FailureKind::InvalidProcedureCall, "Invalid procedure call or argument"},
    {FailureKind::Overflow, "Overflow"},
    {FailureKind::OutOfMemory, "Out of memory"},
    {FailureKind::SubscriptOutOfRange, "Subscript out of range"},
    {FailureKind::TypeMismatch, "Type mismatch"},
    {FailureKind::BadFileNameOrNumber, "Bad file name or number"},
    {FailureKind::FileNotFound, "File not found"},
    {FailureKind::DeviceIoError, "Device I/O error"},
    {FailureKind::DiskFull, "Disk full"},
    {FailureKind::InputPastEnd, "Input past end of file"},
    {FailureKind::TooManyFiles, "Too many files"},
    {FailureKind::PermissionDenied, "Permission denied"},
    {FailureKind::PathFileAccessError, "Path/File access error"},
    {FailureKind::PathNotFound, "Path not found"},
};

}  // namespace

Failure::Failure(FailureKind kind, std::string where) : kind_(kind), where_(std::move(where)) {}

const char* Failure::Description() const noexcept {
    return std::ranges::find(descriptions, kind_, &Row::kind)->description;
}

Failure Failure::At(const std::string& where) const {
    return where_.empty() ? Failure(kind_, where) : *this;
}

FailureKind KindOfError(std::span<const ErrorKind> table, std::uint32_t error, FailureKind otherwise) {
    const auto row = std::ranges::find(table, error, &ErrorKind::error);
    return row == table.end() ? otherwise : row->kind;
}

}  // namespace quillmere
