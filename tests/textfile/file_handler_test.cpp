#include "textfile/file_handler.h"

#include "tests/support/failure_of.h"
#include "tests/support/memory_file_system.h"
#include "tests/support/text.h"

#include <gtest/gtest.h>

namespace quillmere::test {
namespace {

class FileHandler : public testing::Test {
 protected:
    FileHandler() { system.files["a"] = Lines({"first", "second"}); }

    MemoryFileSystem system;
    OpenFileTable table{system};
    fileHandler handler{table};
};

TEST_F(FileHandler, GivesTheLowestFreeNumberAndKeepsOtherFilesOpen) {
    handler.SetFileName("a");
    for (std::int32_t number = 1; number <= 255; ++number)
        EXPECT_EQ(handler.OpenFile(), number);
    EXPECT_EQ(FailureOf([&] { handler.OpenFile(); }), 67);
    EXPECT_EQ(handler.GetNextLine(2), "first");
    handler.CloseFile(1);
    EXPECT_EQ(handler.GetNextLine(2), "second");
    EXPECT_TRUE(table.AtEnd(2));
    EXPECT_EQ(FailureOf([&] { handler.GetNextLine(2); }), 62);
    handler.SetFileName("absent");
    EXPECT_EQ(FailureOf([&] { handler.OpenFile(); }), 53);
    handler.SetFileName("b");
    EXPECT_EQ(handler.OpenFileForWrite(), 1) << "a refused open takes no number";
    handler.WriteNextLine("", 1);
    handler.WriteNextLine("text", 1);
    table.CloseAll();
    EXPECT_EQ(system.files["b"], Lines({"", "text"}));
    EXPECT_EQ(system.openFiles, 0);
}

TEST_F(FileHandler, RefusesNumbersThatAreNotOpenForTheirUse) {
    handler.SetFileName("a");
    EXPECT_EQ(FailureOf([&] { handler.WriteNextLine("x", handler.OpenFile()); }), 52);
    for (const std::int32_t number : {-1, 0, 2, 255, 256, 65'537}) {
        EXPECT_EQ(FailureOf([&] { handler.GetNextLine(number); }), 52) << number;
        EXPECT_EQ(FailureOf([&] { handler.CloseFile(number); }), 52) << number;
    }
}

TEST_F(FileHandler, FreesANumberAlsoWhenTheLastWriteOrTheCloseFails) {
    handler.SetFileName("b");
    for (const std::size_t failing : {1U, 2U}) {
        const std::int32_t number = handler.OpenFileForWrite();
        handler.WriteNextLine("x", number);
        system.FailAt(failing, FailureKind::DiskFull);
        EXPECT_EQ(FailureOf([&] { handler.CloseWriteFile(number); }), 61);
        EXPECT_FALSE(table.IsOpen(number));
        EXPECT_EQ(system.openFiles, 0);
    }
}

}  // namespace
}  // namespace quillmere::test
