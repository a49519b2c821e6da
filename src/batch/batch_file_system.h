#pragma once

#include "system/file_system.h"
#include "system/kept_input.h"

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace quillmere {

/// The path that names standard input when it is read, and standard output when it is written. A file of that
/// name is "./-".
inline constexpr std::string_view standardStream = "-";

/// The file system that the batch program writes to. A regular file is replaced in one step, and only when
/// the whole run is complete. A device, a pipe or standard output is written directly. A dry run writes
/// nothing. Standard input is kept in a scratch file at its first opening, and so can be read as often as a
/// file.
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
    std::unique_ptr<ReadableFile> OpenStandardInput() override { return system_.OpenStandardInput(); }
    std::unique_ptr<WritableFile> OpenStandardOutput() override { return system_.OpenStandardOutput(); }
    std::unique_ptr<ScratchFile> CreateScratchFile() override { return system_.CreateScratchFile(); }
    /// Standard input counts as regular, even before it is kept.
    FileKind KindOf(const std::string& path) override;
    std::string BackupPath(const std::string& path) override;
    /// Standard output is the file that it leads to. Standard input is no other file: all of it is kept
    /// before any file is opened for writing.
    bool SameFile(const std::string& one, const std::string& other) override;

 private:
    FileSystem& system_;
    Writing writing_;
    std::string input_;
    std::optional<KeptInput> keptInput_;   ///< standard input, once it was opened
    std::optional<Source> source_;         ///< the input, once it was opened; not standard input
    std::string keptPath_;                 ///< empty: no old file is kept
    PendingReplacement* keeps_ = nullptr;  ///< that of the file at this path
    std::vector<std::unique_ptr<PendingReplacement>> pending_;
};

}  // namespace quillmere
