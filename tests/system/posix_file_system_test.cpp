#include "tests/support/system_files.h"

#include <sys/stat.h>

#include <filesystem>

namespace quillmere::test {
namespace {

namespace fs = std::filesystem;

class PosixFiles : public SystemFiles {};

TEST_F(PosixFiles, ReplacementKeepsPermissionsAndLinks) {
    folder.Put("target", "old");
    chmod(folder.Path("target").c_str(), 0640);
    fs::create_symlink("target", folder.Path("link"));
    fs::create_symlink("unborn", folder.Path("dangling"));
    for (const char* const name : {"link", "dangling"}) {
        Replace(name, "new");
        EXPECT_TRUE(fs::is_symlink(folder.Path(name)));
    }
    EXPECT_EQ(folder.Get("target"), "new");
    EXPECT_EQ(folder.Get("unborn"), "new");
    EXPECT_EQ(fs::status(folder.Path("target")).permissions(), fs::perms(0640));
}

TEST_F(PosixFiles, LinksThatLeadNowhereAreNotReplaced) {
    fs::create_symlink("loop", folder.Path("loop"));
    fs::create_symlink("loop", folder.Path("way"));
    EXPECT_EQ(WriteFailure(folder.Path("way")), 75);
    EXPECT_FALSE(system.SameFile(folder.Path("way"), folder.Path("file")));
}

TEST_F(PosixFiles, AreKnownUnderSymbolicLinksAndRefusedUnderNamesTooLong) {
    folder.Put("file", "x");
    fs::create_symlink("file", folder.Path("symbolic"));
    EXPECT_TRUE(system.SameFile(folder.Path("file"), folder.Path("symbolic")));
    EXPECT_EQ(ReadFailure(std::string(5000, 'a')), 52);
}

}  // namespace
}  // namespace quillmere::test
