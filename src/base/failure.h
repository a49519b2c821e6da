#pragma once

#include <cstdint>
#include <exception>
#include <span>
#include <string>

namespace quillmere {

/// The kinds of failure that the program can report. The value is the number that a failure report shows;
/// numbers and descriptions are stable, so that users can quote them.
enum class FailureKind : std::int32_t {
    InvalidProcedureCall = 5,  ///< a block header whose second piece, cut at every space, is empty
    Overflow = 6,              ///< a number outside 32 bits
    OutOfMemory = 7,           ///< a line or block that memory cannot hold
    SubscriptOutOfRange = 9,   ///< an entry of a list or a line of a block beyond the last slot
    TypeMismatch = 13,         ///< text that is not a number, or not a Boolean
    BadFileNameOrNumber = 52,  ///< a file number that is not open, an empty or unusable file name
    FileNotFound = 53,
    DeviceIoError = 57,  ///< a read or write error with no kind of its own
    DiskFull = 61,
    InputPastEnd = 62,
    TooManyFiles = 67,  ///< no file number, or no descriptor, left
    PermissionDenied = 70,
    PathFileAccessError = 75,  ///< a folder where a file is expected, a read-only file
    PathNotFound = 76,         ///< a folder in the path is missing
    FileChanged = 77           ///< somebody wrote to a file, or replaced it, while it was read
};

/// One failed operation. Thrown where it happens; caught once, by the operation that reports it
/// (failure_report.h).
class Failure : public std::exception {
 public:
    /// `where` names what the failure is about, for instance a path; it may be empty.
    explicit Failure(FailureKind kind, std::string where = {});

    FailureKind Kind() const noexcept { return kind_; }
    std::int32_t Number() const noexcept { return static_cast<std::int32_t>(kind_); }
    /// A short English phrase without a full stop, the same for every failure of one kind.
    const char* Description() const noexcept;
    /// What the failure is about, or empty. Failure reports do not show it; error lines of the batch program
    /// do.
    const std::string& Where() const noexcept { return where_; }
    /// The same failure; about `where` unless it already says what it is about.
    Failure At(const std::string& where) const;
    /// A sentence that says what is wrong and what to do, or empty where no more is known than the kind
    /// tells. It is shown where Where() is.
    const std::string& Advice() const noexcept { return advice_; }
    /// The same failure with that advice.
    Failure Advised(std::string advice) const;

    const char* what() const noexcept override { return Description(); }

 private:
    FailureKind kind_;
    std::string where_;
    std::string advice_;
};

/// Thrown by an operation that waited for somebody else when the program was asked to end. Nothing has
/// failed, so it is no Failure, and no report is due: it passes through to the program's end. What it passes
/// through need only be fit to be destroyed.
class Cancelled : public std::exception {
 public:
    const char* what() const noexcept override { return "Cancelled"; }
};

/// One row of a table from the error numbers of an operating system to the kinds of failure.
struct ErrorKind {
    std::uint32_t error;
    FailureKind kind;
};
/// The kind in the row of `error`; `otherwise` when it has none.
FailureKind KindOfError(std::span<const ErrorKind> table, std::uint32_t error, FailureKind otherwise);

}  // namespace quillmere
