#include "system/windows_handle.h"

#include "base/random_word.h"
#include "system/windows_wide_text.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstdint>
#include <iterator>
#include <limits>
#include <utility>

namespace quillmere::windows {

namespace {

constexpr std::size_t mostAtOnce = std::numeric_limits<DWORD>::max();  // bytes that one call reads or writes

constexpr ErrorKind openErrors[] = {
    {ERROR_FILE_NOT_FOUND, FailureKind::FileNotFound},
    {ERROR_PATH_NOT_FOUND, FailureKind::PathNotFound},
    {ERROR_INVALID_DRIVE, FailureKind::PathNotFound},
    {ERROR_BAD_NETPATH, FailureKind::PathNotFound},
    {ERROR_BAD_NET_NAME, FailureKind::PathNotFound},
    {ERROR_TOO_MANY_OPEN_FILES, FailureKind::TooManyFiles},
    {ERROR_INVALID_NAME, FailureKind::BadFileNameOrNumber},
    {ERROR_BAD_PATHNAME, FailureKind::BadFileNameOrNumber},
    {ERROR_FILENAME_EXCED_RANGE, FailureKind::BadFileNameOrNumber},
    {ERROR_DISK_FULL, FailureKind::DiskFull},
    {ERROR_HANDLE_DISK_FULL, FailureKind::DiskFull},
    {ERROR_NOT_ENOUGH_MEMORY, FailureKind::OutOfMemory},
    {ERROR_OUTOFMEMORY, FailureKind::OutOfMemory},
    {ERROR_NOT_READY, FailureKind::DeviceIoError},
    {ERROR_CRC, FailureKind::DeviceIoError},
    {ERROR_IO_DEVICE, FailureKind::DeviceIoError},
    {ERROR_SHARING_VIOLATION, FailureKind::PermissionDenied},
    {ERROR_LOCK_VIOLATION, FailureKind::PermissionDenied},
    {ERROR_ACCESS_DENIED, FailureKind::PermissionDenied},
};
constexpr ErrorKind transferErrors[] = {
    {ERROR_DISK_FULL, FailureKind::DiskFull},
    {ERROR_HANDLE_DISK_FULL, FailureKind::DiskFull},
    {ERROR_LOCK_VIOLATION, FailureKind::PermissionDenied},
};

/// The number of 64 bits that Windows gives in two halves.
std::uint64_t Combined(DWORD high, DWORD low) {
    return std::uint64_t{high} << 32 | low;
}

}  // namespace

std::wstring WidePath(const std::string& path) {
    const auto wide = WideFromValidUtf8(path);
    if (!wide || wide->empty() || wide->find(L'\0') != std::wstring::npos)
        throw Failure(FailureKind::BadFileNameOrNumber, path);
    return *wide;
}

bool IsSeparator(wchar_t character) {
    return character == L'\\' || character == L'/';
}

std::wstring FolderOf(const std::wstring& wide) {
    return wide.substr(0, wide.find_last_of(L"\\/:") + 1);
}

/// By chance: a name counted up from the process id may be that of a file which an earlier process left.
std::wstring TemporaryName() {
    return L"quillmere-" + std::to_wstring(RandomWord()) + L".tmp";
}

std::optional<DWORD> AttributesOf(const std::wstring& wide) {
    const DWORD attributes = GetFileAttributesW(wide.c_str());
    if (attributes == INVALID_FILE_ATTRIBUTES) return std::nullopt;
    return attributes;
}

void RefuseReadOnly(const std::wstring& wide, const std::string& path) {
    const DWORD attributes = AttributesOf(wide).value_or(0);
    if ((attributes & FILE_ATTRIBUTE_READONLY) != 0) throw Failure(FailureKind::PathFileAccessError, path);
}

/// Windows denies the access to folders and to read-only files, too.
FailureKind KindOfOpenError(DWORD error, const std::wstring& wide, Access access) {
    if (error == ERROR_ACCESS_DENIED) {
        const auto attributes = AttributesOf(wide);
        const bool folder = attributes && (*attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
        const bool readOnly = attributes && access == Access::Write;
        if (folder || readOnly) return FailureKind::PathFileAccessError;
    }
    return KindOfError(openErrors, error, FailureKind::PathFileAccessError);
}

Failure TransferFailure(DWORD error, const std::string& path) {
    return Failure(KindOfError(transferErrors, error, FailureKind::DeviceIoError), path);
}

Handle::Handle(HANDLE handle, std::string path) : handle_(handle), path_(std::move(path)) {}

Handle::~Handle() {
    if (IsOpen()) CloseHandle(handle_);
}

Handle::Handle(Handle&& other) noexcept
    : handle_(std::exchange(other.handle_, INVALID_HANDLE_VALUE)), path_(std::move(other.path_)) {}

std::wstring Handle::FinalPath() const {
    if (!IsOpen()) return {};
    std::wstring path(MAX_PATH, L'\0');
    for (;;) {
        const auto size = static_cast<DWORD>(path.size());
        const DWORD length = GetFinalPathNameByHandleW(handle_, path.data(), size, FILE_NAME_NORMALIZED);
        path.resize(length);
        if (length < size) return path;
    }
}

BY_HANDLE_FILE_INFORMATION Handle::Information() const {
    BY_HANDLE_FILE_INFORMATION file{};
    if (GetFileInformationByHandle(handle_, &file) == FALSE) throw TransferFailure(GetLastError(), path_);
    return file;
}

/// Numbers of 64 bits are not unique on every file system, but some have no longer ones, as many a share.
FileState Handle::State() const {
    const BY_HANDLE_FILE_INFORMATION file = Information();
    const std::uint64_t size = Combined(file.nFileSizeHigh, file.nFileSizeLow);
    const std::uint64_t written =
        Combined(file.ftLastWriteTime.dwHighDateTime, file.ftLastWriteTime.dwLowDateTime);
    FileState state{file.dwVolumeSerialNumber,
                    {Combined(file.nFileIndexHigh, file.nFileIndexLow), 0},
                    static_cast<std::int64_t>(size),
                    size == 0 ? 0 : static_cast<std::int64_t>(written)};
    FILE_ID_INFO identity{};
    if (GetFileInformationByHandleEx(handle_, FileIdInfo, &identity, sizeof identity) != FALSE) {
        state.volume = identity.VolumeSerialNumber;
        state.number = std::bit_cast<std::array<std::uint64_t, 2>>(identity.FileId);
    }
    return state;
}

std::size_t Handle::Read(char* buffer, std::size_t size) const {
    return ReadFrom(nullptr, buffer, size);
}

std::size_t Handle::ReadAt(std::int64_t offset, char* buffer, std::size_t size) const {
    constexpr unsigned bitsOfHalf = 32;
    OVERLAPPED from{};
    from.Offset = static_cast<DWORD>(offset);
    from.OffsetHigh = static_cast<DWORD>(offset >> bitsOfHalf);
    return ReadFrom(&from, buffer, size);
}

std::int64_t Handle::Position() const {
    LARGE_INTEGER position{};
    if (SetFilePointerEx(handle_, {}, &position, FILE_CURRENT) == FALSE)
        throw TransferFailure(GetLastError(), path_);
    return position.QuadPart;
}

std::size_t Handle::ReadFrom(OVERLAPPED* offset, char* buffer, std::size_t size) const {
    DWORD count = 0;
    if (ReadFile(handle_, buffer, static_cast<DWORD>(std::min(size, mostAtOnce)), &count, offset) == FALSE) {
        const DWORD error = GetLastError();
        if (error != ERROR_BROKEN_PIPE && error != ERROR_HANDLE_EOF) throw TransferFailure(error, path_);
    }
    return count;
}

void Handle::Write(std::string_view bytes) const {
    while (!bytes.empty()) {
        const auto size = static_cast<DWORD>(std::min(bytes.size(), mostAtOnce));
        DWORD count = 0;
        if (WriteFile(handle_, bytes.data(), size, &count, nullptr) == FALSE)
            throw TransferFailure(GetLastError(), path_);
        if (count == 0) throw Failure(FailureKind::DeviceIoError, path_);
        bytes.remove_prefix(count);
    }
}

void Handle::Sync() const {
    if (FlushFileBuffers(handle_) == FALSE) throw TransferFailure(GetLastError(), path_);
}

void Handle::Close() {
    if (CloseHandle(std::exchange(handle_, INVALID_HANDLE_VALUE)) == FALSE)
        throw TransferFailure(GetLastError(), path_);
}

Handle TryOpen(const std::wstring& wide, const std::string& path, const OpenMode& mode) {
    return {CreateFileW(wide.c_str(), mode.access, mode.share, nullptr, mode.creation, mode.flags, nullptr),
            path};
}

/// INVALID_HANDLE_VALUE has to be refused, since it also stands for the process, which can be duplicated.
Handle DuplicateStream(DWORD stream, const std::string& path) {
    const HANDLE self = GetCurrentProcess();
    const HANDLE given = GetStdHandle(stream);
    HANDLE duplicate = INVALID_HANDLE_VALUE;
    if (given == INVALID_HANDLE_VALUE ||
        DuplicateHandle(self, given, self, &duplicate, 0, FALSE, DUPLICATE_SAME_ACCESS) == FALSE)
        return {INVALID_HANDLE_VALUE, path};
    return {duplicate, path};
}

Handle Ask(const std::wstring& wide, const std::string& path) {
    Handle handle = TryOpen(wide, path, toAsk);
    if (handle.IsOpen()) return handle;
    const FailureKind kind = KindOfOpenError(GetLastError(), wide, Access::Read);
    constexpr FailureKind missing[] = {FailureKind::FileNotFound, FailureKind::PathNotFound,
                                       FailureKind::BadFileNameOrNumber};
    if (std::ranges::find(missing, kind) == std::end(missing)) throw Failure(kind, path);
    return handle;
}

std::optional<FileState> StateAt(const std::wstring& wide, const std::string& path) {
    const Handle handle = Ask(wide, path);
    if (!handle.IsOpen() || !handle.IsOnDisk()) return std::nullopt;
    return handle.State();
}

}  // namespace quillmere::windows
