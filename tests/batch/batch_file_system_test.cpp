#include "batch/batch_file_system.h"

#include "tests/support/memory_file_system.h"

#include <gtest/gtest.h>

#include <optional>
#include <string>

namespace quillmere::test {
namespace {

std::string Content(ReadableFile& file) {
    std::string content;
    char piece[7];
    while (const std::size_t size = file.Read(piece, sizeof piece))
        content.append(piece, size);
    return content;
}

class BatchFiles : public testing::Test {
 protected:
    BatchFiles() { system.files = {{"standard input", "world"}, {"-", "a file"}}; }

    /// Reads standard input twice, the second time while the first opening is in use, and writes it.
    std::string CopyStandardInput() {
        BatchFileSystem files(system, BatchFileSystem::Writing::Replace, "-");
        EXPECT_EQ(files.KindOf("-"), FileKind::Regular);
        const auto first = files.OpenForRead("-");
        system.files["standard input"] = "gone";
        const auto second = files.OpenForRead("-");
        EXPECT_TRUE(first->CanBeReadAgain() && first->State() == second->State());
        const std::string content = Content(*first);
        EXPECT_EQ(Content(*second), content);
        const auto output = files.OpenForWrite("-");
        output->Write(content);
        output->Close();
        files.CommitAll();
        return content;
    }

    MemoryFileSystem system;
};

TEST_F(BatchFiles, AHyphenIsStandardInputReadTwiceAndStandardOutput) {
    EXPECT_EQ(CopyStandardInput(), "world");
    EXPECT_EQ(system.files["standard output"], "world");
    EXPECT_EQ(system.files["-"], "a file");
    EXPECT_FALSE(system.files.contains("scratch"));
    BatchFileSystem files(system, BatchFileSystem::Writing::Replace, "-");
    EXPECT_EQ(Content(*files.OpenForRead("-")), "gone");
    for (const char* const other : {"-", "./-", "out"})
        EXPECT_FALSE(files.SameFile("-", other) || files.SameFile(other, "-")) << other;
}

TEST_F(BatchFiles, AFaultOfAStandardStreamNamesItAndAdvises) {
    for (std::size_t operation = 1;; ++operation) {
        system.files["standard input"] = "world";
        system.FailAt(operation, FailureKind::DeviceIoError);
        std::optional<Failure> failure;
        try {
            CopyStandardInput();
        } catch (const Failure& caught) {
            failure = caught;
        }
        EXPECT_FALSE(system.files.contains("scratch"));
        if (system.operations < operation) break;
        ASSERT_TRUE(failure) << operation;
        EXPECT_NE(failure->Where(), "-");
        EXPECT_EQ(failure->Advice().empty(), failure->Where() == "standard output") << failure->Where();
    }
}

TEST_F(BatchFiles, APartOfStandardInputThatADiskLostIsMissed) {
    BatchFileSystem files(system, BatchFileSystem::Writing::Replace, "-");
    const auto file = files.OpenForRead("-");
    system.files["scratch"] = "wor";
    EXPECT_THROW(Content(*file), Failure);
}

}  // namespace
}  // namespace quillmere::test
