#include "tests/support/system_files.h"

#include <windows.h>
#include <aclapi.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <thread>

namespace quillmere::test {
namespace {

namespace fs = std::filesystem;

class WindowsFiles : public SystemFiles {
 protected:
    void SetAttributes(DWORD attributes) const { SetFileAttributesW(fs::path(file).c_str(), attributes); }
    /// The number of entries in the file's access list; `takeOneAway` removes the last one first.
    int AccessEntries(bool takeOneAway = false) const {
        const fs::path path = file;
        PACL list = nullptr;
        PSECURITY_DESCRIPTOR descriptor = nullptr;
        GetNamedSecurityInfoW(path.c_str(), SE_FILE_OBJECT, DACL_SECURITY_INFORMATION, nullptr, nullptr,
                              &list, nullptr, &descriptor);
        if (takeOneAway) {
            DeleteAce(list, list->AceCount - 1U);
            SetFileSecurityW(path.c_str(), DACL_SECURITY_INFORMATION, descriptor);
        }
        const int count = list->AceCount;
        LocalFree(descriptor);
        return count;
    }

    const std::string file = folder.Path("file");
};

TEST_F(WindowsFiles, HaveFailuresOfTheirOwn) {
    EXPECT_EQ(ReadFailure("Q:\\no\\drive"), 76);
    for (const char* const path : {"\xFF", "a?"})
        EXPECT_EQ(ReadFailure(path), 52) << path;
    folder.Put("file", "x");
    SetAttributes(FILE_ATTRIBUTE_READONLY);
    EXPECT_EQ(WriteFailure(file), 75);
    EXPECT_EQ(folder.Get("file"), "x");
    SetAttributes(FILE_ATTRIBUTE_NORMAL);
    const auto writer = system.OpenForWrite(file);
    EXPECT_EQ(ReadFailure(file), 70) << "while it is written";
    EXPECT_EQ(WriteFailure(file), 70);
}

/// A program that saves a file is never kept from it by one that reads it; the reader learns of it instead.
TEST_F(WindowsFiles, CanBeSavedRemovedAndReplacedWhileRead) {
    const auto failureAfter = [&](auto change) {
        folder.Put("file", "first");
        const auto reader = system.OpenForRead(file);
        Sleep(20);  // the time of the change differs
        change();
        char bytes[100];
        return FailureOf([&] {
            while (reader->Read(bytes, sizeof bytes) > 0)
                continue;
        });
    };
    EXPECT_EQ(failureAfter([&] { folder.Put("file", "again"); }), 77);
    EXPECT_EQ(failureAfter([&] { folder.Put("file", "longer"); }), 77);
    EXPECT_EQ(failureAfter([&] { folder.Put("file", "cut"); }), 62);
    EXPECT_EQ(failureAfter([&] { EXPECT_NO_THROW(fs::rename(file, folder.Path("backup"))); }), 0);
    EXPECT_EQ(failureAfter([&] { EXPECT_TRUE(fs::remove(file)); }), 0);
}

TEST_F(WindowsFiles, StayHiddenAndAsPrivateAsTheyWere) {
    folder.Put("file", "old");
    const int entries = AccessEntries(true);
    SetAttributes(FILE_ATTRIBUTE_HIDDEN);
    Replace("file", "newer");
    EXPECT_EQ(AccessEntries(), entries);
    EXPECT_EQ(system.KindOf(file), FileKind::Hidden);
    system.OpenForWrite(file)->Close();
    EXPECT_EQ(folder.Get("file"), "") << "a hidden file can be written, too";
}

TEST_F(WindowsFiles, AreReplacedAlsoWhenSomeoneHoldsThemForAMoment) {
    using namespace std::chrono_literals;
    const auto temporaryName = [&] {
        const auto replacement = Written("file", "");
        return fs::directory_iterator(folder.Path())->path();
    };
    EXPECT_NE(temporaryName(), temporaryName()) << "one that was left behind may be in use";
    folder.Put("file", "old");
    const auto replacement = Written("file", "");
    std::thread scanner([held = std::ifstream(file)] { std::this_thread::sleep_for(200ms); });
    EXPECT_EQ(FailureOf([&] { replacement.pending->Commit(); }), 0);
    scanner.join();
    EXPECT_EQ(folder.Get("file"), "");
}

TEST_F(WindowsFiles, AreKnownInAnyLetterCaseAndUnderShortNames) {
    folder.Put("A longer name.txt", "x");
    const std::string longer = folder.Path("A longer name.txt");
    wchar_t shortName[MAX_PATH];
    ASSERT_NE(GetShortPathNameW(fs::path(longer).c_str(), shortName, MAX_PATH), 0U);
    EXPECT_TRUE(system.SameFile(longer, folder.Path("a LONGER name.TXT")));
    EXPECT_TRUE(system.SameFile(longer, fs::path(shortName).string()));
    EXPECT_TRUE(system.SameFile(file, folder.Path(".\\FILE"))) << "not there yet";
}

TEST_F(WindowsFiles, AreNotCalledMissingWhenTheSystemCannotTell) {
    const std::string pipe = R"(\\.\pipe\quillmere-test-)" + std::to_string(GetCurrentProcessId());
    const HANDLE server = CreateNamedPipeA(pipe.c_str(), PIPE_ACCESS_INBOUND, 0, 1, 0, 0, 0, nullptr);
    const std::ofstream client(pipe);  // keeps others from opening it
    EXPECT_EQ(FailureOf([&] { system.KindOf(pipe); }), 75);
    EXPECT_EQ(FailureOf([&] { system.SameFile(pipe, file); }), 75);
    CloseHandle(server);
}

TEST_F(WindowsFiles, AreForNobodyElseWhenStandardInputIsKeptInThem) {
    const std::wstring before = fs::temp_directory_path();
    SetEnvironmentVariableW(L"TMP", fs::path(folder.Path()).c_str());
    auto scratch = system.CreateScratchFile();
    EXPECT_EQ(ReadFailure(fs::directory_iterator(folder.Path())->path().string()), 70);
    scratch.reset();
    EXPECT_EQ(folder.Files(), 0);
    SetEnvironmentVariableW(L"TMP", L"Q:\\absent");
    EXPECT_EQ(FailureOf([&] { system.CreateScratchFile(); }), 76);
    SetEnvironmentVariableW(L"TMP", before.c_str());
    const HANDLE output = GetStdHandle(STD_OUTPUT_HANDLE);
    SetStdHandle(STD_OUTPUT_HANDLE, INVALID_HANDLE_VALUE);
    EXPECT_EQ(FailureOf([&] { system.OpenStandardOutput(); }), 75);
    SetStdHandle(STD_OUTPUT_HANDLE, output);
}

TEST_F(WindowsFiles, MayBeDevices) {
    EXPECT_EQ(system.KindOf("NUL"), FileKind::Other);
    EXPECT_EQ(system.KindOf(folder.Path()), FileKind::Folder);
    EXPECT_FALSE(system.OpenForRead("NUL")->CanBeReadAgain());
    system.OpenForWrite("NUL")->Write("gone");
}

}  // namespace
}  // namespace quillmere::test
