#include "system/file_system.h"
#include "system/posix_descriptor.h"
#include "system/posix_replacement.h"
#include "system/write_behind.h"

#include <signal.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <optional>
#include <system_error>
#include <utility>

namespace quillmere {

namespace {

namespace fs = std::filesystem;
using namespace posix;

/// A file that fails at its end when it was cut short or changed since it was opened.
class PosixReadableFile : public ReadableFile {
 public:
    explicit PosixReadableFile(Descriptor file) : file_(std::move(file)), opened_(file_.Status()) {
        if (S_ISDIR(opened_.st_mode)) throw Failure(FailureKind::PathFileAccessError, file_.Path());
        if (S_ISREG(opened_.st_mode)) bytesExpected_ = opened_.st_size;
    }

    std::size_t Read(char* buffer, std::size_t size) override {
        const std::size_t count = file_.Read(buffer, size);
        bytesExpected_ -= static_cast<off_t>(count);
        if (count == 0) CheckUnchanged();
        return count;
    }

    bool CanBeReadAgain() const override { return lseek(file_.Number(), 0, SEEK_CUR) >= 0; }
    FileState State() const override { return StateOf(file_.Status()); }

 private:
    /// Only for files with a size: those that the system makes up, as in /proc, have none and always change.
    void CheckUnchanged() const {
        if (!S_ISREG(opened_.st_mode) || opened_.st_size == 0) return;
        if (bytesExpected_ > 0) {
            throw Failure(FailureKind::InputPastEnd, file_.Path() + " (cut short while it was read)");
        }
        const struct timespec before = opened_.st_mtim;
        const struct timespec now = file_.Status().st_mtim;
        if (now.tv_sec != before.tv_sec || now.tv_nsec != before.tv_nsec) {
            throw Failure(FailureKind::DeviceIoError, file_.Path() + " (changed while it was read)");
        }
    }

    Descriptor file_;
    struct stat opened_;       ///< the status when it was opened
    off_t bytesExpected_ = 0;  ///< of those that the file held then, how many are still to be read
};

class PosixWritableFile : public WritableFile {
 public:
    explicit PosixWritableFile(Descriptor file) : file_(std::move(file)) {}
    void Write(std::string_view bytes) override { file_.Write(bytes); }
    void Close() override { file_.Close(); }

 private:
    Descriptor file_;
};

Descriptor Open(const std::string& path, int flags, Access access) {
    CheckName(path);
    const int number = OpenNumber(path, flags, newFileMode);
    if (number < 0) throw OpenFailure(errno, path, access);
    return {number, path};
}

/// Another descriptor for the file that is already open under `number`. Opened by its name, the file would be
/// written from its beginning, over what the program that started this one has written there.
Descriptor Duplicate(int number, const std::string& path) {
    const int duplicate = fcntl(number, F_DUPFD_CLOEXEC, 0);
    if (duplicate < 0) throw OpenFailure(errno, path, Access::Write);
    return {duplicate, path};
}

class PosixFileSystem : public FileSystem {
 public:
    /// Ignores the signals that would end the program when the reader of a pipe goes away or a file may not
    /// grow: the write fails instead.
    PosixFileSystem() {
        for (const int signal : {SIGPIPE, SIGXFSZ})
            ::signal(signal, SIG_IGN);
    }

    std::unique_ptr<ReadableFile> OpenForRead(const std::string& path) override {
        return std::make_unique<PosixReadableFile>(Open(path, O_RDONLY, Access::Read));
    }

    std::unique_ptr<WritableFile> OpenForWrite(const std::string& path) override {
        const std::optional<int> opened = FollowLinks(path).descriptor;
        return WriteBehind(std::make_unique<PosixWritableFile>(
            opened ? Duplicate(*opened, path) : Open(path, O_WRONLY | O_CREAT | O_TRUNC, Access::Write)));
    }

    Replacement OpenReplacement(const std::string& path) override { return posix::OpenReplacement(path); }

    FileKind KindOf(const std::string& path) override {
        const auto status = Status(path);
        if (!status) return FileKind::Missing;
        if (FollowLinks(path).descriptor) return FileKind::Other;
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
        const fs::path oneCommon = fs::weakly_canonical(FollowLinks(one).path, error);
        const fs::path otherCommon = fs::weakly_canonical(FollowLinks(other).path, error);
        const bool known = !oneCommon.empty() && !otherCommon.empty();
        return known ? oneCommon == otherCommon : one == other;
    }
};

}  // namespace

FileSystem& SystemFileSystem() {
    static PosixFileSystem system;
    return system;
}

}  // namespace quillmere
