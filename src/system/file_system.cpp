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

}  // namespace quillmere
