#include "textfile/failure.h"
#include "textfile/file_system.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

namespace quillmere::test {
namespace {

namespace fs = std::filesystem;

/// Tests in a folder of their own, which is removed at the end.
class PosixFiles : public testing::Test {
 protected:
    PosixFiles() {
        std::string pattern = (fs::temp_directory_path() / "quillmere-test-XXXXXX").string();
        folder_ = mkdtemp(pattern.data());
    }
    ~PosixFiles() override { fs::remove_all(folder_); }

    std::string Path(const std::string& name) const { return (folder_ / name).string(); }
    void Put(const std::string& name, const std::string& content) const {
        std::ofstream(Path(name)) << content;
    }
    std::string Get(const std::string& name) const {
        std::ifstream file(Path(name));
        return {std::istreambuf_iterator<char>(file), {}};
    }
    long FilesInFolder() const { return std::distance(fs::directory_iterator(folder_), {}); }

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
    fs::path folder_;
};

TEST_F(PosixFiles, TellsTheKindsOfFailureApart) {
    Put("file", "x");
    EXPECT_EQ(ReadFailure(Path("absent")), 53);
    EXPECT_EQ(ReadFailure(Path("absent/file")), 76);
    EXPECT_EQ(ReadFailure(Path("file/below")), 76);
    EXPECT_EQ(ReadFailure(Path("")), 75) << "a folder";
    EXPECT_EQ(ReadFailure(""), 52);
    EXPECT_EQ(ReadFailure(std::string("a\0b", 3)), 52);
    EXPECT_EQ(ReadFailure(std::string(5000, 'a')), 52);
    EXPECT_EQ(WriteFailure(Path("absent/file")), 76);
    EXPECT_EQ(WriteFailure(folder_.string()), 75);
    EXPECT_EQ(WriteFailure(Path("new/")), 75);
    EXPECT_EQ(WriteFailure(""), 52);
    EXPECT_EQ(FilesInFolder(), 1);
}

TEST_F(PosixFiles, ReportsAFullDisk) {
    const auto file = system.OpenForWrite("/dev/full");
    EXPECT_EQ(FailureOf([&] { file->Write("x"); }), 61);
}

TEST_F(PosixFiles, ReplacesAFileOnlyWhenCommitted) {
    Put("old", "old");
    {
        const auto replacement = system.OpenReplacement(Path("old"));
        replacement.file->Write("given up");
        replacement.file->Close();
        EXPECT_EQ(Get("old"), "old");
        EXPECT_EQ(FilesInFolder(), 2);
    }
    EXPECT_EQ(Get("old"), "old");
    EXPECT_EQ(FilesInFolder(), 1) << "the temporary file is gone";

    for (const char* const name : {"old", "new"}) {
        const auto replacement = system.OpenReplacement(Path(name));
        replacement.file->Write("complete");
        replacement.file->Close();
        replacement.pending->Commit();
        EXPECT_EQ(Get(name), "complete");
    }
    EXPECT_EQ(FilesInFolder(), 2);
}

TEST_F(PosixFiles, ReplacementKeepsPermissionsAndLinks) {
    Put("target", "old");
    chmod(Path("target").c_str(), 0640);
    fs::create_symlink("target", Path("link"));
    fs::create_symlink("unborn", Path("dangling"));
    for (const char* const name : {"link", "dangling"}) {
        const auto replacement = system.OpenReplacement(Path(name));
        replacement.file->Write("new");
        replacement.file->Close();
        replacement.pending->Commit();
        EXPECT_TRUE(fs::is_symlink(Path(name)));
    }
    EXPECT_EQ(Get("target"), "new");
    EXPECT_EQ(Get("unborn"), "new");
    EXPECT_EQ(fs::status(Path("target")).permissions(), fs::perms(0640));
}

TEST_F(PosixFiles, KnowsOneFileUnderSeveralNames) {
    Put("file", "x");
    Put("other", "x");
    fs::create_symlink("file", Path("symbolic"));
    fs::create_hard_link(Path("file"), Path("hard"));
    for (const char* const name : {"file", "symbolic", "hard", "./file"}) {
        EXPECT_TRUE(system.SameFile(Path("file"), Path(name))) << name;
    }
    EXPECT_FALSE(system.SameFile(Path("file"), Path("other")));
    EXPECT_FALSE(system.SameFile(Path("file"), Path("absent")));
    EXPECT_TRUE(system.SameFile(Path("absent"), Path("./absent"))) << "not there yet";
    EXPECT_FALSE(system.SameFile(Path("absent"), Path("gone")));
}

TEST_F(PosixFiles, KnowsPipesAndDevices) {
    ASSERT_EQ(mkfifo(Path("pipe").c_str(), 0600), 0);
    EXPECT_EQ(system.KindOf(Path("pipe")), FileKind::Other);
    EXPECT_EQ(system.KindOf("/dev/null"), FileKind::Other);
    EXPECT_EQ(system.KindOf(folder_.string()), FileKind::Folder);
    EXPECT_EQ(system.KindOf(Path("absent")), FileKind::Missing);
    const int bothEnds = open(Path("pipe").c_str(), O_RDWR);
    EXPECT_FALSE(system.OpenForRead(Path("pipe"))->CanBeReadAgain());
    close(bothEnds);
}

}  // namespace
}  // namespace quillmere::test
