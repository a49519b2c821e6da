#include "textfile/line_stream.h"

#include "tests/support/memory_file_system.h"

#include <gtest/gtest.h>

#include <string>
#include <tuple>
#include <vector>

namespace quillmere::test {
namespace {

using Strings = std::vector<std::string>;

/// All lines of a file with this content, read in pieces of at most `piece` bytes.
Strings LinesOf(const std::string& content, LineEnd lineEnd, std::size_t piece = 1 << 20) {
    MemoryFileSystem system;
    system.mostBytesPerRead = piece;
    system.files["f"] = content;
    LineReader reader(system.OpenForRead("f"), "f", lineEnd);
    Strings lines;
    while (!reader.AtEnd())
        lines.emplace_back(reader.NextLine());
    EXPECT_THROW(reader.NextLine(), Failure);
    return lines;
}

TEST(LineReader, CutsLinesWhateverTheSizeOfThePieces) {
    using enum LineEnd;
    for (const auto& [lineEnd, content, lines] : std::vector<std::tuple<LineEnd, std::string, Strings>>{
             {CrLf, "", {}},
             {CrLf, "\r\n", {""}},
             {CrLf, "a\r\n\r\nb", {"a", "", "b"}},
             {CrLf, "one\rtwo\r\r\nthree\r", {"one", "two", "", "three"}},
             {CrLf, "a\nb\r\n\nc\n", {"a\nb", "\nc\n"}},
             {CrLf, {"a\0\xff\r\nb", 6}, {{"a\0\xff", 3}, "b"}},
             {Lf, "a\nb\r\n\nc", {"a", "b\r", "", "c"}}}) {
        for (std::size_t piece = 1; piece <= content.size() + 1; ++piece)
            EXPECT_EQ(LinesOf(content, lineEnd, piece), lines) << "pieces of " << piece << " bytes";
    }
}

TEST(LineStream, WritesAndReadsLinesThatDoNotFitItsBuffer) {
    constexpr std::size_t buffer = std::size_t{128} * 1024;
    for (const std::size_t length : {buffer - 2, buffer - 1, buffer, buffer + 1, 5 * buffer}) {
        const Strings lines = {std::string(length, 'x'), "short", std::string(length, 'y'), ""};
        MemoryFileSystem system;
        LineWriter writer(system.OpenForWrite("f"), LineEnd::CrLf);
        for (const std::string& line : lines)
            writer.WriteLine(line);
        writer.Close();
        EXPECT_EQ(system.files["f"], lines[0] + "\r\nshort\r\n" + lines[2] + "\r\n\r\n") << length;
        EXPECT_EQ(LinesOf(system.files["f"], LineEnd::CrLf), lines) << length;
    }
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
