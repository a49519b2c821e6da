#include "system/program_folder.h"
#include "system/windows_handle.h"
#include "system/windows_wide_text.h"

#include <windows.h>
#include <objbase.h>
#include <shlobj.h>

#include <memory>
#include <optional>

namespace quillmere {

namespace {

std::wstring FolderOfExecutable() {
    constexpr std::size_t longestPath = 32768;  // with the NUL
    std::wstring path(longestPath, L'\0');
    path.resize(GetModuleFileNameW(nullptr, path.data(), static_cast<DWORD>(path.size())));
    return path.substr(0, path.find_last_of(L'\\'));
}

/// Tries it with a file that is deleted on closing: access rights do not tell that a disk is read-only.
bool TakesFiles(const std::wstring& folder) {
    const std::wstring trial = folder + L'\\' + windows::TemporaryName();
    const HANDLE file = CreateFileW(trial.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_NEW,
                                    FILE_ATTRIBUTE_TEMPORARY | FILE_FLAG_DELETE_ON_CLOSE, nullptr);
    if (file == INVALID_HANDLE_VALUE) return false;
    CloseHandle(file);
    return true;
}

std::optional<std::wstring> FolderOfUser() {
    wchar_t* known = nullptr;
    const bool found = SUCCEEDED(SHGetKnownFolderPath(FOLDERID_RoamingAppData, 0, nullptr, &known));
    const std::unique_ptr<wchar_t, decltype(&CoTaskMemFree)> owned(known, CoTaskMemFree);
    if (!found) return std::nullopt;
    std::wstring folder = std::wstring(known) + L"\\Quillmere";
    CreateDirectoryW(folder.c_str(), nullptr);
    return folder;
}

}  // namespace

std::vector<std::string> FoldersForSettings() {
    const std::wstring beside = FolderOfExecutable();
    const auto own = TakesFiles(beside) ? std::nullopt : FolderOfUser();
    if (!own) return {Utf8FromWide(beside)};
    return {Utf8FromWide(*own), Utf8FromWide(beside)};
}

}  // namespace quillmere
