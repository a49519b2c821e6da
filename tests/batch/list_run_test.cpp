#include "batch/list_run.h"

#include "tests/support/batch_rig.h"

#include <algorithm>
#include <random>

namespace quillmere::test {
namespace {

class Lists : public Batch {
 protected:
    int Make(const std::string& lines) {
        system.files["standard input"] = lines;
        return Run("list make made");
    }
};

TEST_F(Lists, WhatIsMadeIsShownAgain) {
    std::mt19937 random(1);
    const std::string letters[] = {"a", "B", "\xC3\xA9", "\xE2\x82\xAC", "\"", "?"};
    const auto text = [&] {
        std::string made;
        for (auto size = 1 + random() % 4; size > 0; --size)
            made += letters[random() % 6];
        return made;
    };
    for (int round = 0; round < 200; ++round) {
        std::string lines;
        for (auto items = random() % 5; items > 0; --items)
            lines += "item\t" + text() + " <\t" + text() + "\n";
        for (auto rectangles = 1 + random() % 4; rectangles > 0; --rectangles)
            lines += "rectangle\t" + text() + "\t-2147483648\t" + std::to_string(random() % 9) +
                     "\t9\t2147483647\n";
        ASSERT_EQ(Make(lines), exitComplete) << err.str();
        EXPECT_EQ(Run("list show made"), exitComplete) << err.str();
        EXPECT_EQ(out.str(), lines);
    }
}

TEST_F(Lists, WhatNoLineCanHoldIsNamedAndTheRestIsShown) {
    system.files["list"] =
        Lines({"A", "a", "A", "b\tb", "A", "c c", "\x81", "d", "A", "\x7F", "A", "g"}) +
        Lines({"</ITEMS>", "T", "5", "1", "1", "1", "T", "1", "2", "3", "4", "</RECTANGLES>"});
    EXPECT_EQ(Run("list show list"), exitFailed);
    EXPECT_EQ(out.str(), "item\tA\ta\nitem\tA\tg\nrectangle\tT\t1\t3\t2\t4\n");
    EXPECT_NE(err.str().find("list: item 5 is not shown: it holds a control character\n"), std::string::npos);
    EXPECT_EQ(std::ranges::count(err.str(), '\n'), 5) << err.str();
}

TEST_F(Lists, AreMadeOfWhatSpreadsheetsAndSurveysWrite) {
    EXPECT_EQ(
        Make("\xEF\xBB\xBFitem\tCaf\xC3\xA9 \tcode\t\t\t\r\n\t\t\t\t\t\r\n\nrectangle\tTown\t-1\t+2\t3\t 4"),
        exitComplete);
    EXPECT_EQ(out.str(), "The list holds 1 item and 1 rectangle.\n");
    EXPECT_EQ(system.files["made"], Lines({"<ITEMS>", "Caf\xE9 ", "code", "</ITEMS>", "<RECTANGLES>", "Town",
                                           "-1", "3", "2", "4", "</RECTANGLES>"}));
    Run("survey world");
    EXPECT_EQ(Make(out.str().substr(out.str().find("item\t"))), exitComplete);
    EXPECT_NE(system.files["made"].find("1 block\r\ni_torch\r\n"), std::string::npos);
    system.files["made"] = "old";
    interrupted = true;
    EXPECT_EQ(Make("item\ta\tc\n"), exitHalted);
    EXPECT_EQ(system.files["made"], "old");
}

TEST_F(Lists, TheFirstTenLinesThatCannotWorkAreNamed) {
    Make("a\nitem\ta\tb\nb\n" + std::string(20, '\n') + "c\nd\ne\nf\ng\nh\ni\nj\nk\n");
    EXPECT_TRUE(err.str().find("line 3: ") != std::string::npos && std::ranges::count(err.str(), '\n') == 10);
    EXPECT_FALSE(system.files.contains("made"));
}

}  // namespace
}  // namespace quillmere::test
