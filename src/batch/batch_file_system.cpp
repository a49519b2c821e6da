#include "batch/batch_file_system.h"

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
    for (; !pending_.empty(); pending_.pop_back())
        pending_.back()->Commit();
}

std::unique_ptr<ReadableFile> BatchFileSystem::OpenForRead(const std::string& path) {
    return system_.OpenForRead(path);
}

std::unique_ptr<WritableFile> BatchFileSystem::OpenForWrite(const std::string& path) {
    if (writing_ == Writing::Discard) return std::make_unique<DiscardingFile>();
    if (system_.KindOf(path) == FileKind::Other) return system_.OpenForWrite(path);
    Replacement replacement = OpenReplacement(path);
    pending_.push_back(std::move(replacement.pending));
    return std::move(replacement.file);
}

FileSystem::Replacement BatchFileSystem::OpenReplacement(const std::string& path) {
    return system_.OpenReplacement(path);
}

FileKind BatchFileSystem::KindOf(const std::string& path) {
    return system_.KindOf(path);
}

bool BatchFileSystem::SameFile(const std::string& one, const std::string& other) {
    return system_.SameFile(one, other);
}

}  // namespace quillmere
