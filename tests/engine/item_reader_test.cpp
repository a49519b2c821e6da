#include "engine/item_reader.h"

#include "tests/support/pass_rig.h"
#include "tests/support/text.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

// What a record holds is also tested by fuzz/world_script.cpp, which reads its corpus, and changed copies of
// it, in both ways that the reader has.

namespace quillmere::test {
namespace {

using Strings = std::vector<std::string>;

class Reader : public testing::Test, private PassObserver {
 protected:
    /// What a pass is told of a file without a preamble, in order: records, skipped lines, the end, a
    /// failure.
    const Strings& Read(const std::string& world) {
        notes.clear();
        rig.settings.needsFilter = false;
        rig.Clean(world);
        if (!rig.log.failedWhere.empty()) notes.push_back(rig.log.entries[6] + ", " + rig.log.failedWhere);
        return notes;
    }

    PassRig rig{this};
    Strings notes;

 private:
    /// A record as "code at x y z facet: line|line||".
    void RecordJudged(const WorldItem& item, const Verdict& /*verdict*/) override {
        std::string& note = notes.emplace_back(item.Code());
        note += item.Placed ? " at" : " without";
        for (const std::int32_t number : {item.X, item.Y, item.Z, item.Facet})
            note += ' ' + std::to_string(number);
        note += ": ";
        for (const char c : item.Lines.Text()) {
            if (c != '\r') note += c == '\n' ? '|' : c;
        }
    }
    void LineSkipped(std::string_view line, std::uint64_t number) override {
        notes.push_back(std::to_string(number).append(" ").append(line));
    }
    void SentinelCopied() override { notes.emplace_back("end"); }
};

const std::string none = " without 0 0 0 0: |";

TEST_F(Reader, ReadsBlocksAndSkipsOtherLines) {
    for (const auto& [world, expected] : std::vector<std::pair<std::string, Strings>>{
             {Lines({"[WORLDITEM i_torch]  ", " A=1 ", "P=100,200,-5,1", "", "", "stray",
                     "\t[WORLDITEM i_lost]", "P=9,9", "", "[WORLDITEM i_chair] more text", "P=3,4,5,6,7",
                     "   ", "[WORLDITEM i_inside]", "p=7,7", " P=8,8", "P= 1 , 2.5 ", "", "  [EOF]  "}),
              {"i_torch at 100 200 -5 1: [WORLDITEM i_torch]| A=1 |P=100,200,-5,1||", "6 stray",
               "7 \t[WORLDITEM i_lost]", "8 P=9,9",
               "i_chair at 1 2 5 6: [WORLDITEM i_chair] more text|P=3,4,5,6,7|   |[WORLDITEM "
               "i_inside]|p=7,7| P=8,8|P= 1 , 2.5 ||",
               "end", none}},
             {Lines({"[A b]", "", "text", "  [A  b]"}),
              {"b without 0 0 0 0: [A b]||", "3 text", none,
               "Oops description: Invalid procedure call or argument, in, line 4"}},
             // A position without a comma ends the block.
             {Lines({"[A lost]", "P=1,2,3,4", "P=12", "Y=2", "", "[A b]", ""}),
              {"1 [A lost]", "2 P=1,2,3,4", "3 P=12", "4 Y=2", "b without 0 0 0 0: [A b]||"}},
             {Lines({"[A b]", "X=1", "P=12", "Y=2"}), {"b without 0 0 0 0: [A b]|X=1||", "3 P=12", "4 Y=2"}},
             {Lines({"[A b]", "P=1,2,3,4", "P=12", ""}), {"b at 1 2 3 4: [A b]|P=1,2,3,4||", "3 P=12"}},
             {Lines({"[A last]", "P=12", "[EOF]"}), {"1 [A last]", "2 P=12", "end", none}}}) {
        EXPECT_EQ(Read(world), expected) << world;
    }
    int yields = 0;
    rig.onYield = [&] { ++yields; };
    Read(Lines({"[A b]", "X=1", "", "text", "", "[EOF]"}));
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
    for (const char* const end : {"x\r\n", "x\r\n\r\n"})
        EXPECT_EQ(Read("[A big]\r\n" + body + end)[1],
                  "Oops description: Subscript out of range, in, line 5002");
    Read(Lines({"[A lost]", "P=12"}) + body + body + Lines({"[A kept]"}));
    EXPECT_EQ(notes.front(), "5003 x") << "no more lines wait than a block can hold";
    EXPECT_EQ(notes.end()[-2], "5002 x");
}

}  // namespace
}  // namespace quillmere::test
