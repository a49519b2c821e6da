#pragma once

#include "system/file_system.h"

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace quillmere {

/// The file system that the batch program writes to. A regular file is replaced in one step, and only when
/// the whole run is complete. A device or a pipe is written directly. A dry run writes nothing.
class BatchFileSystem : public FileSystem {
 public:
    enum class Writing { Replace, Discard };
    /// `input` is the path of the file that the others are made from. `system` must outlive the object.
    BatchFileSystem(FileSystem& system, Writing writing, std::string input)
        : system_(system), writing_(writing), input_(std::move(input)) {}

    /// Brings every file written so far to the disk, then puts them in place, the one opened last first. All
    /// of them must be closed. After a failure the files opened before the failed one stay uncommitted. The
    /// destructor removes new files that were not committed.
    void CommitAll();
    /// Writes a file of its own, whatever else is written or discarded: replaces a regular one in one step.
    void WriteAtOnce(const std::string& path, std::string_view bytes);
    /// CommitAll is also to keep the old file at `path`, before it puts any new one in place.
    void KeepOldFileAt(std::string path) { keptPath_ = std::move(path); }

    std::unique_ptr<ReadableFile> OpenForRead(const std::string& path) override;
    std::unique_ptr<WritableFile> OpenForWrite(const std::string& path) override;
    Replacement OpenReplacement(const std::string& path, const std::optional<Source>& source) override;
    FileKind KindOf(const std::string& path) override;
    std::string BackupPath(const std::string& path) override;
    bool SameFile(const std::string& one, const std::string& other) override;

 private:
    FileSystem& system_;
    Writing writing_;
    std::string input_;
    std::optional<Source> source_;         ///< the input, once it was opened
    std::string keptPath_;                 ///< empty: no old file is kept
    PendingReplacement* keeps_ = nullptr;  ///< that of the file at this path
    std::vector<std::unique_ptr<PendingReplacement>> pending_;
};

}  // namespace quillmere
