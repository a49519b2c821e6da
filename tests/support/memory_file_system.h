#pragma once

#include "base/failure.h"
#include "system/file_system.h"

#include <functional>
#include <limits>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>

namespace quillmere::test {

/// Files in memory, which fail on demand. A path is a key in `files`. The path "folder", and paths that start
/// with "device", "pipe" or "missing/", behave as their names say. Standard input and standard output are
/// files of these names, and a scratch file is "scratch".
class MemoryFileSystem : public FileSystem {
 public:
    std::map<std::string, std::string> files;
    std::size_t operations = 0;  ///< opens, reads, writes, closes and commits so far
    int openFiles = 0;
    std::set<std::string> unclosed;  ///< what was opened for writing and not closed by a call of Close
    std::size_t mostBytesPerRead = std::numeric_limits<std::size_t>::max();
    FileState state;  ///< of every file, but for its size
    std::function<void()> beforeOperation = [] {};

    /// The operation with this number, counted from 1, is to fail; with `forEver`, so are all that follow.
    void FailAt(std::size_t operation, FailureKind kind, bool forEver = false);
    /// Counts an operation, and throws if that one is to fail.
    void Count(const std::string& path);

    std::unique_ptr<ReadableFile> OpenForRead(const std::string& path) override;
    std::unique_ptr<WritableFile> OpenForWrite(const std::string& path) override;
    std::unique_ptr<ReadableFile> OpenStandardInput() override { return OpenForRead(standardInput); }
    std::unique_ptr<WritableFile> OpenStandardOutput() override { return OpenForWrite(standardOutput); }
    std::unique_ptr<ScratchFile> CreateScratchFile() override;
    Replacement OpenReplacement(const std::string& path, const std::optional<Source>& source) override;
    FileKind KindOf(const std::string& path) override;
    bool SameFile(const std::string& one, const std::string& other) override { return one == other; }

 private:
    std::optional<FailureKind> fault_;
    std::size_t faultAt_ = 0;
    bool faultForEver_ = false;
};

}  // namespace quillmere::test
