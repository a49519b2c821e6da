#include "system/file_system.h"

#include "base/failure.h"

namespace quillmere {

void CheckUnchanged(const FileState& before, const FileState& now, const std::string& path) {
    if (!now.IsSameFile(before)) {
        throw Failure(FailureKind::FileChanged, path + " (replaced while it was read)");
    }
    if (now.size < before.size) {
        throw Failure(FailureKind::InputPastEnd, path + " (cut short while it was read)");
    }
    if (now != before) throw Failure(FailureKind::FileChanged, path + " (changed while it was read)");
}

Failure ReplacedMeanwhile(const std::string& path) {
    return Failure(FailureKind::PathFileAccessError, path + " (another program put a file there meanwhile)")
        .Advised("Let only one program at a time write it, then run again.");
}

Failure StreamIsClosed(const std::string& name) {
    return Failure(FailureKind::PathFileAccessError, name)
        .Advised("It is closed; connect it to a file or a pipe, or give a file's name instead of -.");
}

Failure CannotBeReadTwice(const std::string& path) {
    return Failure(FailureKind::PathFileAccessError, path + " (a pipe cannot be read twice)")
        .Advised("Write its content to a file, and read that.");
}

}  // namespace quillmere
