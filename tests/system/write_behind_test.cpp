#include "system/write_behind.h"

#include "tests/support/failure_of.h"
#include "tests/support/memory_file_system.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>

namespace quillmere::test {
namespace {

TEST(WriteBehind, WritesInOrderUpToAFailureOfWhichTheCloseTellsAtTheLatest) {
    // Operations are batches, pieces too long for one, and the close.
    for (const auto& [pieces, operations] : {std::pair{0, 1U}, {1, 2U}, {40, 11U}}) {
        for (std::size_t failing = 0; failing <= operations; ++failing) {  // 0: none fails
            MemoryFileSystem system;
            auto file = WriteBehind(system.OpenForWrite("out"));
            system.FailAt(failing, FailureKind::DiskFull);
            std::string given;
            for (int i = 0; i < pieces; ++i) {
                // Some pieces are too long to be gathered with others.
                const std::string piece(i % 16 == 15 ? 1'000'000 : 100'000, static_cast<char>('a' + i % 26));
                given += piece;
                const std::int32_t failure = FailureOf([&] { file->Write(piece); });
                EXPECT_TRUE(failure == 0 || (failing > 0 && failure == 61)) << failure;
            }
            EXPECT_EQ(FailureOf([&] { file->Close(); }), failing > 0 ? 61 : 0) << "operation " << failing;
            file.reset();
            EXPECT_EQ(system.openFiles, 0);
            EXPECT_TRUE(given.starts_with(system.files["out"]));
            if (failing > 0) continue;
            EXPECT_EQ(system.files["out"].size(), given.size());
            EXPECT_EQ(system.operations, operations);
        }
    }
}

}  // namespace
}  // namespace quillmere::test
