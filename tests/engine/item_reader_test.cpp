#include "engine/item_reader.h"

#include "tests/support/pass_rig.h"
#include "tests/support/text.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

// What a record holds is tested by fuzz/world_script.cpp, which reads its corpus, and changed copies of it,
// in both ways that the reader has.

namespace quillmere::test {
namespace {

using Strings = std::vector<std::string>;

class Reader : public testing::Test, private PassObserver {
 protected:
    /// What a pass is told of a file without a preamble, in order: records with the number of their lines,
    /// skipped lines, the end, a failure.
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
    void RecordJudged(const WorldItem& item, const Verdict& /*verdict*/) override {
        notes.push_back(std::string(item.Code()) + " " + std::to_string(item.Lines.Count()));
    }
    void LineSkipped(std::string_view line, std::uint64_t number) override {
        notes.push_back(std::to_string(number).append(" ").append(line));
    }
    void SentinelCopied() override { notes.emplace_back("end"); }
};

TEST_F(Reader, TellsWhichLinesAreOutsideBlocks) {
    for (const auto& [world, expected] : std::vector<std::pair<std::string, Strings>>{
             {Lines({"[A b]", "P=1,2", "", "", " stray", "\t[A lost]", "P=9,9", "", "[A c] more", " ",
                     "[A in]", " P=8", "", "  [EOF]  "}),
              {"b 2", "5  stray", "6 \t[A lost]", "7 P=9,9", "c 4", "end", " 0"}},
             {Lines({"[A b]", "", "text", "  [A  b]"}),
              {"b 1", "3 text", " 0", "Oops description: Invalid procedure call or argument, in, line 4"}},
             // A position without a comma ends the block.
             {Lines({"[A lost]", "P=1,2,3,4", "P=12", "Y=2", "", "[A b]", ""}),
              {"1 [A lost]", "2 P=1,2,3,4", "3 P=12", "4 Y=2", "b 1"}},
             {Lines({"[A b]", "P=1,2,3,4", "P=12", ""}), {"b 2", "3 P=12"}},
             {Lines({"[A last]", "P=12", "[EOF]"}), {"1 [A last]", "2 P=12", "end", " 0"}}}) {
        EXPECT_EQ(Read(world), expected) << world;
    }
    int yields = 0;
    rig.onYield = [&] { ++yields; };
    Read(Lines({"[A b]", "X=1", "", "text", "", "[EOF]"}));
    EXPECT_EQ(yields, 4) << "once per line between blocks, headers included";
}

TEST_F(Reader, HoldsFiveThousandBodyLinesAndNotOneMore) {
    std::string body;
    for (int line = 1; line <= 5000; ++line)
        body += "x\r\n";
    for (const char* const end : {"", "\r\n"}) {
        EXPECT_EQ(Read("[A big]\r\n" + body + end), Strings{"big 5001"});
        EXPECT_EQ(Read("[A big]\r\n" + body + "x\r\n" + end)[1],
                  "Oops description: Subscript out of range, in, line 5002");
    }
    Read(Lines({"[A lost]", "P=12"}) + body + body + Lines({"[A kept]"}));
    EXPECT_EQ(notes.front(), "5003 x") << "no more lines wait than a block can hold";
    EXPECT_EQ(notes.end()[-2], "5002 x");
}

}  // namespace
}  // namespace quillmere::test
