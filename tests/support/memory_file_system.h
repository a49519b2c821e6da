#pragma once

#include "base/failure.h"
#include "system/file_system.h"

#include <limits>
#include <map>
#include <memory>
#include <optional>
#include <string>

namespace quillmere::test {

/// Files in memory, and a fault on demand. A path is just a key; the folders "folder" and "missing/..."
/// behave as their names say.
class MemoryFileSystem : public FileSystem {
 public:
    std::map<std::string, std::string> files;
    std::size_t operations = 0;  ///< opens, reads, writes, closes and commits so far
    int openFiles = 0;
    std::size_t mostBytesPerRead = std::numeric_limits<std::size_t>::max();

    /// From the operation with this number on, counted from 1, one or all of them fail.
    void FailAt(std::size_t operation, FailureKind kind, bool forEver = false);
    /// Counts an operation and fails when it is its turn.
    void Count(const std::string& path);

    std::unique_ptr<ReadableFile> OpenForRead(const std::string& path) override;
    std::unique_ptr<WritableFile> OpenForWrite(const std::string& path) override;
    Replacement OpenReplacement(const std::string& path) override;
    FileKind KindOf(const std::string& path) override;
    bool SameFile(const std::string& one, const std::string& other) override { return one == other; }

 private:
    std::optional<FailureKind> fault_;
    std::size_t faultAt_ = 0;
    bool faultForEver_ = false;
};

}  // namespace quillmere::test
