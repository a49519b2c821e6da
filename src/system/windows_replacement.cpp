#include "system/windows_replacement.h"

#include "system/windows_access_list.h"
#include "system/windows_handle.h"
#include "system/windows_wide_text.h"
#include "system/write_behind.h"

#include <utility>

namespace quillmere::windows {

namespace {

/// The attributes that a file keeps when it is replaced.
constexpr DWORD keptAttributes = FILE_ATTRIBUTE_HIDDEN | FILE_ATTRIBUTE_SYSTEM |
                                 FILE_ATTRIBUTE_NOT_CONTENT_INDEXED | FILE_ATTRIBUTE_ENCRYPTED;

/// Only to learn whether the file could be written.
constexpr OpenMode toTryWriting = {GENERIC_WRITE, shareAll, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL};

/// The new file of a replacement. Closing it brings it to the disk: were it put in place before that, a power
/// cut could leave it empty.
class ReplacingFile : public WritableFile {
 public:
    explicit ReplacingFile(Handle file) : file_(std::move(file)) {}
    void Write(std::string_view bytes) override { file_.Write(bytes); }
    void Close() override {
        file_.Sync();
        file_.Close();
    }

 private:
    Handle file_;
};

class WindowsReplacement : public PendingReplacement {
 public:
    WindowsReplacement(std::wstring temporary, std::wstring target, std::string path,
                       const std::optional<FileState>& replaced)
        : temporary_(std::move(temporary)),
          target_(std::move(target)),
          path_(std::move(path)),
          replaced_(replaced) {}
    ~WindowsReplacement() override {
        if (!committed_) DeleteFileW(temporary_.c_str());
    }
    WindowsReplacement(const WindowsReplacement&) = delete;
    WindowsReplacement& operator=(const WindowsReplacement&) = delete;

    void BringToDisk() override {}  // done when it was closed

    void KeepOldFile() override {
        if (!AttributesOf(target_)) return;
        const std::wstring link = temporary_ + L".tmp";
        DeleteFileW(link.c_str());  // a killed program may have left it
        if (CreateHardLinkW(link.c_str(), target_.c_str(), nullptr) == FALSE) {
            throw Failure(FailureKind::PathFileAccessError,
                          path_ + "~ (the old file cannot be kept: no hard link to it can be made)");
        }
        const std::wstring kept = target_ + L"~";
        const DWORD error = MoveWhenReleased(link, kept, MOVEFILE_REPLACE_EXISTING);
        DeleteFileW(link.c_str());  // it stays after a failure, or when both names had the old file already
        Check(error, kept, path_ + "~");
    }

    void Commit() override {
        const auto present = StateAt(target_, path_);
        if (present && !(replaced_ && present->IsSameFile(*replaced_))) throw ReplacedMeanwhile(path_);
        Check(MoveWhenReleased(temporary_, target_, present ? MOVEFILE_REPLACE_EXISTING : 0), target_, path_);
        committed_ = true;
    }

 private:
    /// Fails when `error`, of a move to `to`, is one; the failure names `path`.
    static void Check(DWORD error, const std::wstring& to, const std::string& path) {
        if (error == ERROR_SUCCESS) return;
        if (error == ERROR_ALREADY_EXISTS || error == ERROR_FILE_EXISTS) throw ReplacedMeanwhile(path);
        throw Failure(
            IsHeld(error, to) ? FailureKind::PermissionDenied : KindOfOpenError(error, to, Access::Write),
            path);
    }

    /// Tries again for a while when another program has a file open: a virus scanner, an indexer or a backup
    /// must not spoil a finished run. Returns the error of the last attempt.
    static DWORD MoveWhenReleased(const std::wstring& from, const std::wstring& to, DWORD flags) {
        constexpr DWORD patience = 2000;  // milliseconds
        constexpr DWORD pause = 50;
        for (DWORD waited = 0;; waited += pause) {
            if (MoveFileExW(from.c_str(), to.c_str(), flags | MOVEFILE_WRITE_THROUGH) != FALSE)
                return ERROR_SUCCESS;
            const DWORD error = GetLastError();
            if (waited >= patience || !IsHeld(error, to)) return error;
            Sleep(pause);
        }
    }

    /// Whether `error` means that another program has one of the files open. Windows may report that as
    /// ERROR_ACCESS_DENIED, as it does for a target that is read-only or a folder.
    static bool IsHeld(DWORD error, const std::wstring& to) {
        if (error == ERROR_SHARING_VIOLATION || error == ERROR_LOCK_VIOLATION) return true;
        const DWORD attributes = AttributesOf(to).value_or(0);
        return error == ERROR_ACCESS_DENIED &&
               (attributes & (FILE_ATTRIBUTE_READONLY | FILE_ATTRIBUTE_DIRECTORY)) == 0;
    }

    std::wstring temporary_;
    std::wstring target_;
    std::string path_;
    std::optional<FileState> replaced_;  ///< of the old file at the start; none when there was none
    bool committed_ = false;
};

/// The path that a link at the end of `wide` leads to, and `wide` itself when there is no link.
std::wstring FollowLinks(const std::wstring& wide, const std::string& path) {
    const auto attributes = AttributesOf(wide);
    if (!attributes || (*attributes & FILE_ATTRIBUTE_REPARSE_POINT) == 0) return wide;
    std::wstring target = TryOpen(wide, path, toAsk).FinalPath();
    if (target.empty()) throw Failure(FailureKind::PathFileAccessError, path);
    return target;
}

/// Creates a file and opens it for writing. When it `replaces` another, asks for the right to set its access
/// list as well, and does without where that is refused, as on many a share.
Handle TryCreate(const std::wstring& wide, const std::string& path, DWORD attributes, bool replaces) {
    if (replaces) {
        Handle file = TryOpen(wide, path, {GENERIC_WRITE | WRITE_DAC, 0, CREATE_NEW, attributes});
        if (file.IsOpen() || GetLastError() != ERROR_ACCESS_DENIED) return file;
    }
    return TryOpen(wide, path, {GENERIC_WRITE, 0, CREATE_NEW, attributes});
}

struct TemporaryFile {
    std::wstring path;
    Handle file;  ///< its failures name the target, which the user knows
};

/// Creates a file with a name of its own in the folder of `target` and opens it for writing. `replaces` tells
/// whether there is a file at `target`.
TemporaryFile CreateTemporaryBeside(const std::wstring& target, const std::string& path, DWORD attributes,
                                    bool replaces) {
    constexpr int mostAttempts = 100;
    for (int attempt = 0; attempt < mostAttempts; ++attempt) {
        const std::wstring temporary = FolderOf(target) + TemporaryName();
        Handle file = TryCreate(temporary, path, attributes, replaces);
        if (file.IsOpen()) return {temporary, std::move(file)};
        const DWORD error = GetLastError();
        if (error == ERROR_ACCESS_DENIED) break;
        if (error != ERROR_FILE_EXISTS) throw Failure(KindOfOpenError(error, target, Access::Write), path);
    }
    throw Failure(FailureKind::PermissionDenied, path);
}

/// Fails where OpenForWrite would. Returns the attributes that the new file takes over from the one at
/// `target`.
DWORD CheckReplaceable(const std::wstring& target, const std::string& path) {
    const auto attributes = AttributesOf(target);
    if (!attributes) {
        if (IsSeparator(target.back())) throw Failure(FailureKind::PathFileAccessError, path);
        return FILE_ATTRIBUTE_NORMAL;
    }
    RefuseReadOnly(target, path);
    if (!TryOpen(target, path, toTryWriting).IsOpen())
        throw Failure(KindOfOpenError(GetLastError(), target, Access::Write), path);
    return *attributes & keptAttributes;
}

}  // namespace

std::string BackupPath(const std::string& path) {
    const std::wstring wide = WidePath(path);
    const std::wstring target = FollowLinks(wide, path);
    return (target == wide ? path : Utf8FromWide(target)) + "~";
}

FileSystem::Replacement OpenReplacement(const std::string& path,
                                        const std::optional<FileSystem::Source>& source) {
    const std::wstring target = FollowLinks(WidePath(path), path);
    const auto replaced = StateAt(target, path);
    const bool replaces = replaced.has_value();
    if (source && replaces && replaced->IsSameFile(source->state))
        throw Failure(FailureKind::PathFileAccessError, path + " (it is the file that is read)");
    TemporaryFile temporary = CreateTemporaryBeside(target, path, CheckReplaceable(target, path), replaces);
    auto pending = std::make_unique<WindowsReplacement>(temporary.path, target, path, replaced);
    Handle file = std::move(temporary.file);  // closed when `pending` removes it
    if (replaces && !TakeOverAccessList(file.Get(), target))
        throw Failure(FailureKind::PathFileAccessError, path);
    return {std::move(pending), WriteBehind(std::make_unique<ReplacingFile>(std::move(file)))};
}

}  // namespace quillmere::windows
