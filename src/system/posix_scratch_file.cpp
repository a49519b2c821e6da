#include "system/posix_scratch_file.h"

#include "system/posix_descriptor.h"
#include "system/posix_temporary_file.h"

#include <cerrno>
#include <cstdlib>
#include <utility>

namespace quillmere::posix {

namespace {

class PosixScratchFile : public ScratchFile {
 public:
    explicit PosixScratchFile(Descriptor folder)
        : folder_(std::move(folder)), temporary_(folder_, folder_.Path()) {
        temporary_.RemoveName();
    }

    void Append(std::string_view bytes) override { temporary_.File().Write(bytes); }
    /// Brings the file to the disk: a share may tell only then that it is full, and would give other bytes
    /// back than it got.
    void FinishWriting() override { temporary_.File().Sync(); }
    std::size_t ReadAt(std::int64_t offset, char* buffer, std::size_t size) const override {
        return temporary_.File().ReadAt(offset, buffer, size);
    }

 private:
    Descriptor folder_;
    TemporaryFile temporary_;
};

std::string FolderForScratch() {
    const char* const chosen = std::getenv("TMPDIR");
    if (chosen != nullptr && *chosen != '\0') return chosen;
    return Status("/var/tmp") ? "/var/tmp" : "/tmp";
}

}  // namespace

std::unique_ptr<ScratchFile> CreateScratchFile() {
    const std::string path = FolderForScratch();
    const int number = OpenNumber(path, O_RDONLY | O_DIRECTORY);
    if (number < 0 && errno == ENOENT) throw Failure(FailureKind::PathNotFound, path);
    if (number < 0) throw OpenFailure(errno, path, Access::Read);
    return std::make_unique<PosixScratchFile>(Descriptor(number, path));
}

}  // namespace quillmere::posix
