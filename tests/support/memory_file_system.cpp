#include "tests/support/memory_file_system.h"

#include <algorithm>
#include <stdexcept>
#include <utility>

namespace quillmere::test {

namespace {

/// What the program holds open at a path, in whichever of its roles.
class MemoryFile : public ReadableFile, public WritableFile, public ScratchFile, public PendingReplacement {
 public:
    /// The file at the path `temporary`, if there is one, vanishes with the object.
    MemoryFile(MemoryFileSystem& system, std::string path, std::string temporary = "")
        : system_(system), path_(std::move(path)), temporary_(std::move(temporary)) {
        ++system_.openFiles;
    }
    ~MemoryFile() override {
        --system_.openFiles;
        system_.files.erase(temporary_);
    }

    std::size_t Read(char* buffer, std::size_t size) override {
        const std::size_t count = Use().copy(buffer, std::min(size, system_.mostBytesPerRead), position_);
        position_ += count;
        return count;
    }
    bool CanBeReadAgain() const override { return !path_.starts_with("pipe"); }
    FileState State() const override {
        FileState state = system_.state;
        state.size = static_cast<std::int64_t>(system_.files[path_].size());
        return state;
    }

    void Write(std::string_view bytes) override { Use() += bytes; }
    void Close() override {
        Use();
        system_.unclosed.erase(path_);
    }

    void Append(std::string_view bytes) override { Use() += bytes; }
    void FinishWriting() override { Use(); }
    std::size_t ReadAt(std::int64_t offset, char* buffer, std::size_t size) const override {
        return Use().copy(buffer, size, static_cast<std::size_t>(offset));
    }

    void BringToDisk() override { system_.Count(path_); }
    void KeepOldFile() override {
        system_.Count(path_);
        if (system_.files.contains(path_)) system_.files[path_ + "~"] = system_.files[path_];
    }
    void Commit() override {
        if (system_.unclosed.contains(temporary_))
            throw std::logic_error(path_ + " is put in place unclosed");
        Use() = system_.files[temporary_];
    }

 private:
    /// The bytes at the path, for one more operation.
    std::string& Use() const {
        system_.Count(path_);
        return system_.files[path_];
    }

    MemoryFileSystem& system_;
    const std::string path_;
    const std::string temporary_;
    std::size_t position_ = 0;
};

}  // namespace

void MemoryFileSystem::FailAt(std::size_t operation, FailureKind kind, bool forEver) {
    operations = 0;
    faultAt_ = operation;
    fault_ = kind;
    faultForEver_ = forEver;
}

void MemoryFileSystem::Count(const std::string& path) {
    ++operations;
    beforeOperation();
    if (fault_ && (operations == faultAt_ || (faultForEver_ && operations > faultAt_)))
        throw Failure(*fault_, path);
}

std::unique_ptr<ReadableFile> MemoryFileSystem::OpenForRead(const std::string& path) {
    Count(path);
    if (!files.contains(path)) throw Failure(FailureKind::FileNotFound, path);
    return std::make_unique<MemoryFile>(*this, path);
}

std::unique_ptr<WritableFile> MemoryFileSystem::OpenForWrite(const std::string& path) {
    Count(path);
    if (path.starts_with("missing/")) throw Failure(FailureKind::PathNotFound, path);
    files[path].clear();
    unclosed.insert(path);
    return std::make_unique<MemoryFile>(*this, path);
}

std::unique_ptr<ScratchFile> MemoryFileSystem::CreateScratchFile() {
    Count("scratch");
    return std::make_unique<MemoryFile>(*this, "scratch", "scratch");
}

FileSystem::Replacement MemoryFileSystem::OpenReplacement(const std::string& path,
                                                          const std::optional<Source>& /*source*/) {
    auto file = OpenForWrite(path + ".tmp");
    return {std::make_unique<MemoryFile>(*this, path, path + ".tmp"), std::move(file)};
}

FileKind MemoryFileSystem::KindOf(const std::string& path) {
    if (path.starts_with("device")) return FileKind::Other;
    if (path == "folder") return FileKind::Folder;
    return files.contains(path) ? FileKind::Regular : FileKind::Missing;
}

}  // namespace quillmere::test
