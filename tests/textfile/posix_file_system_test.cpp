#include "tests/support/temporary_folder.h"
#include "textfile/failure.h"
#include "textfile/file_system.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>
#include <string>

namespace quillmere::test {
namespace {

namespace fs = std::filesystem;

class PosixFiles : public testing::Test {
 protected:
    template <class Operation>
    static std::int32_t FailureOf(Operation operation) {
        try {
            operation();
            return 0;
        } catch (const Failure& failure) {
            return failure.Number();
        }
    }
    std::int32_t ReadFailure(const std::string& path) const {
        return FailureOf([&] { system.OpenForRead(path); });
    }
    std::int32_t WriteFailure(const std::string& path) const {
        const std::int32_t direct = FailureOf([&] { system.OpenForWrite(path); });
        EXPECT_EQ(FailureOf([&] { system.OpenReplacement(path); }), direct) << path;
        return direct;
    }

    FileSystem& system = SystemFileSystem();
    TemporaryFolder folder;
};

TEST_F(PosixFiles, TellsTheKindsOfFailureApart) {
    folder.Put("file", "x");
    EXPECT_EQ(ReadFailure(folder.Path("absent")), 53);
    EXPECT_EQ(ReadFailure(folder.Path("absent/file")), 76);
    EXPECT_EQ(ReadFailure(folder.Path("file/below")), 76);
    EXPECT_EQ(ReadFailure(folder.Path()), 75) << "a folder";
    EXPECT_EQ(ReadFailure(""), 52);
    EXPECT_EQ(ReadFailure(std::string("a\0b", 3)), 52);
    EXPECT_EQ(ReadFailure(std::string(5000, 'a')), 52);
    EXPECT_EQ(WriteFailure(folder.Path("absent/file")), 76);
    EXPECT_EQ(WriteFailure(folder.Path()), 75);
    EXPECT_EQ(WriteFailure(folder.Path("new/")), 75);
    EXPECT_EQ(WriteFailure(""), 52);
    EXPECT_EQ(folder.Files(), 1);
}

TEST_F(PosixFiles, ReplacesAFileOnlyWhenCommitted) {
    folder.Put("old", "old");
    {
        const auto replacement = system.OpenReplacement(folder.Path("old"));
        replacement.file->Write("given up");
        replacement.file->Close();
        EXPECT_EQ(folder.Get("old"), "old");
        EXPECT_EQ(folder.Files(), 2);
    }
    EXPECT_EQ(folder.Get("old"), "old");
    EXPECT_EQ(folder.Files(), 1) << "the temporary file is gone";

    for (const char* const name : {"old", "new"}) {
        const auto replacement = system.OpenReplacement(folder.Path(name));
        replacement.file->Write("complete");
        replacement.file->Close();
        replacement.pending->Commit();
        EXPECT_EQ(folder.Get(name), "complete");
    }
    EXPECT_EQ(folder.Files(), 2);
}

TEST_F(PosixFiles, ReplacementKeepsPermissionsAndLinks) {
    folder.Put("target", "old");
    chmod(folder.Path("target").c_str(), 0640);
    fs::create_symlink("target", folder.Path("link"));
    fs::create_symlink("unborn", folder.Path("dangling"));
    for (const char* const name : {"link", "dangling"}) {
        const auto replacement = system.OpenReplacement(folder.Path(name));
        replacement.file->Write("new");
        replacement.file->Close();
        replacement.pending->Commit();
        EXPECT_TRUE(fs::is_symlink(folder.Path(name)));
    }
    EXPECT_EQ(folder.Get("target"), "new");
    EXPECT_EQ(folder.Get("unborn"), "new");
    EXPECT_EQ(fs::status(folder.Path("target")).permissions(), fs::perms(0640));
}

TEST_F(PosixFiles, KnowsOneFileUnderSeveralNames) {
    folder.Put("file", "x");
    folder.Put("other", "x");
    fs::create_symlink("file", folder.Path("symbolic"));
    fs::create_hard_link(folder.Path("file"), folder.Path("hard"));
    for (const char* const name : {"file", "symbolic", "hard", "./file"}) {
        EXPECT_TRUE(system.SameFile(folder.Path("file"), folder.Path(name))) << name;
    }
    EXPECT_FALSE(system.SameFile(folder.Path("file"), folder.Path("other")));
    EXPECT_FALSE(system.SameFile(folder.Path("file"), folder.Path("absent")));
    EXPECT_TRUE(system.SameFile(folder.Path("absent"), folder.Path("./absent"))) << "not there yet";
    EXPECT_FALSE(system.SameFile(folder.Path("absent"), folder.Path("gone")));
}

}  // namespace
}  // namespace quillmere::test
