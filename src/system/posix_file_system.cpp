#include "system/file_system.h"
#include "system/posix_descriptor.h"
#include "system/posix_replacement.h"
#include "system/posix_scratch_file.h"
#include "system/posix_target.h"
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

using namespace posix;

/// A file that fails at its end when it was cut short or changed since it was opened.
class PosixReadableFile : public ReadableFile {
 public:
    explicit PosixReadableFile(Descriptor file) : file_(std::move(file)), opened_(file_.Status()) {
        file_.WaitCancellably();
        if (S_ISDIR(opened_.st_mode)) throw Failure(FailureKind::PathFileAccessError, file_.Path());
        if (S_ISREG(opened_.st_mode)) bytesExpected_ = opened_.st_size - lseek(file_.Number(), 0, SEEK_CUR);
    }

    std::size_t Read(char* buffer, std::size_t size) override {
        const std::size_t count = file_.Read(buffer, size);
        bytesExpected_ -= static_cast<off_t>(count);
        if (count == 0) CheckEnd();
        return count;
    }

    bool CanBeReadAgain() const override { return lseek(file_.Number(), 0, SEEK_CUR) >= 0; }
    FileState State() const override { return StateOf(file_.Status()); }

 private:
    /// A file cut short may have grown again, so what is missing is looked at, too.
    void CheckEnd() const {
        if (!S_ISREG(opened_.st_mode)) return;
        FileState now = State();
        if (bytesExpected_ > 0) now.size = opened_.st_size - bytesExpected_;
        CheckUnchanged(StateOf(opened_), now, file_.Path());
    }

    Descriptor file_;
    struct stat opened_;       ///< the status when it was opened
    off_t bytesExpected_ = 0;  ///< of those that the file held then, how many are still to be read; negative
                               ///< when it was opened beyond its end
};

class PosixWritableFile : public WritableFile {
 public:
    explicit PosixWritableFile(Descriptor file) : file_(std::move(file)) { file_.WaitCancellably(); }
    void Write(std::string_view bytes) override { file_.Write(bytes); }
    void Close() override { file_.Close(); }

 private:
    Descriptor file_;
};

bool IsPipe(const std::string& path) {
    const auto status = Status(path);
    return status && S_ISFIFO(status->st_mode);
}

/// A pipe with a name is opened without a wait for somebody to write to it; Read waits instead. It would also
/// wait when all writers of an open descriptor's pipe are gone, if that were opened anew.
Descriptor OpenToRead(const std::string& path) {
    CheckName(path);
    const bool pipe = IsPipe(path);
    const auto descriptor = pipe ? Resolve(path).descriptor : std::nullopt;
    if (descriptor) return Duplicate(*descriptor, path);
    const int number = OpenNumber(path, O_RDONLY | (pipe ? O_NONBLOCK : 0));
    if (number < 0) throw OpenFailure(errno, path, Access::Read);
    return {number, path};
}

/// Whether the program was started with the descriptor. Its own, all of which are closed on exec, may have
/// got the number of one that it was started without.
bool IsInherited(int number) {
    const int flags = fcntl(number, F_GETFD);
    return flags >= 0 && (flags & FD_CLOEXEC) == 0;
}

/// Opened by its name, an open descriptor would be written from its beginning, over what the program that
/// started this one has written there. A pipe or a terminal has no beginning: where it can be opened anew at
/// `path`, a write to an opening of its own need not wait. Failures name `name`.
Descriptor OpenDescriptor(int number, const std::string& path, const std::string& name) {
    const bool mayWait = IsPipe(path) || isatty(number) != 0;
    const int own = mayWait ? OpenNumber(path, O_WRONLY | O_NONBLOCK) : -1;
    return own >= 0 ? Descriptor(own, name) : Duplicate(number, name);
}

/// A pipe with a name cannot be opened until somebody reads from it, except by a call that waits for that.
/// Meanwhile a file may be put in its place. So only what was missing or a regular file is created or
/// emptied.
Descriptor OpenToWrite(const Target& target, bool mayBeRegular) {
    if (target.descriptor) {
        if (!IsInherited(*target.descriptor)) throw Failure(FailureKind::PathFileAccessError, target.path);
        return OpenDescriptor(*target.descriptor, target.path, target.path);
    }
    if (target.FolderIsMissing()) throw Failure(FailureKind::PathNotFound, target.path);
    const bool special = !target.IsMissing() && !S_ISREG(target.status.st_mode);
    if (!special && !mayBeRegular) throw ReplacedMeanwhile(target.path);
    const bool pipe = special && S_ISFIFO(target.status.st_mode);
    const int flags = O_WRONLY | (special ? 0 : O_CREAT | O_TRUNC) | (pipe ? O_NONBLOCK : 0) |
                      (target.throughSystemLink ? 0 : O_NOFOLLOW);
    for (;;) {
        const int number = OpenNumberIn(target.folder.Number(), target.name, flags, newFileMode);
        if (number >= 0) {
            Descriptor file(number, target.path);
            if (special && !StateOf(file.Status()).IsSameFile(StateOf(target.status)))
                throw ReplacedMeanwhile(target.path);
            if (isatty(number) != 0) fcntl(number, F_SETFL, O_NONBLOCK);
            return file;
        }
        if (!pipe || errno != ENXIO) throw OpenFailure(errno, target.path, Access::Write);
        WaitAMoment();
    }
}

/// The status of what `path` leads to; nothing when there is no such file.
std::optional<struct stat> StatusOf(const std::string& path) {
    CheckName(path);
    auto status = Status(path);
    const int error = errno;
    if (status || error == ENOENT || error == ENOTDIR) return status;
    Resolve(path);  // says more of a link that the kernel refuses to follow
    throw OpenFailure(error, path, Access::Read);
}

/// Whether two files that do not exist yet have one place. Another way of writing a name, where the file
/// system does not tell small letters from capitals, shows only when the second file is put in place.
bool WillBeSameFile(const Target& one, const Target& other) {
    if (one.folder.Number() < 0 || other.folder.Number() < 0) return one.path == other.path;
    return one.name == other.name && StateOf(one.folder.Status()).IsSameFile(StateOf(other.folder.Status()));
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
        return std::make_unique<PosixReadableFile>(OpenToRead(path));
    }

    std::unique_ptr<WritableFile> OpenForWrite(const std::string& path) override {
        return WriteBehind(std::make_unique<PosixWritableFile>(OpenToWrite(Resolve(path), true)));
    }

    std::unique_ptr<WritableFile> OpenDirectly(const std::string& path) override {
        return WriteBehind(std::make_unique<PosixWritableFile>(OpenToWrite(Resolve(path), false)));
    }

    std::unique_ptr<ReadableFile> OpenStandardInput() override {
        if (!IsInherited(STDIN_FILENO)) throw StreamIsClosed(standardInput);
        return std::make_unique<PosixReadableFile>(Duplicate(STDIN_FILENO, standardInput));
    }

    std::unique_ptr<WritableFile> OpenStandardOutput() override {
        if (!IsInherited(STDOUT_FILENO)) throw StreamIsClosed(standardOutput);
        return WriteBehind(std::make_unique<PosixWritableFile>(
            OpenDescriptor(STDOUT_FILENO, "/dev/stdout", standardOutput)));
    }

    std::unique_ptr<ScratchFile> CreateScratchFile() override { return posix::CreateScratchFile(); }

    Replacement OpenReplacement(const std::string& path, const std::optional<Source>& source) override {
        return posix::OpenReplacement(path, source);
    }

    FileKind KindOf(const std::string& path) override {
        const Target target = Resolve(path);
        if (target.descriptor) return FileKind::Other;
        if (target.IsMissing()) return FileKind::Missing;
        if (S_ISREG(target.status.st_mode)) return FileKind::Regular;
        return S_ISDIR(target.status.st_mode) ? FileKind::Folder : FileKind::Other;
    }

    std::string BackupPath(const std::string& path) override {
        std::error_code error;
        const std::string target = std::filesystem::canonical(path, error).string();
        return (error ? path : target) + "~";
    }

    bool SameFile(const std::string& one, const std::string& other) override {
        const auto oneStatus = StatusOf(one);
        const auto otherStatus = StatusOf(other);
        if (oneStatus && otherStatus) return StateOf(*oneStatus).IsSameFile(StateOf(*otherStatus));
        if (oneStatus || otherStatus) return false;
        return WillBeSameFile(Resolve(one), Resolve(other));
    }
};

}  // namespace

FileSystem& SystemFileSystem() {
    static PosixFileSystem system;
    return system;
}

}  // namespace quillmere
