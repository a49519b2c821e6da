#include "batch/batch_file_system.h"

#include "system/console.h"

#include <utility>

namespace quillmere {

namespace {

class DiscardingFile : public WritableFile {
 public:
    void Write(std::string_view /*bytes*/) override {}
    void Close() override {}
};

}  // namespace

void BatchFileSystem::CommitAll() {
    for (const auto& pending : pending_)
        pending->BringToDisk();
    if (keeps_ != nullptr) keeps_->KeepOldFile();
    for (; !pending_.empty(); pending_.pop_back())
        pending_.back()->Commit();
}

void BatchFileSystem::WriteAtOnce(const std::string& path, std::string_view bytes) {
    const auto write = [bytes](WritableFile& file) {
        file.Write(bytes);
        file.Close();
    };
    if (system_.KindOf(path) == FileKind::Other) return write(*system_.OpenDirectly(path));
    const Replacement replacement = OpenReplacement(path, source_);
    write(*replacement.file);
    replacement.pending->BringToDisk();
    replacement.pending->Commit();
}

std::unique_ptr<ReadableFile> BatchFileSystem::OpenForRead(const std::string& path) {
    if (path == standardStream) {
        if (!keptInput_) keptInput_.emplace(system_);
        return keptInput_->Open();
    }
    auto file = system_.OpenForRead(path);
    if (path == input_ && file->CanBeReadAgain()) source_ = {path, file->State()};
    return file;
}

std::unique_ptr<WritableFile> BatchFileSystem::OpenForWrite(const std::string& path) {
    if (writing_ == Writing::Discard) return std::make_unique<DiscardingFile>();
    if (path == standardStream) return system_.OpenStandardOutput();
    if (system_.KindOf(path) == FileKind::Other) return system_.OpenDirectly(path);
    Replacement replacement = OpenReplacement(path, source_);
    pending_.push_back(std::move(replacement.pending));
    if (path == keptPath_) keeps_ = pending_.back().get();
    return std::move(replacement.file);
}

FileSystem::Replacement BatchFileSystem::OpenReplacement(const std::string& path,
                                                         const std::optional<Source>& source) {
    return system_.OpenReplacement(path, source);
}

FileKind BatchFileSystem::KindOf(const std::string& path) {
    return path == standardStream ? FileKind::Regular : system_.KindOf(path);
}

std::string BatchFileSystem::BackupPath(const std::string& path) {
    return system_.BackupPath(path);
}

bool BatchFileSystem::SameFile(const std::string& one, const std::string& other) {
    if (one == standardStream) return other != standardStream && IsStandardOutput(other);
    if (other == standardStream) return IsStandardOutput(one);
    return system_.SameFile(one, other);
}

}  // namespace quillmere
