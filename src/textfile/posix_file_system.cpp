#include "textfile/failure.h"
#include "textfile/file_system.h"
#include "textfile/write_behind.h"

#include <fcntl.h>
#include <signal.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <optional>
#include <system_error>
#include <utility>

namespace quillmere {

namespace {

namespace fs = std::filesystem;

enum class Access { Read, Write };

constexpr mode_t newFileMode = 0666;    // less the umask
constexpr mode_t ownerOnlyMode = 0600;  // until the file has the permissions of the one it replaces
constexpr mode_t permissionBits = 0777;

std::optional<struct stat> Status(const std::string& path) {
    struct stat status {};
    if (stat(path.c_str(), &status) != 0) return std::nullopt;
    return status;
}

bool FolderExists(const std::string& path) {
    const std::string folder = fs::path(path).parent_path().string();
    const auto status = Status(folder.empty() ? "." : folder);
    return status && S_ISDIR(status->st_mode);
}

/// The failure that stands for an `error` number met while opening `path`.
Failure OpenFailure(int error, const std::string& path, Access access) {
    switch (error) {
        case ENOENT:
            return Failure(FolderExists(path) ? FailureKind::FileNotFound : FailureKind::PathNotFound, path);
        case ENOTDIR:
            return Failure(FailureKind::PathNotFound, path);
        case EMFILE:
        case ENFILE:
            return Failure(FailureKind::TooManyFiles, path);
        case ENAMETOOLONG:
        case EINVAL:
            return Failure(FailureKind::BadFileNameOrNumber, path);
        case ENOSPC:
        case EDQUOT:
            return Failure(FailureKind::DiskFull, path);
        case ENOMEM:
            return Failure(FailureKind::OutOfMemory, path);
        case EIO:
            return Failure(FailureKind::DeviceIoError, path);
        case EACCES: {
            const bool readOnlyFile = access == Access::Write && Status(path).has_value();
            return Failure(readOnlyFile ? FailureKind::PathFileAccessError : FailureKind::PermissionDenied,
                           path);
        }
        case EBUSY:
        case ETXTBSY:
            return Failure(FailureKind::PermissionDenied, path);
        default:
            return Failure(FailureKind::PathFileAccessError, path);
    }
}

/// The failure that stands for an `error` number met while reading, writing or closing `path`.
Failure TransferFailure(int error, const std::string& path) {
    const bool full = error == ENOSPC || error == EDQUOT;
    return Failure(full ? FailureKind::DiskFull : FailureKind::DeviceIoError, path);
}

void CheckName(const std::string& path) {
    if (path.empty() || path.find('\0') != std::string::npos) {
        throw Failure(FailureKind::BadFileNameOrNumber, path);
    }
}

/// An open file descriptor and the path that its failures name.
class Descriptor {
 public:
    Descriptor(int number, std::string path) : number_(number), path_(std::move(path)) {}
    ~Descriptor() {
        if (number_ >= 0) close(number_);
    }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    Descriptor(Descriptor&& other) noexcept
        : number_(std::exchange(other.number_, -1)), path_(std::move(other.path_)) {}
    Descriptor& operator=(Descriptor&&) = delete;

    int Number() const { return number_; }
    const std::string& Path() const { return path_; }

    struct stat Status() const {
        struct stat status {};
        if (fstat(number_, &status) != 0) throw TransferFailure(errno, path_);
        return status;
    }
    void Close() {
        if (close(std::exchange(number_, -1)) != 0) throw TransferFailure(errno, path_);
    }

 private:
    int number_;
    std::string path_;
};

/// Calls open(2), again when a signal came between. Returns a negative number and leaves errno set on
/// failure.
int OpenNumber(const std::string& path, int flags, mode_t mode) {
    int number = -1;
    do {
        number = open(path.c_str(), flags | O_CLOEXEC | O_NOCTTY, mode);
    } while (number < 0 && errno == EINTR);
    return number;
}

Descriptor Open(const std::string& path, int flags, Access access) {
    CheckName(path);
    const int number = OpenNumber(path, flags, newFileMode);
    if (number < 0) throw OpenFailure(errno, path, access);
    return {number, path};
}

class PosixReadableFile : public ReadableFile {
 public:
    explicit PosixReadableFile(Descriptor descriptor) : descriptor_(std::move(descriptor)) {
        const struct stat status = descriptor_.Status();
        if (S_ISDIR(status.st_mode)) throw Failure(FailureKind::PathFileAccessError, descriptor_.Path());
        if (S_ISREG(status.st_mode)) bytesExpected_ = status.st_size;
    }

    std::size_t Read(char* buffer, std::size_t size) override {
        ssize_t count = -1;
        do {
            count = read(descriptor_.Number(), buffer, size);
        } while (count < 0 && errno == EINTR);
        if (count < 0) throw TransferFailure(errno, descriptor_.Path());
        bytesExpected_ -= count;
        if (count == 0 && bytesExpected_ > 0) {
            throw Failure(FailureKind::InputPastEnd, descriptor_.Path() + " (cut short while it was read)");
        }
        return static_cast<std::size_t>(count);
    }

    bool CanBeReadAgain() const override { return lseek(descriptor_.Number(), 0, SEEK_CUR) >= 0; }

 private:
    Descriptor descriptor_;
    off_t bytesExpected_ = 0;  ///< of those that the file held when it was opened, how many are still to come
};

class PosixWritableFile : public WritableFile {
 public:
    explicit PosixWritableFile(Descriptor descriptor) : descriptor_(std::move(descriptor)) {}

    void Write(std::string_view bytes) override {
        while (!bytes.empty()) {
            const ssize_t count = write(descriptor_.Number(), bytes.data(), bytes.size());
            if (count == 0) throw Failure(FailureKind::DeviceIoError, descriptor_.Path());
            if (count > 0) {
                bytes.remove_prefix(static_cast<std::size_t>(count));
            } else if (errno != EINTR) {
                throw TransferFailure(errno, descriptor_.Path());
            }
        }
    }

    void Close() override { descriptor_.Close(); }

 protected:
    int Number() const { return descriptor_.Number(); }

 private:
    Descriptor descriptor_;
};

/// The new file of a replacement. Its bytes have to be on the disk before it takes the old one's place, so
/// the system is told to start early.
class ReplacingFile : public PosixWritableFile {
 public:
    using PosixWritableFile::PosixWritableFile;

    void Write(std::string_view bytes) override {
        PosixWritableFile::Write(bytes);
        notStarted_ += static_cast<off_t>(bytes.size());
        if (notStarted_ < mostNotStarted) return;
        // Only a hint: what becomes of the bytes shows when all of them are brought to the disk.
        sync_file_range(Number(), started_, notStarted_, SYNC_FILE_RANGE_WRITE);
        started_ += std::exchange(notStarted_, 0);
    }

 private:
    static constexpr off_t mostNotStarted = off_t{4} * 1024 * 1024;  // bytes

    off_t started_ = 0;  ///< bytes on their way to the disk, from the file's beginning on
    off_t notStarted_ = 0;
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

    /// Put in place before its bytes are on the disk, the file could be found empty after a power cut, and a
    /// disk that fails while the system empties its cache would go unseen. The folder holds the file's name;
    /// one that may not be read is left to the system.
    void Commit() override {
        const Descriptor file(OpenNumber(temporary_, O_RDONLY, 0), target_);
        if (file.Number() < 0) throw OpenFailure(errno, target_, Access::Write);
        BringToDisk(file);
        if (rename(temporary_.c_str(), target_.c_str()) != 0) {
            throw OpenFailure(errno, target_, Access::Write);
        }
        committed_ = true;
        const Descriptor folder(OpenNumber(FolderOf(target_), O_RDONLY | O_DIRECTORY, 0), target_);
        if (folder.Number() >= 0) BringToDisk(folder);
    }

 private:
    /// A file system without a disk may say EINVAL.
    static void BringToDisk(const Descriptor& opened) {
        if (fsync(opened.Number()) != 0 && errno != EINVAL) throw TransferFailure(errno, opened.Path());
    }
    static std::string FolderOf(const std::string& path) {
        const fs::path folder = fs::path(path).parent_path();
        return folder.empty() ? "." : folder.string();
    }

    std::string temporary_;
    std::string target_;
    bool committed_ = false;
};

/// The path that a chain of links ends at, whether or not a file stands there.
std::string FollowLinks(const std::string& path) {
    constexpr int mostLinks = 40;
    fs::path current = path;
    std::error_code error;
    for (int i = 0; i < mostLinks && fs::is_symlink(current, error); ++i) {
        const fs::path next = fs::read_symlink(current, error);
        if (error) break;
        current = current.parent_path() / next;  // an absolute link replaces the whole path
    }
    return current.string();
}

struct TemporaryFile {
    std::string path;
    Descriptor file;  ///< its failures name the target, which the user knows
};

/// Creates a file with a name of its own in the folder of `target` and opens it for writing.
TemporaryFile CreateTemporaryBeside(const std::string& target, mode_t mode) {
    constexpr int mostAttempts = 1000;
    const fs::path folder = fs::path(target).parent_path();
    for (int attempt = 0; attempt < mostAttempts; ++attempt) {
        const std::string name =
            "quillmere-" + std::to_string(getpid()) + "-" + std::to_string(attempt) + ".tmp";
        const std::string path = (folder / name).string();
        const int number = OpenNumber(path, O_WRONLY | O_CREAT | O_EXCL, mode);
        if (number >= 0) return {path, {number, target}};
        if (errno == EACCES) throw Failure(FailureKind::PermissionDenied, target);
        if (errno != EEXIST) throw OpenFailure(errno, target, Access::Write);
    }
    throw Failure(FailureKind::PathFileAccessError, target);
}

/// Gives the new file the permissions, and where the system allows it the owner, of the one that it replaces.
void TakeOverPermissions(const Descriptor& file, const struct stat& replaced) {
    if (fchown(file.Number(), replaced.st_uid, replaced.st_gid) != 0) {
        // Only the superuser may give files away; the file then belongs to whoever runs the program.
    }
    if (fchmod(file.Number(), replaced.st_mode & permissionBits) != 0) {
        throw OpenFailure(errno, file.Path(), Access::Write);
    }
}

class PosixFileSystem : public FileSystem {
 public:
    /// From here on a reader that closes its pipe and a file that may not grow are failures of the write that
    /// meets them; by default they end the program.
    PosixFileSystem() {
        for (const int signal : {SIGPIPE, SIGXFSZ})
            ::signal(signal, SIG_IGN);
    }

    std::unique_ptr<ReadableFile> OpenForRead(const std::string& path) override {
        return std::make_unique<PosixReadableFile>(Open(path, O_RDONLY, Access::Read));
    }

    std::unique_ptr<WritableFile> OpenForWrite(const std::string& path) override {
        return WriteBehind(
            std::make_unique<PosixWritableFile>(Open(path, O_WRONLY | O_CREAT | O_TRUNC, Access::Write)));
    }

    Replacement OpenReplacement(const std::string& path) override {
        CheckName(path);
        const std::string target = FollowLinks(path);
        const auto replaced = Status(target);
        CheckReplaceable(target, replaced);
        auto [temporary, file] = CreateTemporaryBeside(target, replaced ? ownerOnlyMode : newFileMode);
        auto pending = std::make_unique<PosixReplacement>(temporary, target);
        if (replaced) TakeOverPermissions(file, *replaced);
        return {std::move(pending), WriteBehind(std::make_unique<ReplacingFile>(std::move(file)))};
    }

    FileKind KindOf(const std::string& path) override {
        const auto status = Status(path);
        if (!status) return FileKind::Missing;
        if (S_ISREG(status->st_mode)) return FileKind::Regular;
        return S_ISDIR(status->st_mode) ? FileKind::Folder : FileKind::Other;
    }

    bool SameFile(const std::string& one, const std::string& other) override {
        const auto oneStatus = Status(one);
        const auto otherStatus = Status(other);
        if (oneStatus && otherStatus) {
            return oneStatus->st_dev == otherStatus->st_dev && oneStatus->st_ino == otherStatus->st_ino;
        }
        if (oneStatus || otherStatus) return false;
        std::error_code error;
        return fs::weakly_canonical(FollowLinks(one), error) ==
               fs::weakly_canonical(FollowLinks(other), error);
    }

 private:
    static void CheckReplaceable(const std::string& target, const std::optional<struct stat>& replaced) {
        const bool folder = replaced ? S_ISDIR(replaced->st_mode) : target.back() == '/';
        if (folder) throw Failure(FailureKind::PathFileAccessError, target);
        if (replaced && access(target.c_str(), W_OK) != 0) throw OpenFailure(errno, target, Access::Write);
    }
};

}  // namespace

FileSystem& SystemFileSystem() {
    static PosixFileSystem system;
    return system;
}

}  // namespace quillmere
