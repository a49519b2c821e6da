#include "system/posix_descriptor.h"

#include "system/console.h"

#include <limits.h>
#include <poll.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <utility>

namespace quillmere::posix {

namespace {

constexpr ErrorKind openErrors[] = {
    {ENOENT, FailureKind::PathNotFound},
    {ENOTDIR, FailureKind::PathNotFound},
    {EMFILE, FailureKind::TooManyFiles},
    {ENFILE, FailureKind::TooManyFiles},
    {ENAMETOOLONG, FailureKind::BadFileNameOrNumber},
    {EINVAL, FailureKind::BadFileNameOrNumber},
    {ENOSPC, FailureKind::DiskFull},
    {EDQUOT, FailureKind::DiskFull},
    {ENOMEM, FailureKind::OutOfMemory},
    {EIO, FailureKind::DeviceIoError},
    {EACCES, FailureKind::PermissionDenied},
    {EBUSY, FailureKind::PermissionDenied},
    {ETXTBSY, FailureKind::PermissionDenied},
};

/// How long a wait may go on without a look at whether the program is asked to end. The signal itself may
/// come just before the wait, or on another thread, and so does not interrupt it.
constexpr int lookInterval = 50;  // ms

bool FolderExists(const std::string& path) {
    const auto status = Status(FolderOf(path));
    return status && S_ISDIR(status->st_mode);
}

/// Whether fsync failed only because there is nothing that it could do, as for a pipe.
bool NeedsNoSync(int error) {
    return error == EINVAL || error == ENOTSUP || error == ENOSYS;
}

}  // namespace

std::string FolderOf(const std::string& path) {
    const std::string folder = std::filesystem::path(path).parent_path().string();
    return folder.empty() ? "." : folder;
}

std::optional<struct stat> Status(const std::string& path) {
    struct stat status {};
    if (stat(path.c_str(), &status) != 0) return std::nullopt;
    return status;
}

/// Files that the system makes up, as in /proc, have no size and a new time at every opening.
FileState StateOf(const struct stat& status) {
    constexpr std::int64_t nanoseconds = 1'000'000'000;
    const std::int64_t written = std::int64_t{status.st_mtim.tv_sec} * nanoseconds + status.st_mtim.tv_nsec;
    return {status.st_dev, {status.st_ino, 0}, status.st_size, status.st_size == 0 ? 0 : written};
}

Failure OpenFailure(int error, const std::string& path, Access access) {
    if (error == ENOENT && FolderExists(path)) return Failure(FailureKind::FileNotFound, path);
    const bool readOnlyFile = error == EACCES && access == Access::Write && Status(path);
    if (readOnlyFile) return Failure(FailureKind::PathFileAccessError, path);
    return Failure(
        KindOfError(openErrors, static_cast<std::uint32_t>(error), FailureKind::PathFileAccessError), path);
}

Failure TransferFailure(int error, const std::string& path) {
    const bool full = error == ENOSPC || error == EDQUOT;
    return Failure(full ? FailureKind::DiskFull : FailureKind::DeviceIoError, path);
}

Descriptor::Descriptor(int number, std::string path) : number_(number), path_(std::move(path)) {}

Descriptor::~Descriptor() {
    if (number_ >= 0) close(number_);
}

Descriptor::Descriptor(Descriptor&& other) noexcept
    : number_(std::exchange(other.number_, -1)),
      path_(std::move(other.path_)),
      mayWait_(other.mayWait_),
      mostAtOnce_(other.mostAtOnce_) {}

Descriptor& Descriptor::operator=(Descriptor&& other) noexcept {
    std::swap(number_, other.number_);
    std::swap(path_, other.path_);
    std::swap(mayWait_, other.mayWait_);
    std::swap(mostAtOnce_, other.mostAtOnce_);
    return *this;
}

struct stat Descriptor::Status() const {
    struct stat status {};
    if (fstat(number_, &status) != 0) throw TransferFailure(errno, path_);
    return status;
}

/// A pipe that is ready takes PIPE_BUF bytes without a wait. Only one that never waits can be offered more:
/// it takes what fits. That mode belongs to all who have the same opening in use, so it is not set here.
void Descriptor::WaitCancellably() {
    if (S_ISREG(Status().st_mode)) return;
    mayWait_ = true;
    const int flags = fcntl(number_, F_GETFL);
    const bool neverWaits = flags >= 0 && (flags & O_NONBLOCK) != 0;
    if (!neverWaits) mostAtOnce_ = PIPE_BUF;
}

/// Also returns when the wait fails; the transfer then tells why.
void Descriptor::WaitUntilReady(short events) const {
    struct pollfd waiting = {number_, events, 0};
    for (;;) {
        const bool toEnd = InterruptRequested();
        const int ready = poll(&waiting, 1, toEnd ? 0 : lookInterval);
        if (ready > 0 || (ready < 0 && errno != EINTR)) return;
        if (toEnd) throw Cancelled();
    }
}

/// Returns when a transfer that ended with this error before any byte is to be tried again. A terminal may be
/// ready and yet take nothing: a line end needs room for two bytes.
void Descriptor::PrepareAnotherTry(int error) const {
    if (error == EINTR) return;
    if (!mayWait_ || error != EAGAIN) throw TransferFailure(error, path_);
    WaitAMoment();
}

std::size_t Descriptor::Read(char* buffer, std::size_t size) const {
    for (;;) {
        if (mayWait_ && InterruptRequested()) throw Cancelled();
        if (mayWait_) WaitUntilReady(POLLIN);
        const ssize_t count = read(number_, buffer, size);
        if (count >= 0) return static_cast<std::size_t>(count);
        PrepareAnotherTry(errno);
    }
}

std::size_t Descriptor::ReadAt(off_t offset, char* buffer, std::size_t size) const {
    for (;;) {
        const ssize_t count = pread(number_, buffer, size, offset);
        if (count >= 0) return static_cast<std::size_t>(count);
        PrepareAnotherTry(errno);
    }
}

void Descriptor::Write(std::string_view bytes) const {
    while (!bytes.empty()) {
        if (mayWait_) WaitUntilReady(POLLOUT);
        const ssize_t count = write(number_, bytes.data(), std::min(bytes.size(), mostAtOnce_));
        if (count == 0) throw Failure(FailureKind::DeviceIoError, path_);
        if (count > 0) {
            bytes.remove_prefix(static_cast<std::size_t>(count));
        } else {
            PrepareAnotherTry(errno);
        }
    }
}

void Descriptor::Sync() const {
    while (fsync(number_) != 0) {
        if (NeedsNoSync(errno)) return;
        if (errno != EINTR) throw TransferFailure(errno, path_);
    }
}

/// A descriptor whose close was interrupted is closed, and its number may be in use again: no second try.
void Descriptor::Close() {
    if (close(std::exchange(number_, -1)) != 0 && errno != EINTR) throw TransferFailure(errno, path_);
}

int OpenNumber(const std::string& path, int flags, mode_t mode) {
    return OpenNumberIn(AT_FDCWD, path, flags, mode);
}

int OpenNumberIn(int folder, const std::string& path, int flags, mode_t mode) {
    int number = -1;
    do {
        number = openat(folder, path.c_str(), flags | O_CLOEXEC | O_NOCTTY, mode);
    } while (number < 0 && errno == EINTR);
    return number;
}

Descriptor Duplicate(int number, const std::string& path) {
    const int duplicate = fcntl(number, F_DUPFD_CLOEXEC, 0);
    if (duplicate < 0) throw OpenFailure(errno, path, Access::Write);
    return {duplicate, path};
}

void WaitAMoment() {
    if (InterruptRequested()) throw Cancelled();
    poll(nullptr, 0, lookInterval);
}

void CheckName(const std::string& path) {
    if (path.empty() || path.find('\0') != std::string::npos) {
        throw Failure(FailureKind::BadFileNameOrNumber, path);
    }
}

}  // namespace quillmere::posix
