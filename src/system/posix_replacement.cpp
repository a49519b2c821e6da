#include "system/posix_replacement.h"

#include "system/posix_access.h"
#include "system/posix_extensions.h"
#include "system/posix_target.h"
#include "system/posix_temporary_file.h"
#include "system/write_behind.h"

#include <unistd.h>

#include <cerrno>
#include <utility>

namespace quillmere::posix {

namespace {

/// The new file of a replacement. So that little is left to do when it is brought to the disk, the system is
/// asked to start early.
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

    void Close() override { file_.Close(); }

 private:
    static constexpr off_t mostNotStarted = off_t{4} * 1024 * 1024;  // bytes

    Descriptor file_;
    off_t started_ = 0;     ///< how many bytes, from the file's beginning on, are on their way to the disk
    off_t notStarted_ = 0;  ///< how many bytes follow them
};

class PosixReplacement : public PendingReplacement {
 public:
    explicit PosixReplacement(Target target)
        : target_(std::move(target)), temporary_(target_.folder, target_.path) {}

    /// Gives the new file its permissions: those of the old file or, if there is none, those of the source.
    void GiveAccess(const FileAccess& model) const {
        if (target_.IsMissing()) return GiveNoMoreAccess(temporary_.File(), model, target_.folder);
        GiveSameAccess(temporary_.File(), model);
    }

    int NewFile() const { return temporary_.File().Number(); }

    void BringToDisk() override { temporary_.File().Sync(); }

    void KeepOldFile() override {
        if (!OldFileIsThere()) return;
        const int folder = target_.folder.Number();
        const TemporaryName link(folder);
        if (linkat(folder, target_.name.c_str(), folder, link.Text().c_str(), 0) != 0) throw NotKept(errno);
        const bool kept = renameat(folder, link.Text().c_str(), folder, (target_.name + "~").c_str()) == 0;
        const int error = errno;
        unlinkat(folder, link.Text().c_str(), 0);  // it stays when both names had the old file already
        if (!kept) throw OpenFailure(error, target_.path + "~", Access::Write);
        SyncFolder();
    }

    void Commit() override {
        const bool replaces = OldFileIsThere();
        target_.file = Descriptor(-1, target_.path);  // NFS would keep it under another name
        temporary_.PutInPlace(target_.name, replaces);
        SyncFolder();
    }

 private:
    /// Brings the folder to the disk, since it holds the files' names, unless it may not be read.
    void SyncFolder() const {
        if (target_.folderCanBeRead) target_.folder.Sync();
    }

    /// Returns false when there is no file, and fails when it is not the one that was there at the start.
    /// That one is open until then, so its number is not given to another file.
    bool OldFileIsThere() const {
        struct stat present {};
        const int folder = target_.folder.Number();
        if (fstatat(folder, target_.name.c_str(), &present, AT_SYMLINK_NOFOLLOW) != 0) {
            if (errno == ENOENT) return false;
            throw OpenFailure(errno, target_.path, Access::Write);
        }
        if (target_.IsMissing() || !StateOf(present).IsSameFile(StateOf(target_.status)))
            throw ReplacedMeanwhile(target_.path);
        return true;
    }

    /// The failure to keep the old file that an `error` number stands for.
    Failure NotKept(int error) const {
        const std::string path = target_.path + "~";
        if (error == EPERM || error == EOPNOTSUPP || error == ENOSYS || error == EMLINK) {
            return Failure(FailureKind::PathFileAccessError,
                           path + " (the old file cannot be kept: no hard link to it can be made)")
                .Advised("Copy the old file yourself, or use a file system that has hard links.");
        }
        return OpenFailure(error, path, Access::Write);
    }

    Target target_;
    TemporaryFile temporary_;
};

/// Whether the folder is sticky, so that only owners may replace a file, and the user owns neither the file
/// nor the folder.
bool IsForeignInStickyFolder(const Target& target) {
    const struct stat folder = target.folder.Status();
    const uid_t user = geteuid();
    return (folder.st_mode & S_ISVTX) != 0 && user != 0 && user != target.status.st_uid &&
           user != folder.st_uid;
}

/// Why a file that may be written cannot be replaced; empty when no reason is known.
std::string Obstacle(const Target& target) {
    const FileAttributes attributes = AttributesOf(target.file.Number());
    if (attributes.appendOnly) return "may only grow";
    if (attributes.mountPoint) return "mounted by itself";
    if (IsForeignInStickyFolder(target)) return "only its owner may replace it";
    return {};
}

void CheckReplaceable(const Target& target, const std::optional<FileSystem::Source>& source) {
    if (target.FolderIsMissing()) throw Failure(FailureKind::PathNotFound, target.path);
    const bool regular = target.IsMissing() ? target.name.back() != '/' : S_ISREG(target.status.st_mode);
    if (target.descriptor || !regular) throw Failure(FailureKind::PathFileAccessError, target.path);
    if (target.IsMissing()) return;
    if (!posix::MayBeWritten(target.folder.Number(), target.name))
        throw OpenFailure(errno, target.path, Access::Write);
    std::string obstacle = Obstacle(target);
    if (source && StateOf(target.status).IsSameFile(source->state)) obstacle = "it is the file that is read";
    if (!obstacle.empty())
        throw Failure(FailureKind::PathFileAccessError, target.path + " (" + obstacle + ")");
}

FileAccess AccessToOldFile(const Target& target) {
    const auto open = [&](int flags) {
        return OpenNumberIn(target.folder.Number(), target.name, flags | O_NOFOLLOW | O_NONBLOCK);
    };
    int number = open(O_RDONLY);
    if (number < 0 && errno == EACCES) number = open(O_WRONLY);
    if (number < 0) throw OpenFailure(errno, target.path, Access::Write);
    const Descriptor file(number, target.path);
    if (!StateOf(file.Status()).IsSameFile(StateOf(target.status))) throw ReplacedMeanwhile(target.path);
    return AccessTo(file);
}

FileAccess AccessToSource(const FileSystem::Source& source) {
    const Descriptor file(OpenNumber(source.path, O_RDONLY | O_NONBLOCK), source.path);
    if (file.Number() < 0) throw OpenFailure(errno, source.path, Access::Read);
    if (!StateOf(file.Status()).IsSameFile(source.state))
        throw Failure(FailureKind::FileChanged, source.path + " (replaced while it was read)");
    return AccessTo(file);
}

}  // namespace

FileSystem::Replacement OpenReplacement(const std::string& path,
                                        const std::optional<FileSystem::Source>& source) {
    Target target = Resolve(path);
    CheckReplaceable(target, source);
    FileAccess access;
    if (!target.IsMissing()) {
        access = AccessToOldFile(target);
    } else if (source) {
        access = AccessToSource(*source);
    }
    auto pending = std::make_unique<PosixReplacement>(std::move(target));
    pending->GiveAccess(access);
    Descriptor file = Duplicate(pending->NewFile(), path);
    return {std::move(pending), WriteBehind(std::make_unique<ReplacingFile>(std::move(file)))};
}

}  // namespace quillmere::posix
