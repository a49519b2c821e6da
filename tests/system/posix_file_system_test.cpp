#include "tests/support/system_files.h"

#include <fcntl.h>
#include <stdlib.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <array>
#include <chrono>
#include <cstddef>
#include <filesystem>
#include <tuple>
#include <utility>

namespace quillmere::test {
namespace {

namespace fs = std::filesystem;

constexpr const char* accessList = "system.posix_acl_access";
constexpr const char* listForNewFiles = "system.posix_acl_default";

/// An access list as Linux stores it: the owner and user 1000 may read and write, and the mask lets that
/// pass.
std::string ListWith(char group, char others) {
    const auto row = [](char tag, char permissions, const std::string& id = "\xFF\xFF\xFF\xFF") {
        return std::string{tag, 0, permissions, 0} + id;
    };
    return std::string("\2\0\0\0", 4) + row(1, 6) + row(2, 6, {"\xE8\3\0\0", 4}) + row(4, group) +
           row(0x10, 6) + row(0x20, others);
}

class PosixFiles : public SystemFiles {
 protected:
    PosixFiles() : mask_(umask(022)) {}
    ~PosixFiles() override { umask(mask_); }

    mode_t ModeOf(const std::string& name) const {
        return static_cast<mode_t>(fs::status(folder.Path(name)).permissions());
    }
    void Make(const std::string& name, mode_t mode) const {
        folder.Put(name, "old");
        fs::permissions(folder.Path(name), static_cast<fs::perms>(mode));
    }
    bool SetList(const std::string& path, const char* kind, const std::string& list) const {
        return setxattr(path.c_str(), kind, list.data(), list.size(), 0) == 0;
    }
    std::string ListOf(const std::string& name) const {
        char list[1000];
        const ssize_t size = getxattr(folder.Path(name).c_str(), accessList, list, sizeof list);
        return {list, size < 0 ? 0 : static_cast<std::size_t>(size)};
    }
    FileSystem::Source SourceOf(const std::string& name) const {
        return {folder.Path(name), system.OpenForRead(folder.Path(name))->State()};
    }
    /// Replaces a file that is not there by one made from `source`, and returns its permissions.
    mode_t ModeOfNewFrom(const std::string& source) const {
        fs::remove(folder.Path("new"));
        Replace("new", "x", SourceOf(source));
        return ModeOf("new");
    }

 private:
    mode_t mask_;
};

TEST_F(PosixFiles, ReplacementKeepsPermissionsAndLinks) {
    Make("target", 0640);
    fs::create_symlink("target", folder.Path("link"));
    fs::create_symlink("unborn", folder.Path("dangling"));
    for (const std::string name : {"link", "dangling"}) {
        Replace(name, "new");
        EXPECT_TRUE(fs::is_symlink(folder.Path(name)));
        EXPECT_EQ(folder.Get(fs::read_symlink(folder.Path(name))), "new");
    }
    EXPECT_EQ(ModeOf("target"), 0640U);
}

TEST_F(PosixFiles, ANewFileGetsNoMoreThanItsSourceAndTheUmaskAllow) {
    for (const auto& [source, mask, expected] : {std::array<mode_t, 3>{0600, 022, 0600},
                                                 {0640, 022, 0640},
                                                 {0664, 022, 0644},
                                                 {0444, 022, 0644},
                                                 {0644, 077, 0600}}) {
        Make("source", source);
        umask(mask);
        EXPECT_EQ(ModeOfNewFrom("source"), expected) << std::oct << source;
    }
}

TEST_F(PosixFiles, AccessListsAreKeptAndNotInherited) {
    Make("listed", 0600);
    Make("plain", 0640);
    if (!SetList(folder.Path("listed"), accessList, ListWith(0, 0))) GTEST_SKIP() << "no access lists here";
    ASSERT_TRUE(SetList(folder.Path(), listForNewFiles, ListWith(6, 0)));
    for (const char* const name : {"listed", "plain"}) {
        const std::pair before(ModeOf(name), ListOf(name));
        Replace(name, "new");
        EXPECT_EQ(std::pair(ModeOf(name), ListOf(name)), before);
        EXPECT_EQ(ModeOfNewFrom(name), before.first);
        EXPECT_EQ(ListOf("new"), before.second);
    }
    Make("public", 0644);
    EXPECT_EQ(ModeOfNewFrom("public"), 0640U) << "the folder's list instead of the umask";
}

TEST_F(PosixFiles, AListForAnotherGroupLetsItDoNoMoreThanEveryone) {
    if (geteuid() != 0) GTEST_SKIP() << "only the superuser can become another user";
    Make("listed", 0600);
    const std::string path = folder.Path("listed");
    if (chown(path.c_str(), 0, 50) != 0 || !SetList(path, accessList, ListWith(4, 0)))
        GTEST_SKIP() << "no access lists here";
    fs::permissions(folder.Path(), fs::perms::all);
    umask(0);
    ASSERT_EQ(setegid(65534) + seteuid(1000), 0);  // who may write it, and cannot give files to its group
    EXPECT_EQ(FailureOf([&] { ModeOfNewFrom("listed"); }), 0);
    EXPECT_EQ(FailureOf([&] { Replace("listed", "newer"); }), 0);
    ASSERT_EQ(seteuid(0) + setegid(0), 0);
    EXPECT_EQ(ListOf("new"), ListWith(0, 0));
    EXPECT_EQ(ListOf("listed"), ListWith(0, 0));
}

TEST_F(PosixFiles, NothingButTheOldFileIsReplaced) {
    folder.Put("target", "old");
    const auto replacement = Written("target", "ours");
    fs::remove(folder.Path("target"));
    folder.Put("target", "made anew");
    EXPECT_EQ(FailureOf([&] { replacement.pending->Commit(); }), 75);
    EXPECT_EQ(folder.Get("target"), "made anew");

    // Nor the source, under whatever name.
    folder.Put("source", "x");
    const FileSystem::Source opened = SourceOf("source");
    fs::rename(folder.Path("source"), folder.Path("moved"));
    folder.Put("source", "another");
    EXPECT_EQ(FailureOf([&] { system.OpenReplacement(folder.Path("moved"), opened); }), 75);
    EXPECT_EQ(FailureOf([&] { system.OpenReplacement(folder.Path("new"), opened); }), 77);
    folder.Put("new", "old");
    EXPECT_EQ(FailureOf([&] { system.OpenDirectly(folder.Path("new")); }), 75);
    EXPECT_EQ(folder.Get("new"), "old");
}

TEST_F(PosixFiles, AnOpenDescriptorIsWrittenUnderAnyName) {
    folder.Put("file", "");
    const auto number = open(folder.Path("file").c_str(), O_WRONLY | O_APPEND);
    fs::create_symlink("/dev/fd/" + std::to_string(number), folder.Path("link"));
    EXPECT_EQ(system.KindOf(folder.Path("link")), FileKind::Other);
    EXPECT_EQ(system.KindOf("/dev/fd/+1"), FileKind::Missing);
    const auto file = system.OpenForWrite(folder.Path("link"));
    fs::rename(folder.Path("file"), folder.Path("moved"));
    file->Write("x");
    file->Close();
    close(number);
    EXPECT_EQ(folder.Get("moved"), "x");
}

TEST_F(PosixFiles, ChangesWhileAFileIsReadFailAtItsEnd) {
    const std::string path = folder.Path("file");
    const auto readToEnd = [](ReadableFile& file) {
        for (char byte = 0; file.Read(&byte, 1) != 0;)
            continue;
    };
    for (const auto& [content, size, secondsLater, failure] : {std::tuple{"xy", 3U, 0, 77},
                                                               {"", 3U, 0, 77},
                                                               {"xy", 2U, 1, 77},
                                                               {"xy", 1U, 0, 62},
                                                               {"xy", 2U, 0, 0}}) {
        folder.Put("file", content);
        const auto file = system.OpenForRead(path);
        const auto written = fs::last_write_time(path);
        fs::resize_file(path, size);  // changes other times, too, as a rename does
        fs::last_write_time(path, written + std::chrono::seconds(secondsLater));
        fs::remove(path);  // changes nothing
        EXPECT_EQ(FailureOf([&] { readToEnd(*file); }), failure) << size;
    }
    EXPECT_NO_THROW(readToEnd(*system.OpenForRead("/proc/self/status"))) << "a file without a size";
}

TEST_F(PosixFiles, AreKnownUnderSymbolicLinksUnlessTheseLeadNowhere) {
    folder.Put("file", "x");
    fs::create_directory_symlink(folder.Path(), folder.Path("same"));
    fs::create_symlink("file", folder.Path("symbolic"));
    EXPECT_TRUE(system.SameFile(folder.Path("file"), folder.Path("symbolic")));
    EXPECT_TRUE(system.SameFile(folder.Path("new"), folder.Path("same/same/new")));
    EXPECT_EQ(ReadFailure(std::string(5000, 'a')), 52);
    fs::create_symlink("loop", folder.Path("loop"));
    fs::create_symlink("loop", folder.Path("way"));
    EXPECT_EQ(WriteFailure(folder.Path("way")), 75);
    EXPECT_EQ(FailureOf([&] { system.SameFile(folder.Path("way"), folder.Path("file")); }), 75);
    EXPECT_EQ(FailureOf([&] { system.KindOf(folder.Path("way")); }), 75);
}

TEST_F(PosixFiles, StandardInputThatCannotBeKeptFailsWithAName) {
    folder.Put("file", std::string(200'000, 'x'));
    EXPECT_EQ(FailureToKeep(folder.Path()), "75 standard input") << "a folder";
    EXPECT_EQ(FailureToKeep(folder.Path("file"), O_CLOEXEC), "75 standard input") << "the program's own file";
    const std::string disk = folder.Path("disk");
    setenv("TMPDIR", disk.c_str(), 1);
    EXPECT_EQ(FailureToKeep(folder.Path("file")), "76 " + disk) << "no such folder";
    fs::create_directory(disk);
    const bool small = mount("tmpfs", disk.c_str(), "tmpfs", 0, "size=64k") == 0;
    const std::string failure = FailureToKeep(folder.Path("file"));
    unsetenv("TMPDIR");
    if (!small) GTEST_SKIP() << "no small disk can be mounted here";
    EXPECT_EQ(failure, "61 " + disk);
    EXPECT_EQ(umount(disk.c_str()), 0) << "nothing is open there";
}

}  // namespace
}  // namespace quillmere::test
