#include "batch/error_lines.h"

#include "batch/batch_file_system.h"

namespace quillmere {

namespace {

/// What is wrong and what to do, for failures that say no more than their kind.
std::string_view AdviceFor(FailureKind kind) {
    switch (kind) {
        case FailureKind::OutOfMemory:
            return "The system grants no more memory; raise the limit, or look for a far too long line.";
        case FailureKind::BadFileNameOrNumber:
            return "No file can have this name; correct it.";
        case FailureKind::FileNotFound:
            return "There is no such file; check the name.";
        case FailureKind::DeviceIoError:
            return "The disk failed, a pipe was closed, or a file may not grow; mend that, then run again.";
        case FailureKind::DiskFull:
            return "Free some space there or raise the quota, then run again.";
        case FailureKind::InputPastEnd:
        case FailureKind::FileChanged:
            return "Another program wrote to the file or replaced it; run again when it has finished.";
        case FailureKind::TooManyFiles:
            return "Too many files are open; raise the limit, then run again.";
        case FailureKind::PermissionDenied:
            return "The user of this program lacks a permission; check the file and its folder.";
        case FailureKind::PathFileAccessError:
            return "It is no plain file, or it may not be written; change that, or give another name.";
        case FailureKind::PathNotFound:
            return "A folder in the path is missing; make it, or correct the path.";
        case FailureKind::InvalidProcedureCall:
        case FailureKind::Overflow:
        case FailureKind::SubscriptOutOfRange:
        case FailureKind::TypeMismatch:
            break;  // thrown where more is known
    }
    return {};
}

}  // namespace

std::string ErrorLine(const Failure& failure) {
    std::string line = failure.Where().empty() ? "" : ShownPlace(failure.Where()) + ": ";
    line += std::string(failure.Description()) + " (" + std::to_string(failure.Number()) + ")";
    const std::string_view advice = failure.Advice().empty() ? AdviceFor(failure.Kind()) : failure.Advice();
    return advice.empty() ? line : line + ". " + std::string(advice);
}

std::string ShownPlace(std::string_view place) {
    const bool isStream = place == standardStream || place.starts_with("-, line ");
    return isStream ? standardInput + std::string(place.substr(standardStream.size())) : std::string(place);
}

}  // namespace quillmere
