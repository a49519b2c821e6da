#include "system/write_behind.h"

#include "tests/support/failure_of.h"
#include "tests/support/memory_file_system.h"

#include <gtest/gtest.h>

#include <string>

namespace quillmere::test {
namespace {

constexpr std::size_t pieceSize = std::size_t{100} * 1000;  // bytes

std::string Piece(int number) {
    return std::string(pieceSize, static_cast<char>('a' + number % 26));
}

TEST(WriteBehind, WritesAllPiecesInTheirOrder) {
    for (const int pieces : {0, 1, 40}) {
        MemoryFileSystem system;
        std::string expected;
        const auto file = WriteBehind(system.OpenForWrite("out"));
        for (int i = 0; i < pieces; ++i) {
            // Some pieces are too long to be gathered with others.
            const std::string piece = i % 16 == 15 ? Piece(i) + std::string(1'000'000, '!') : Piece(i);
            file->Write(piece);
            expected += piece;
        }
        file->Close();
        EXPECT_EQ(system.files["out"], expected);
    }
}

TEST(WriteBehind, AFailureIsThrownAgainByEveryLaterCallAndNothingIsWrittenAfterIt) {
    constexpr int pieces = 30;
    constexpr std::size_t operations = 7;  // six batches and the close
    for (std::size_t operation = 1; operation <= operations; ++operation) {
        MemoryFileSystem system;
        auto file = WriteBehind(system.OpenForWrite("out"));
        system.FailAt(operation, FailureKind::DiskFull);
        int failures = 0;
        const auto count = [&failures](const auto& act) { failures += FailureOf(act) == 61 ? 1 : 0; };
        std::string expected;
        for (int i = 0; i < pieces; ++i) {
            count([&] { file->Write(Piece(i)); });
            expected += Piece(i);
        }
        const int before = failures;
        count([&] { file->Close(); });
        EXPECT_EQ(failures, before + 1)
            << "operation " << operation << ": the close tells of it at the latest";
        EXPECT_TRUE(expected.starts_with(system.files["out"]));
        file.reset();
        EXPECT_EQ(system.openFiles, 0);
    }
}

}  // namespace
}  // namespace quillmere::test
