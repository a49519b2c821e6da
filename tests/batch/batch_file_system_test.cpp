#include "batch/batch_file_system.h"

#include "base/failure_report.h"
#include "batch/input_sample.h"
#include "tests/support/failure_of.h"
#include "tests/support/memory_file_system.h"

#include <gtest/gtest.h>

namespace quillmere::test {
namespace {

TEST(BatchFileSystem, AHyphenIsStandardInputReadTwiceAndStandardOutput) {
    for (std::size_t operation = 1;; ++operation) {
        MemoryFileSystem system;
        system.files = {{"standard input", "world"}, {"-", "a file"}};
        system.mostBytesPerRead = 2;
        system.FailAt(operation, FailureKind::DeviceIoError);
        const auto failure = TrapFailure([&] {
            BatchFileSystem files(system, BatchFileSystem::Writing::Replace, "-");
            const std::string world = FirstBytes(files, "-") + FirstBytes(files, "-");
            const auto output = files.OpenForWrite("-");
            output->Write(world);
            output->Close();
            files.CommitAll();
            EXPECT_FALSE(files.SameFile("-", "-") || files.SameFile("./-", "-"));
        });
        EXPECT_FALSE(system.files.contains("scratch")) << operation;
        if (failure) {
            EXPECT_NE(failure->Where(), "-");
            EXPECT_EQ(failure->Advice().empty(), failure->Where() == "standard output") << failure->Where();
            continue;
        }
        EXPECT_EQ(system.files["standard output"], "worldworld");
        EXPECT_EQ(system.files["-"], "a file");
        break;
    }
}

TEST(BatchFileSystem, APartOfStandardInputThatTheDiskLostIsMissed) {
    MemoryFileSystem system;
    system.files["standard input"] = "world";
    const KeptInput kept(system);
    system.files["scratch"] = "";
    char byte = 0;
    EXPECT_EQ(FailureOf([&] { kept.Open()->Read(&byte, 1); }), 62);
}

}  // namespace
}  // namespace quillmere::test
