#pragma once

#include "system/file_system.h"

#include <memory>
#include <string>
#include <vector>

namespace quillmere {

/// The machine's file system as the batch program writes to it: a regular file is replaced in one step, and
/// only when the whole run is complete; a device or a pipe is written directly; a dry run writes nothing at
/// all.
class BatchFileSystem : public FileSystem {
 public:
    enum class Writing { Replace, Discard };
    /// `system` must outlive the object.
    BatchFileSystem(FileSystem& system, Writing writing) : system_(system), writing_(writing) {}

    /// Puts every file written so far, and closed, in place: the one opened last first. Files not committed
    /// when the object is destroyed vanish. A failure leaves the files opened before the failed one
    /// uncommitted.
    void CommitAll();

    std::unique_ptr<ReadableFile> OpenForRead(const std::string& path) override;
    std::unique_ptr<WritableFile> OpenForWrite(const std::string& path) override;
    Replacement OpenReplacement(const std::string& path) override;
    FileKind KindOf(const std::string& path) override;
    bool SameFile(const std::string& one, const std::string& other) override;

 private:
    FileSystem& system_;
    Writing writing_;
    std::vector<std::unique_ptr<PendingReplacement>> pending_;
};

}  // namespace quillmere
