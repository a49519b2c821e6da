#include "system/kept_input.h"
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
    void SetAttributes(const std::string& name, DWORD attributes) const {
        SetFileAttributesW(fs::path(folder.Path(name)).c_str(), attributes);
    }
    /// The number of entries in a file's access list; `takeOneAway` removes the last one first.
    int AccessEntries(const std::string& name, bool takeOneAway = false) const {
        const fs::path path = folder.Path(name);
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
};

TEST_F(WindowsFiles, HaveFailuresOfTheirOwn) {
    EXPECT_EQ(ReadFailure("Q:\\no\\drive"), 76);
    for (const char* const path : {"\xFF", "a?"})
        EXPECT_EQ(ReadFailure(path), 52) << path;
    folder.Put("file", "x");
    SetAttributes("file", FILE_ATTRIBUTE_READONLY);
    EXPECT_EQ(WriteFailure(folder.Path("file")), 75);
    EXPECT_EQ(folder.Get("file"), "x");
    SetAttributes("file", FILE_ATTRIBUTE_NORMAL);
}

/// A program that saves a file is never kept from it by one that reads it; the reader learns of it instead.
TEST_F(WindowsFiles, CanBeSavedRemovedAndReplacedWhileRead) {
    const std::string file = folder.Path("file");
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
    EXPECT_EQ(failureAfter([] {}), 0);
    EXPECT_EQ(failureAfter([&] { folder.Put("file", "again"); }), 77);
    EXPECT_EQ(failureAfter([&] { folder.Put("file", "longer"); }), 77);
    EXPECT_EQ(failureAfter([&] { folder.Put("file", "cut"); }), 62);
    EXPECT_EQ(failureAfter([&] { EXPECT_NO_THROW(fs::rename(file, folder.Path("backup"))); }), 0);
    EXPECT_EQ(failureAfter([&] { EXPECT_TRUE(fs::remove(file)); }), 0);
}

TEST_F(WindowsFiles, CannotBeOpenedByOthersWhileWritten) {
    folder.Put("file", "x");
    const auto writer = system.OpenForWrite(folder.Path("file"));
    EXPECT_EQ(ReadFailure(folder.Path("file")), 70);
    EXPECT_EQ(WriteFailure(folder.Path("file")), 70);
}

/// Names that can be foretold may be in use, by files that were left behind.
TEST_F(WindowsFiles, AreReplacedThroughAnotherNameEachTime) {
    const auto temporaryName = [&] {
        const auto replacement = system.OpenReplacement(folder.Path("file"), std::nullopt);
        return fs::directory_iterator(folder.Path())->path();
    };
    EXPECT_NE(temporaryName(), temporaryName());
}

TEST_F(WindowsFiles, AreNotReplacedWhenAnotherProgramPutThemThere) {
    for (const bool exists : {true, false}) {
        fs::remove(folder.Path("file"));
        if (exists) folder.Put("file", "old");
        folder.Put("other", "theirs");
        const auto replacement = system.OpenReplacement(folder.Path("file"), std::nullopt);
        replacement.file->Close();
        fs::rename(folder.Path("other"), folder.Path("file"));
        EXPECT_EQ(FailureOf([&] { replacement.pending->Commit(); }), 75);
        EXPECT_EQ(folder.Get("file"), "theirs");
    }
}

TEST_F(WindowsFiles, StayHidden) {
    folder.Put("file", "old");
    SetAttributes("file", FILE_ATTRIBUTE_HIDDEN);
    Replace("file", "newer");
    EXPECT_EQ(folder.Get("file"), "newer");
    EXPECT_EQ(system.KindOf(folder.Path("file")), FileKind::Hidden);
    system.OpenForWrite(folder.Path("file"))->Close();
    EXPECT_EQ(folder.Get("file"), "") << "a hidden file can be written, too";
}

TEST_F(WindowsFiles, AreReplacedAlsoWhenSomeoneHoldsThemForAMoment) {
    using namespace std::chrono_literals;
    folder.Put("file", "old");
    const auto replacement = system.OpenReplacement(folder.Path("file"), std::nullopt);
    replacement.file->Close();
    std::thread scanner([held = std::ifstream(folder.Path("file"))] { std::this_thread::sleep_for(200ms); });
    EXPECT_EQ(FailureOf([&] { replacement.pending->Commit(); }), 0);
    scanner.join();
    EXPECT_EQ(folder.Get("file"), "");
}

TEST_F(WindowsFiles, StayAsPrivateAsTheyWere) {
    folder.Put("file", "old");
    const int entries = AccessEntries("file", true);
    Replace("file", "newer");
    EXPECT_EQ(AccessEntries("file"), entries);
}

TEST_F(WindowsFiles, AreKnownInAnyLetterCaseAndUnderShortNames) {
    folder.Put("A longer name.txt", "x");
    const std::string file = folder.Path("A longer name.txt");
    wchar_t shortName[MAX_PATH];
    ASSERT_NE(GetShortPathNameW(fs::path(file).c_str(), shortName, MAX_PATH), 0U);
    EXPECT_TRUE(system.SameFile(file, folder.Path("a LONGER name.TXT")));
    EXPECT_TRUE(system.SameFile(file, fs::path(shortName).string()));
    EXPECT_TRUE(system.SameFile(folder.Path("absent"), folder.Path(".\\ABSENT"))) << "not there yet";
}

TEST_F(WindowsFiles, AreNotCalledMissingWhenTheSystemCannotTell) {
    const std::string pipe = R"(\\.\pipe\quillmere-test-)" + std::to_string(GetCurrentProcessId());
    const HANDLE server = CreateNamedPipeA(pipe.c_str(), PIPE_ACCESS_INBOUND, 0, 1, 0, 0, 0, nullptr);
    const std::ofstream client(pipe);  // keeps others from opening it
    EXPECT_EQ(FailureOf([&] { system.KindOf(pipe); }), 75);
    EXPECT_EQ(FailureOf([&] { system.SameFile(pipe, folder.Path("file")); }), 75);
    CloseHandle(server);
}

/// Has a standard stream lead to `target` as long as the object lives.
class Redirection {
 public:
    Redirection(DWORD stream, HANDLE target) : stream_(stream), before_(GetStdHandle(stream)) {
        SetStdHandle(stream, target);
    }
    ~Redirection() { SetStdHandle(stream_, before_); }
    Redirection(const Redirection&) = delete;
    Redirection& operator=(const Redirection&) = delete;

 private:
    DWORD stream_;
    HANDLE before_;
};

TEST_F(WindowsFiles, MayBeStandardStreams) {
    SetEnvironmentVariableW(L"TMP", fs::path(folder.Path()).c_str());
    HANDLE reader = nullptr;
    HANDLE writer = nullptr;
    ASSERT_TRUE(CreatePipe(&reader, &writer, nullptr, 0));
    const auto write = [&](HANDLE output) {
        const Redirection stream(STD_OUTPUT_HANDLE, output);
        const auto file = system.OpenStandardOutput();
        file->Write("a world");
        file->Close();
    };
    write(writer);
    CloseHandle(writer);
    const Redirection stream(STD_INPUT_HANDLE, reader);
    {
        const KeptInput kept(system);
        const std::string scratch = fs::directory_iterator(folder.Path())->path().string();
        EXPECT_EQ(ReadFailure(scratch), 70) << "nobody else may read it";
        const auto first = kept.Open();
        const auto second = kept.Open();
        char bytes[8];
        for (const auto* const file : {&first, &second}) {
            EXPECT_EQ((*file)->Read(bytes, 2), 2U);
            EXPECT_EQ(std::string(bytes, (*file)->Read(bytes, sizeof bytes)), "world");
            EXPECT_EQ((*file)->Read(bytes, 1), 0U);
        }
    }
    EXPECT_EQ(folder.Files(), 0);
    SetEnvironmentVariableW(L"TMP", L"Q:\\absent");
    EXPECT_EQ(FailureOf([&] { KeptInput{system}; }), 76);
    CloseHandle(reader);
    for (const HANDLE closed : {HANDLE{nullptr}, INVALID_HANDLE_VALUE}) {
        EXPECT_EQ(FailureOf([&] { write(closed); }), 75);
        SetStdHandle(STD_INPUT_HANDLE, closed);
        EXPECT_EQ(FailureOf([&] { KeptInput{system}; }), 75);
    }
    ASSERT_TRUE(CreatePipe(&reader, &writer, nullptr, 0));
    CloseHandle(reader);
    EXPECT_EQ(FailureOf([&] { write(writer); }), 57) << "nobody reads it";
    CloseHandle(writer);
}

TEST_F(WindowsFiles, StandardInputIsReadFromItsPosition) {
    folder.Put("file", "read already, the rest");
    const HANDLE file = CreateFileW(fs::path(folder.Path("file")).c_str(), GENERIC_READ, 0, nullptr,
                                    OPEN_EXISTING, 0, nullptr);
    SetFilePointer(file, 14, nullptr, FILE_BEGIN);
    const Redirection stream(STD_INPUT_HANDLE, file);
    char bytes[100];
    EXPECT_EQ(KeptInput(system).Open()->Read(bytes, sizeof bytes), 8U);
    CloseHandle(file);
}

TEST_F(WindowsFiles, MayBeDevicesAndHaveNamesInAnyScript) {
    EXPECT_EQ(system.KindOf("NUL"), FileKind::Other);
    EXPECT_EQ(system.KindOf(folder.Path()), FileKind::Folder);
    EXPECT_FALSE(system.OpenForRead("NUL")->CanBeReadAgain());
    const auto device = system.OpenForWrite("NUL");
    device->Write("gone");
    device->Close();
    for (const char* const name : {"Жизнь.scp", "漢字 😀.scp"}) {
        Replace(name, "x");
        EXPECT_EQ(system.KindOf(folder.Path(name)), FileKind::Regular) << name;
        char byte = 0;
        EXPECT_EQ(system.OpenForRead(folder.Path(name))->Read(&byte, 1), 1U) << name;
    }
    EXPECT_EQ(folder.Files(), 2);
}

}  // namespace
}  // namespace quillmere::test
