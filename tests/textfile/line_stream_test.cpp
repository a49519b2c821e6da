#include "textfile/line_stream.h"

#include "tests/support/memory_file_system.h"

#include <gtest/gtest.h>

#include <string>

namespace quillmere::test {
namespace {

// Where lines end is tested by fuzz/world_script.cpp, with pieces of any size and both line ends.

TEST(LineStream, WritesAndReadsLinesThatDoNotFitItsBuffer) {
    constexpr std::size_t buffer = std::size_t{128} * 1024;
    for (const std::size_t length : {buffer - 2, buffer - 1, buffer, buffer + 1, 5 * buffer}) {
        MemoryFileSystem system;
        LineWriter writer(system.OpenForWrite("f"), LineEnd::CrLf);
        const std::string lines[] = {std::string(length, 'x'), "short", std::string(length, 'y'), ""};
        for (const std::string& line : lines)
            writer.WriteLine(line);
        writer.Close();
        EXPECT_EQ(system.files["f"], lines[0] + "\r\nshort\r\n" + lines[2] + "\r\n\r\n") << length;
        LineReader reader(system.OpenForRead("f"), "f", LineEnd::CrLf);
        for (const std::string& line : lines)
            EXPECT_EQ(reader.NextLine(), line) << length;
        EXPECT_TRUE(reader.AtEnd());
        EXPECT_THROW(reader.NextLine(), Failure);
    }
}

TEST(LineWriter, WritesNothingAfterARefusedWrite) {
    MemoryFileSystem system;
    LineWriter writer(system.OpenForWrite("f"), LineEnd::Lf);
    system.FailAt(1, FailureKind::DiskFull);
    const std::string big(300'000, 'x');
    EXPECT_THROW(writer.WriteLine(big), Failure);
    EXPECT_NO_THROW(writer.Close());
    EXPECT_EQ(system.files["f"], "");
}

}  // namespace
}  // namespace quillmere::test
