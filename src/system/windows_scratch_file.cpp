#include "system/windows_scratch_file.h"

#include "system/windows_handle.h"
#include "system/windows_wide_text.h"

#include <utility>

namespace quillmere::windows {

namespace {

class WindowsScratchFile : public ScratchFile {
 public:
    explicit WindowsScratchFile(Handle file) : file_(std::move(file)) {}

    void Append(std::string_view bytes) override { file_.Write(bytes); }
    void FinishWriting() override {}  // the folder is on a disk of this machine, which has made room already
    std::size_t ReadAt(std::int64_t offset, char* buffer, std::size_t size) const override {
        return file_.ReadAt(offset, buffer, size);
    }

 private:
    Handle file_;
};

/// With a separator at its end.
std::wstring FolderForScratch() {
    std::wstring folder(MAX_PATH + 1, L'\0');
    folder.resize(GetTempPathW(static_cast<DWORD>(folder.size()), folder.data()));
    return folder;
}

}  // namespace

/// Nobody else can open it: it is shared with nobody until it is closed, and then it is gone.
std::unique_ptr<ScratchFile> CreateScratchFile() {
    const std::wstring folder = FolderForScratch();
    const std::wstring wide = folder + TemporaryName();
    constexpr OpenMode toKeep = {GENERIC_READ | GENERIC_WRITE, 0, CREATE_NEW,
                                 FILE_ATTRIBUTE_TEMPORARY | FILE_FLAG_DELETE_ON_CLOSE};
    Handle file = TryOpen(wide, Utf8FromWide(folder), toKeep);
    if (!file.IsOpen()) throw Failure(KindOfOpenError(GetLastError(), wide, Access::Write), file.Path());
    return std::make_unique<WindowsScratchFile>(std::move(file));
}

}  // namespace quillmere::windows
