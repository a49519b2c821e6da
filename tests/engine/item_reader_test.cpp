#include "engine/item_reader.h"

#include "tests/support/memory_file_system.h"
#include "tests/support/recording_log.h"
#include "tests/support/text.h"

#include <gtest/gtest.h>

#include <random>
#include <string>
#include <tuple>
#include <vector>

namespace quillmere::test {
namespace {

/// What a test looks at in a record: code, lines joined by "|", position as "x,y,z,facet".
struct Seen {
    std::string code;
    std::string lines;
    std::string position;
    bool operator==(const Seen&) const = default;
};

void PrintTo(const Seen& seen, std::ostream* out) {
    *out << "{" << seen.code << "; " << seen.lines << "; " << seen.position << "}";
}

const Seen emptyRecord = {"", "", "0,0,0,0"};

class Reader : public testing::Test, private ScanObserver {
 protected:
    /// Every record of the file, and what was copied to the output on the way.
    std::vector<Seen> Read(const std::string& world) {
        system.files["in"] = world;
        shared.objReader.SetFileName("in");
        shared.objWriter.SetFileName("out");
        const std::int32_t input = shared.objReader.OpenFile();
        const std::int32_t output = shared.objWriter.OpenFileForWrite();
        shared.blnIdle = false;
        skipped.clear();
        std::vector<Seen> records;
        WorldItem item;
        while (shared.openFiles.IsOpen(input) && !shared.openFiles.AtEnd(input)) {
            reader.GetNextItem(input, output, item);
            records.push_back(Look(item));
        }
        reader.SkipRest();
        shared.openFiles.CloseAll();
        copied = system.files["out"];
        return records;
    }

    static Seen Look(const WorldItem& item) {
        Seen seen{std::string(item.Code()), "", ""};
        for (std::size_t slot = 0; slot < item.Lines.Count(); ++slot) {
            seen.lines += (slot == 0 ? "" : "|") + std::string(item.Lines[slot]);
        }
        for (const std::int32_t number : {item.X, item.Y, item.Z, item.Facet}) {
            seen.position += (seen.position.empty() ? "" : ",") + std::to_string(number);
        }
        return seen;
    }

    void ExpectFailure(const std::string& world, FailureKind kind, const std::string& where) {
        log.EmptyLog();
        EXPECT_EQ(Read(world), std::vector{emptyRecord});
        EXPECT_EQ(log.entries, Report(kind, readerModule));
        EXPECT_EQ(log.failedWhere, where);
        EXPECT_TRUE(shared.blnIdle);
        EXPECT_EQ(system.openFiles, 0);
    }

    MemoryFileSystem system;
    modGlobal shared{system};
    RecordingLog log;
    int yields = 0;
    std::string skipped;  ///< number and text of each skipped line
    std::string copied;
    ItemReader reader{shared, log, *this};

 private:
    void Yield() override { ++yields; }
    void LineSkipped(std::string_view line, std::uint64_t number) override {
        skipped.append(std::to_string(number)).append(line).append("|");
    }
};

using Records = std::vector<Seen>;

TEST_F(Reader, ReadsBlocksAndSkipsWhatStandsBetweenThem) {
    const Records records =
        Read(Lines({"// comment", "  [WORLDITEM i_torch]  ", " A=1 ", "P=100,200,-5,1", "", "", "stray",
                    "\t[WORLDITEM i_lost]", "P=9,9", "", "[WORLDITEM i_chair] more text", "P=3,4", "   ",
                    "[WORLDITEM i_inside]", "p=7,7", " P=8,8", ""}));
    EXPECT_EQ(records, (Records{{"i_torch", "[WORLDITEM i_torch]| A=1 |P=100,200,-5,1", "100,200,-5,1"},
                                {"i_chair",
                                 "[WORLDITEM i_chair] more text|P=3,4|   |[WORLDITEM i_inside]|p=7,7| P=8,8",
                                 "3,4,0,0"}}));
    EXPECT_EQ(yields, 8) << "once per line between blocks, headers included";
    EXPECT_EQ(skipped, "1// comment|7stray|8\t[WORLDITEM i_lost]|9P=9,9|");
}

TEST_F(Reader, CutsTheCodeFromTheSecondPieceOfTheHeader) {
    EXPECT_EQ(Read(Lines({"[A i_x]", "", "[A]", "", "[A i_x", "", "[A i_x] ]"})),
              (Records{{"i_x", "[A i_x]", "0,0,0,0"},
                       {"", "[A]", "0,0,0,0"},
                       {"i_", "[A i_x", "0,0,0,0"},
                       {"i_x", "[A i_x] ]", "0,0,0,0"}}));
}

TEST_F(Reader, CopiesTheEndSentinelAndReturnsTheEmptyRecord) {
    EXPECT_EQ(Read(Lines({"[A b]", "", "  [EOF] ", "[C d]", "[EOF]"})),
              (Records{{"b", "[A b]", "0,0,0,0"}, emptyRecord, {"d", "[C d]|[EOF]", "0,0,0,0"}}));
    EXPECT_EQ(copied, Lines({"[EOF]"}));
    EXPECT_EQ(Read(Lines({"no header", "[eof"})), (Records{{"", "[eof", "0,0,0,0"}}));
    EXPECT_EQ(Read("just text"), Records{emptyRecord});
}

TEST_F(Reader, TakesTheLastPositionLineAndIgnoresFurtherComponents) {
    EXPECT_EQ(Read(Lines({"[A b]", "P=1,2,3,4,x", "P= 5 , 6.5 "})),
              (Records{{"b", "[A b]|P=1,2,3,4,x|P= 5 , 6.5 ", "5,6,3,4"}}));
}

TEST_F(Reader, AbandonsABlockWhosePositionHasNoComma) {
    EXPECT_EQ(Read(Lines({"[A lost]", "X=1", "P=12", "Y=2", "", "[A kept]", ""})),
              (Records{{"kept", "[A kept]", "0,0,0,0"}}));
    EXPECT_EQ(skipped, "1[A lost]|2X=1|3P=12|4Y=2|");
    EXPECT_EQ(Read(Lines({"[A last]", "X=1", "P=12", "Y=2"})),
              (Records{{"last", "[A last]|X=1", "0,0,0,0"}}));
    EXPECT_EQ(skipped, "3P=12|4Y=2|");
    EXPECT_EQ(Read(Lines({"[A last]", "P=12", "[EOF]"})), Records{emptyRecord});
    EXPECT_EQ(skipped, "1[A last]|2P=12|");
    std::string rest;
    for (int line = 0; line < 6000; ++line)
        rest += "x\r\n";
    Read(Lines({"[A lost]", "P=12"}) + rest + Lines({"[A kept]"}));
    EXPECT_TRUE(skipped.starts_with("5003x|")) << "no more wait than a block can hold";
    EXPECT_TRUE(skipped.ends_with("5001x|5002x|"));
}

TEST_F(Reader, ReportsItsFailuresAndClosesEveryFile) {
    ExpectFailure(Lines({"[A c]", "P=1,x", "", "[A d]"}), FailureKind::TypeMismatch, "in, line 2");
    ExpectFailure(Lines({"[A b]", "P=1,,3"}), FailureKind::TypeMismatch, "in, line 2");
    ExpectFailure(Lines({"[A b]", "P=1,2,2147483648"}), FailureKind::Overflow, "in, line 2");
    ExpectFailure(Lines({"text", "[A  b]"}), FailureKind::InvalidProcedureCall, "in, line 2");
}

/// Pieces of one byte leave no block whole in the buffer, so every line is read by itself; the file in one
/// piece takes the way of whole blocks.
TEST_F(Reader, ReadsWholeBlocksJustAsItReadsLines) {
    std::mt19937 random(1);
    const std::string alphabet = "\r\n[] P=,-0.x";
    const std::string plain =
        Lines({"[A i_x]", "P=1,-2,3,4", "", "[A b c]", "P=4,5", "", "[EOF]", "", "[B d]", "X=1", ""});
    for (int round = 0; round < 4000; ++round) {
        std::string world = plain;
        for (auto changes = random() % 4; changes > 0; --changes)
            world[random() % world.size()] = alphabet[random() % alphabet.size()];
        log = {};
        yields = 0;
        system.mostBytesPerRead = 1;
        const Records lineByLine = Read(world);
        const auto expected = std::tuple(log.entries, log.failedWhere, copied, skipped, yields);
        log = {};
        yields = 0;
        system.mostBytesPerRead = 1 << 20;
        ASSERT_EQ(Read(world), lineByLine) << world;
        ASSERT_EQ(std::tuple(log.entries, log.failedWhere, copied, skipped, yields), expected) << world;
    }
}

TEST_F(Reader, HoldsFiveThousandBodyLinesAndNotOneMore) {
    std::string block = Lines({"[A big]"});
    for (int line = 1; line <= 5000; ++line)
        block += "x\r\n";
    const Records records = Read(block);
    ASSERT_EQ(records.size(), 1U);
    EXPECT_EQ(records[0].lines.size(), std::string("[A big]").size() + 2 * 5000);
    ExpectFailure(block + "x\r\n", FailureKind::SubscriptOutOfRange, "in, line 5002");
    ExpectFailure(block + "x\r\n\r\n", FailureKind::SubscriptOutOfRange, "in, line 5002");
    EXPECT_EQ(Read(block + "\r\n").at(0).lines, records[0].lines);
}

}  // namespace
}  // namespace quillmere::test
