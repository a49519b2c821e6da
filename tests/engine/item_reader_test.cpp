#include "engine/item_reader.h"

#include "tests/support/conservation.h"
#include "tests/support/memory_file_system.h"
#include "tests/support/recording_log.h"
#include "tests/support/text.h"

#include <gtest/gtest.h>

#include <random>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

namespace quillmere::test {
namespace {

using Strings = std::vector<std::string>;

/// Reads files and notes what comes of them, in order: records, skipped lines, the end, a failure.
class Reader : public testing::Test, private ScanObserver {
 protected:
    /// Reads a file in both ways, which have to give the same. Pieces of one byte leave no block whole in the
    /// buffer, so every line is read by itself; the file in one piece takes the way of whole blocks.
    const Strings& Read(const std::string& world) {
        ReadInPieces(1, world);
        const auto lineByLine = std::tuple(notes, lines_, yields);
        ReadInPieces(1 << 20, world);
        EXPECT_EQ(std::tuple(notes, lines_, yields), lineByLine) << world;
        const bool failed = !log_.entries.empty();
        EXPECT_EQ(shared_.blnIdle, failed);
        if (!failed) {
            EXPECT_EQ(SortedLines(lines_, LineEnd::CrLf), SortedLines(world, LineEnd::CrLf));
        }
        return notes;
    }

    Strings notes;
    int yields = 0;

 private:
    void ReadInPieces(std::size_t mostBytes, const std::string& world) {
        system_.mostBytesPerRead = mostBytes;
        system_.files["in"] = world;
        shared_.objReader.SetFileName("in");
        shared_.objWriter.SetFileName("out");
        const std::int32_t input = shared_.objReader.OpenFile();
        const std::int32_t output = shared_.objWriter.OpenFileForWrite();
        shared_.blnIdle = false;
        log_ = {};
        yields = 0;
        notes.clear();
        lines_.clear();
        WorldItem item;
        while (shared_.openFiles.IsOpen(input) && !shared_.openFiles.AtEnd(input)) {
            reader_.GetNextItem(input, output, item);
            Note(item);
        }
        reader_.SkipRest();
        if (!log_.entries.empty()) {
            notes.push_back(log_.entries[0] + ", " + log_.failedWhere);
            EXPECT_EQ(system_.openFiles, 0);
        }
        shared_.openFiles.CloseAll();
        lines_ += system_.files["out"];
    }
    /// A record as "code at x y z facet: line|line||".
    void Note(const WorldItem& item) {
        std::string& note = notes.emplace_back(item.Code());
        note += item.Placed ? " at" : " without";
        for (const std::int32_t number : {item.X, item.Y, item.Z, item.Facet})
            note += ' ' + std::to_string(number);
        note += ": ";
        for (const char c : item.Lines.Text()) {
            if (c != '\r') note += c == '\n' ? '|' : c;
        }
        lines_ += item.Lines.Text();
    }
    void Yield() override { ++yields; }
    void LineSkipped(std::string_view line, std::uint64_t number) override {
        notes.push_back(std::to_string(number).append(" ").append(line));
        lines_.append(line).append("\r\n");
    }
    void SentinelCopied() override { notes.emplace_back("end"); }

    MemoryFileSystem system_;
    modGlobal shared_{system_};
    RecordingLog log_;
    ItemReader reader_{shared_, log_, *this};
    std::string lines_;  ///< all that were noted or copied
};

const std::string none = " without 0 0 0 0: |";
const std::string notANumber = "Oops description: Type mismatch, in, line 2";

TEST_F(Reader, ReadsBlocksAndSkipsOtherLines) {
    for (const auto& [world, expected] : std::vector<std::pair<std::string, Strings>>{
             {Lines({"// comment", "  [WORLDITEM i_torch]  ", " A=1 ", "P=100,200,-5,1", "", "", "stray",
                     "\t[WORLDITEM i_lost]", "P=9,9", "", "[WORLDITEM i_chair] more text", "P=3,4", "   ",
                     "[WORLDITEM i_inside]", "p=7,7", " P=8,8", ""}),
              {"1 // comment", "i_torch at 100 200 -5 1: [WORLDITEM i_torch]| A=1 |P=100,200,-5,1||",
               "7 stray", "8 \t[WORLDITEM i_lost]", "9 P=9,9",
               "i_chair at 3 4 0 0: [WORLDITEM i_chair] more text|P=3,4|   |[WORLDITEM i_inside]|p=7,7| "
               "P=8,8||"}},
             {Lines({"[A i_x]", "", "[A]", "", "[A i_x", "", "[A i_x] ]"}),
              {"i_x without 0 0 0 0: [A i_x]||", " without 0 0 0 0: [A]||", "i_ without 0 0 0 0: [A i_x||",
               "i_x without 0 0 0 0: [A i_x] ]||"}},
             {Lines({"text", "[A  b]"}),
              {"1 text", none, "Oops description: Invalid procedure call or argument, in, line 2"}},
             // the end
             {Lines({"[A b]", "", "  [EOF] ", "[C d]", "[EOF]"}),
              {"b without 0 0 0 0: [A b]||", "end", none, "d without 0 0 0 0: [C d]|[EOF]||"}},
             {Lines({"no header", "[eof"}), {"1 no header", " without 0 0 0 0: [eof||"}},
             {"just text", {"1 just text", none}},
             // positions
             {Lines({"[A b]", "P=1,2,3,4,x", "P= 5 , 6.5 "}),
              {"b at 5 6 3 4: [A b]|P=1,2,3,4,x|P= 5 , 6.5 ||"}},
             {Lines({"[A c]", "P=1,x", "", "[A d]"}), {none, notANumber}},
             {Lines({"[A b]", "P=1,,3"}), {none, notANumber}},
             {Lines({"[A b]", "P=1,2,2147483648"}), {none, "Oops description: Overflow, in, line 2"}},
             // positions without a comma
             {Lines({"[A lost]", "P=1,2,3,4", "P=12", "Y=2", "", "[A b]", ""}),
              {"1 [A lost]", "2 P=1,2,3,4", "3 P=12", "4 Y=2", "b without 0 0 0 0: [A b]||"}},
             {Lines({"[A b]", "X=1", "P=12", "Y=2"}), {"b without 0 0 0 0: [A b]|X=1||", "3 P=12", "4 Y=2"}},
             {Lines({"[A b]", "P=1,2,3,4", "P=12", ""}), {"b at 1 2 3 4: [A b]|P=1,2,3,4||", "3 P=12"}},
             {Lines({"[A last]", "P=12", "[EOF]"}), {"1 [A last]", "2 P=12", "end", none}}}) {
        EXPECT_EQ(Read(world), expected) << world;
    }
    Read(Lines({"text", "", "[A b]", "X=1", "", "[EOF]"}));
    EXPECT_EQ(yields, 4) << "once per line between blocks, headers included";
}

TEST_F(Reader, HoldsFiveThousandBodyLinesAndNotOneMore) {
    std::string body;
    std::string noted;
    for (int line = 1; line <= 5000; ++line) {
        body += "x\r\n";
        noted += "x|";
    }
    for (const char* const end : {"", "\r\n"})
        EXPECT_EQ(Read("[A big]\r\n" + body + end), Strings{"big without 0 0 0 0: [A big]|" + noted + '|'});
    for (const char* const end : {"x\r\n", "x\r\n\r\n"}) {
        EXPECT_EQ(Read("[A big]\r\n" + body + end),
                  (Strings{none, "Oops description: Subscript out of range, in, line 5002"}));
    }
    Read(Lines({"[A lost]", "P=12"}) + body + body + Lines({"[A kept]"}));
    EXPECT_EQ(notes.front(), "5003 x") << "no more lines wait than a block can hold";
    EXPECT_EQ(notes.end()[-2], "5002 x");
}

TEST_F(Reader, LosesNoLineOfAnyBytes) {
    std::mt19937 random(1);
    const std::string alphabet = "\r\n[] P=,-0.x";
    const std::string plain = Lines(
        {"[A i_x]", "P=1,-2,3,4", "", "[A b c]", "P=4,5", "", "[EOF]", "", "[B d]", "P=6,7", "X=1,2", ""});
    for (int round = 0; round < 4000 && !HasFailure(); ++round) {
        std::string world = plain;
        for (auto changes = random() % 4; changes > 0; --changes)
            world[random() % world.size()] = alphabet[random() % alphabet.size()];
        Read(world);
    }
}

}  // namespace
}  // namespace quillmere::test
