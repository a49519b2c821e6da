// The resources inside the two program files, read as Windows reads them.

#include <windows.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

namespace quillmere::test {
namespace {

/// The path of the program `name`, which is in the same folder as this one.
std::wstring PathOf(const wchar_t* name) {
    wchar_t self[MAX_PATH];
    GetModuleFileNameW(nullptr, self, MAX_PATH);
    return (std::filesystem::path(self).parent_path() / name).wstring();
}

std::string Resource(HMODULE module, int id, const wchar_t* type) {
    HRSRC const found = FindResourceW(module, MAKEINTRESOURCEW(id), type);
    if (found == nullptr) return {};
    const auto* const bytes = static_cast<const char*>(LockResource(LoadResource(module, found)));
    return {bytes, SizeofResource(module, found)};
}

std::wstring VersionText(const std::wstring& path, const std::wstring& name) {
    std::vector<char> record(GetFileVersionInfoSizeW(path.c_str(), nullptr));
    GetFileVersionInfoW(path.c_str(), 0, static_cast<DWORD>(record.size()), record.data());
    void* text = nullptr;
    UINT length = 0;
    const std::wstring key = L"\\StringFileInfo\\040904B0\\" + name;
    if (VerQueryValueW(record.data(), key.c_str(), &text, &length) == FALSE) return {};
    return static_cast<const wchar_t*>(text);
}

class Resources : public testing::TestWithParam<const wchar_t*> {};

TEST_P(Resources, HoldManifestVersionAndIcon) {
    const std::wstring path = PathOf(GetParam());
    const HMODULE module = LoadLibraryExW(path.c_str(), nullptr, LOAD_LIBRARY_AS_DATAFILE);
    ASSERT_NE(module, nullptr);
    const std::string manifest = Resource(module, 1, RT_MANIFEST);
    for (const char* const setting : {"name=\"Quillmere\" version=\"" QUILLMERE_WINDOWS_VERSION "\"",
                                      "name=\"Microsoft.Windows.Common-Controls\" version=\"6.0.0.0\"",
                                      ">PerMonitorV2, PerMonitor</dpiAwareness>", ">UTF-8</activeCodePage>",
                                      ">true</longPathAware>", "level=\"asInvoker\""}) {
        EXPECT_NE(manifest.find(setting), std::string::npos) << setting;
    }
    EXPECT_EQ(VersionText(path, L"ProductName"), L"Quillmere");
    EXPECT_EQ(VersionText(path, L"ProductVersion"), L"" QUILLMERE_VERSION);
    EXPECT_EQ(VersionText(path, L"OriginalFilename"), GetParam());

    constexpr std::size_t countOffset = 4;  // bytes from the start of an icon directory
    const std::string icons = Resource(module, 1, RT_GROUP_ICON);
    ASSERT_GT(icons.size(), countOffset);
    EXPECT_EQ(icons[countOffset], 6) << "sizes";
    FreeLibrary(module);
}

INSTANTIATE_TEST_SUITE_P(Programs, Resources, testing::Values(L"quillmere.exe", L"quillmere-batch.exe"));

}  // namespace
}  // namespace quillmere::test
