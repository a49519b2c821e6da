#include "system/posix_replacement.h"

#include "system/posix_descriptor.h"
#include "system/posix_extensions.h"
#include "system/write_behind.h"

#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <system_error>
#include <utility>

namespace quillmere::posix {

namespace {

namespace fs = std::filesystem;

constexpr mode_t ownerOnlyMode = 0600;  // until the file has the permissions of the one it replaces
constexpr mode_t permissionBits = 0777;

/// The new file of a replacement. Closing it brings it to the disk: were it put in place before that, a power
/// cut could leave it empty, and a disk that fails later would go unnoticed. So that little is left to do
/// then, the system is asked to start early.
class ReplacingFile : public WritableFile {
 public:
    explicit ReplacingFile(Descriptor file) : file_(std::move(file)) {}

    void Write(std::string_view bytes) override {
        file_.Write(bytes);
        notStarted_ += static_cast<off_t>(bytes.size());
        if (notStarted_ < mostNotStarted) return;
        StartWritingToDisk(file_.Number(), started_, notStarted_);
        started_ += std::exchange(notStarted_, 0);
    }

    void Close() override {
        file_.Sync();
        file_.Close();
    }

 private:
    static constexpr off_t mostNotStarted = off_t{4} * 1024 * 1024;  // bytes

    Descriptor file_;
    off_t started_ = 0;     ///< how many bytes, from the file's beginning on, are on their way to the disk
    off_t notStarted_ = 0;  ///< how many bytes follow them
};

class PosixReplacement : public PendingReplacement {
 public:
    PosixReplacement(std::string temporary, std::string target)
        : temporary_(std::move(temporary)), target_(std::move(target)) {}
    ~PosixReplacement() override {
        if (!committed_) unlink(temporary_.c_str());
    }
    PosixReplacement(const PosixReplacement&) = delete;
    PosixReplacement& operator=(const PosixReplacement&) = delete;

    /// Brings the folder to the disk, too, since it holds the file's name, unless it may not be read.
    void Commit() override {
        if (rename(temporary_.c_str(), target_.c_str()) != 0) {
            throw OpenFailure(errno, target_, Access::Write);
        }
        committed_ = true;
        const Descriptor folder(OpenNumber(FolderOf(target_), O_RDONLY | O_DIRECTORY), target_);
        if (folder.Number() >= 0) folder.Sync();
    }

 private:
    std::string temporary_;
    std::string target_;
    bool committed_ = false;
};

struct TemporaryFile {
    std::string path;
    Descriptor file;  ///< its failures name the target, which the user knows
};

/// Creates a file with a name of its own in the folder of `target` and opens it for writing.
TemporaryFile CreateTemporaryBeside(const std::string& target, mode_t mode) {
    constexpr int mostAttempts = 1000;
    for (int attempt = 0; attempt < mostAttempts; ++attempt) {
        const std::string name =
            "quillmere-" + std::to_string(getpid()) + "-" + std::to_string(attempt) + ".tmp";
        const std::string path = (fs::path(target).parent_path() / name).string();
        const int number = OpenNumber(path, O_WRONLY | O_CREAT | O_EXCL, mode);
        if (number >= 0) return {path, {number, target}};
        if (errno == EACCES) throw Failure(FailureKind::PermissionDenied, target);
        if (errno != EEXIST) throw OpenFailure(errno, target, Access::Write);
    }
    throw Failure(FailureKind::PathFileAccessError, target);
}

/// Gives the new file the permissions and, where the system allows it, the owner and the group of the one
/// that it replaces. Where the group becomes another one, it gets only the permissions that everyone had.
void TakeOverPermissions(const Descriptor& file, const struct stat& replaced) {
    mode_t mode = replaced.st_mode & permissionBits;
    const bool sameGroup = fchown(file.Number(), replaced.st_uid, replaced.st_gid) == 0 ||
                           fchown(file.Number(), static_cast<uid_t>(-1), replaced.st_gid) == 0 ||
                           file.Status().st_gid == replaced.st_gid;
    if (!sameGroup) mode = (mode & ~mode_t{S_IRWXG}) | (mode & S_IRWXO) << 3;
    if (fchmod(file.Number(), mode) != 0) throw OpenFailure(errno, file.Path(), Access::Write);
}

/// Whether the folder is sticky, so that only owners may replace a file, and the user owns neither the file
/// nor the folder.
bool IsForeignInStickyFolder(const std::string& target, const struct stat& file) {
    const auto folder = Status(FolderOf(target));
    const uid_t user = geteuid();
    return folder && (folder->st_mode & S_ISVTX) != 0 && user != 0 && user != file.st_uid &&
           user != folder->st_uid;
}

/// Why a file that may be written cannot be replaced; empty when no reason is known.
std::string Obstacle(const std::string& target, const struct stat& file) {
    const FileAttributes attributes = AttributesOf(target);
    if (attributes.appendOnly) return "may only grow";
    if (attributes.mountPoint) return "mounted by itself";
    if (IsForeignInStickyFolder(target, file)) return "only its owner may replace it";
    return {};
}

void CheckReplaceable(const std::string& target, const std::optional<struct stat>& replaced) {
    const bool folder = replaced ? S_ISDIR(replaced->st_mode) : target.back() == '/';
    if (folder) throw Failure(FailureKind::PathFileAccessError, target);
    if (!replaced) return;
    if (access(target.c_str(), W_OK) != 0) throw OpenFailure(errno, target, Access::Write);
    const std::string obstacle = Obstacle(target, *replaced);
    if (!obstacle.empty()) throw Failure(FailureKind::PathFileAccessError, target + " (" + obstacle + ")");
}

}  // namespace

LinkTarget FollowLinks(const std::string& path) {
    constexpr int mostLinks = 40;
    fs::path current = path;
    std::error_code error;
    for (int i = 0; i < mostLinks; ++i) {
        const std::optional<int> descriptor = DescriptorNamed(current);
        if (descriptor) return {current.string(), descriptor};
        if (!fs::is_symlink(current, error)) break;
        const fs::path next = fs::read_symlink(current, error);
        if (error) break;
        current = current.parent_path() / next;  // an absolute link replaces the whole path
    }
    return {current.string(), std::nullopt};
}

FileSystem::Replacement OpenReplacement(const std::string& path) {
    CheckName(path);
    const std::string target = FollowLinks(path).path;
    const auto replaced = Status(target);
    if (!replaced && errno != ENOENT) throw OpenFailure(errno, target, Access::Write);
    CheckReplaceable(target, replaced);
    auto [temporary, file] = CreateTemporaryBeside(target, replaced ? ownerOnlyMode : newFileMode);
    auto pending = std::make_unique<PosixReplacement>(temporary, target);
    if (replaced) TakeOverPermissions(file, *replaced);
    return {std::move(pending), WriteBehind(std::make_unique<ReplacingFile>(std::move(file)))};
}

}  // namespace quillmere::posix
