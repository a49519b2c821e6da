#include "textfile/line_stream.h"

#include "tests/support/memory_file_system.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace quillmere::test {
namespace {

/// All lines of a file with this content, read in pieces of at most `piece` bytes.
std::vector<std::string> LinesOf(const std::string& content, LineEnd lineEnd = LineEnd::CrLf,
                                 std::size_t piece = 1 << 20) {
    MemoryFileSystem system;
    system.mostBytesPerRead = piece;
    system.files["f"] = content;
    LineReader reader(system.OpenForRead("f"), "f", lineEnd);
    std::vector<std::string> lines;
    while (!reader.AtEnd())
        lines.emplace_back(reader.NextLine());
    EXPECT_THROW(reader.NextLine(), Failure);
    return lines;
}

using Strings = std::vector<std::string>;

TEST(LineReader, CutsLinesAtCarriageReturns) {
    EXPECT_EQ(LinesOf(""), Strings{});
    EXPECT_EQ(LinesOf("\r\n"), Strings{""});
    EXPECT_EQ(LinesOf("a\r\n\r\nb"), (Strings{"a", "", "b"}));
    EXPECT_EQ(LinesOf("a\rb\r\r\nc\r"), (Strings{"a", "b", "", "c"}));
    EXPECT_EQ(LinesOf("a\nb\r\n\nc\n"), (Strings{"a\nb", "\nc\n"}));
    EXPECT_EQ(LinesOf(std::string("a\0\xff\r\nb", 6)), (Strings{std::string("a\0\xff", 3), "b"}));
}

TEST(LineReader, WithLineFeedsKeepsCarriageReturnsAsText) {
    EXPECT_EQ(LinesOf("a\nb\r\n\nc", LineEnd::Lf), (Strings{"a", "b\r", "", "c"}));
}

TEST(LineReader, ReadsTheSameLinesWhateverTheSizeOfThePieces) {
    const std::string content = "one\r\ntwo\r\n\r\nthree\rfour\r\n\nfive\r\n";
    const Strings whole = LinesOf(content);
    for (std::size_t piece = 1; piece <= content.size(); ++piece) {
        EXPECT_EQ(LinesOf(content, LineEnd::CrLf, piece), whole) << "pieces of " << piece << " bytes";
    }
}

TEST(LineReader, ReadsLinesLongerThanItsBufferAndLineEndsOnItsEdge) {
    constexpr std::size_t buffer = std::size_t{128} * 1024;
    for (const std::size_t length : {buffer - 2, buffer - 1, buffer, buffer + 1, 5 * buffer}) {
        const Strings lines = {std::string(length, 'x'), "short", std::string(length, 'y'), ""};
        EXPECT_EQ(LinesOf(lines[0] + "\r\nshort\r\n" + lines[2] + "\r\n\r\n"), lines) << length;
    }
}

TEST(LineWriter, WritesWhatFitsItsBufferAndWhatDoesNot) {
    MemoryFileSystem system;
    LineWriter writer(system.OpenForWrite("f"), LineEnd::CrLf);
    std::string expected;
    for (const std::size_t length : {0U, 10U, 131'058U, 131'072U, 700'000U, 1U}) {
        const std::string line(length, 'x');
        writer.WriteLine(line);
        expected += line + "\r\n";
    }
    writer.Close();
    EXPECT_EQ(system.files["f"], expected);
}

TEST(LineWriter, ReportsARefusedLastWriteAndWritesNothingAfterAGap) {
    MemoryFileSystem system;
    LineWriter writer(system.OpenForWrite("f"), LineEnd::Lf);
    system.FailAt(1, FailureKind::DiskFull);
    const std::string big(300'000, 'x');
    EXPECT_THROW(writer.WriteLine(big), Failure);
    EXPECT_NO_THROW(writer.Close());
    EXPECT_EQ(system.files["f"], "");

    LineWriter last(system.OpenForWrite("g"), LineEnd::Lf);
    last.WriteLine("x");
    system.FailAt(1, FailureKind::DiskFull);
    EXPECT_THROW(last.Close(), Failure);
    EXPECT_EQ(system.openFiles, 0) << "the file is closed in either case";
}

}  // namespace
}  // namespace quillmere::test
