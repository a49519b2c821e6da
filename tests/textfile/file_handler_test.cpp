#include "textfile/file_handler.h"

#include "tests/support/failure_of.h"
#include "tests/support/memory_file_system.h"
#include "tests/support/text.h"

#include <gtest/gtest.h>

namespace quillmere::test {
namespace {

class FileHandler : public testing::Test {
 protected:
    MemoryFileSystem system;
    OpenFileTable table{system};
    fileHandler handler{table};
};

TEST_F(FileHandler, GivesTheLowestFreeNumberAndKeepsOtherFilesOpen) {
    system.files["a"] = Lines({"first", "second"});
    handler.SetFileName("a");
    const std::int32_t one = handler.OpenFile();
    const std::int32_t two = handler.OpenFile();
    EXPECT_EQ(one, 1);
    EXPECT_EQ(two, 2);
    EXPECT_EQ(handler.GetNextLine(two), "first");
    handler.CloseFile(one);
    EXPECT_EQ(handler.GetNextLine(two), "second");
    EXPECT_TRUE(table.AtEnd(two));
    EXPECT_EQ(FailureOf([&] { handler.GetNextLine(two); }), 62);

    handler.SetFileName("b");
    const std::int32_t written = handler.OpenFileForWrite();
    EXPECT_EQ(written, 1);
    handler.WriteNextLine("", written);
    handler.WriteNextLine("text", written);
    handler.CloseWriteFile(written);
    EXPECT_EQ(system.files["b"], Lines({"", "text"}));
}

TEST_F(FileHandler, HasNumbersFor255FilesAndClosesThemAllAtOnce) {
    system.files["a"] = "";
    handler.SetFileName("a");
    for (std::int32_t number = 1; number <= 255; ++number)
        EXPECT_EQ(handler.OpenFile(), number);
    EXPECT_EQ(FailureOf([&] { handler.OpenFile(); }), 67);
    table.CloseAll();
    EXPECT_EQ(system.openFiles, 0);
    EXPECT_EQ(handler.OpenFile(), 1);
}

TEST_F(FileHandler, RefusesNumbersThatAreNotOpenForTheirUse) {
    system.files["a"] = "text";
    handler.SetFileName("a");
    const std::int32_t reading = handler.OpenFile();
    EXPECT_EQ(FailureOf([&] { handler.WriteNextLine("x", reading); }), 52);
    for (const std::int32_t number : {-1, 0, 2, 255, 256, 65'537}) {
        EXPECT_EQ(FailureOf([&] { handler.GetNextLine(number); }), 52) << number;
        EXPECT_EQ(FailureOf([&] { handler.CloseFile(number); }), 52) << number;
    }
}

TEST_F(FileHandler, FreesANumberWhateverItsOpeningOrClosingMeets) {
    handler.SetFileName("absent");
    EXPECT_EQ(FailureOf([&] { handler.OpenFile(); }), 53);
    handler.SetFileName("b");
    const std::int32_t number = handler.OpenFileForWrite();
    EXPECT_EQ(number, 1) << "a refused open takes no number";
    handler.WriteNextLine("x", number);
    system.FailAt(1, FailureKind::DiskFull);
    EXPECT_EQ(FailureOf([&] { handler.CloseWriteFile(number); }), 61);
    EXPECT_FALSE(table.IsOpen(number));
    EXPECT_EQ(system.openFiles, 0);
}

}  // namespace
}  // namespace quillmere::test
