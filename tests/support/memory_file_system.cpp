#include "tests/support/memory_file_system.h"

#include <algorithm>
#include <utility>

namespace quillmere::test {

namespace {

class MemoryReadableFile : public ReadableFile {
 public:
    MemoryReadableFile(MemoryFileSystem& system, std::string path) : system_(system), path_(std::move(path)) {
        ++system_.openFiles;
    }
    ~MemoryReadableFile() override { --system_.openFiles; }

    std::size_t Read(char* buffer, std::size_t size) override {
        system_.Count(path_);
        const std::size_t count =
            system_.files[path_].copy(buffer, std::min(size, system_.mostBytesPerRead), position_);
        position_ += count;
        return count;
    }
    bool CanBeReadAgain() const override { return !path_.starts_with("pipe"); }
    FileState State() const override {
        FileState state = system_.state;
        state.size = static_cast<std::int64_t>(system_.files[path_].size());
        return state;
    }

 private:
    MemoryFileSystem& system_;
    std::string path_;
    std::size_t position_ = 0;
};

class MemoryWritableFile : public WritableFile {
 public:
    MemoryWritableFile(MemoryFileSystem& system, std::string path) : system_(system), path_(std::move(path)) {
        system_.files[path_].clear();
        ++system_.openFiles;
    }
    ~MemoryWritableFile() override { --system_.openFiles; }

    void Write(std::string_view bytes) override {
        system_.Count(path_);
        system_.files[path_] += bytes;
    }
    void Close() override { system_.Count(path_); }

 private:
    MemoryFileSystem& system_;
    std::string path_;
};

class MemoryScratchFile : public ScratchFile {
 public:
    explicit MemoryScratchFile(MemoryFileSystem& system) : system_(system) {}
    ~MemoryScratchFile() override { system_.files.erase("scratch"); }
    void Append(std::string_view bytes) override {
        system_.Count("scratch");
        system_.files["scratch"] += bytes;
    }
    void FinishWriting() override { system_.Count("scratch"); }
    std::size_t ReadAt(std::int64_t offset, char* buffer, std::size_t size) const override {
        system_.Count("scratch");
        return system_.files["scratch"].copy(buffer, size, static_cast<std::size_t>(offset));
    }

 private:
    MemoryFileSystem& system_;
};

class MemoryReplacement : public PendingReplacement {
 public:
    MemoryReplacement(MemoryFileSystem& system, std::string path) : system_(system), path_(std::move(path)) {}
    ~MemoryReplacement() override { system_.files.erase(path_ + ".tmp"); }
    void BringToDisk() override { system_.Count(path_); }
    void KeepOldFile() override {
        system_.Count(path_);
        if (system_.files.contains(path_)) system_.files[path_ + "~"] = system_.files[path_];
    }
    void Commit() override {
        system_.Count(path_);
        system_.files[path_] = system_.files[path_ + ".tmp"];
    }

 private:
    MemoryFileSystem& system_;
    std::string path_;
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
    return std::make_unique<MemoryReadableFile>(*this, path);
}

std::unique_ptr<WritableFile> MemoryFileSystem::OpenForWrite(const std::string& path) {
    Count(path);
    if (path.starts_with("missing/")) throw Failure(FailureKind::PathNotFound, path);
    return std::make_unique<MemoryWritableFile>(*this, path);
}

std::unique_ptr<ScratchFile> MemoryFileSystem::CreateScratchFile() {
    Count("scratch");
    return std::make_unique<MemoryScratchFile>(*this);
}

FileSystem::Replacement MemoryFileSystem::OpenReplacement(const std::string& path,
                                                          const std::optional<Source>& /*source*/) {
    auto file = OpenForWrite(path + ".tmp");
    return {std::make_unique<MemoryReplacement>(*this, path), std::move(file)};
}

FileKind MemoryFileSystem::KindOf(const std::string& path) {
    if (path.starts_with("device")) return FileKind::Other;
    if (path == "folder") return FileKind::Folder;
    return files.contains(path) ? FileKind::Regular : FileKind::Missing;
}

}  // namespace quillmere::test
