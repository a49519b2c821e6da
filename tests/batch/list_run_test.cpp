#include "batch/list_run.h"

#include "filters/list_file.h"
#include "tests/support/batch_rig.h"
#include "tests/support/recording_log.h"

#include <random>

namespace quillmere::test {
namespace {

class Lists : public Batch {
 protected:
    int Make(const std::string& lines) {
        system.files["standard input"] = lines;
        return Run("list make made");
    }
    /// As the list editor loads it.
    FilterSet Load(const std::string& path) {
        modGlobal shared(system);
        RecordingLog log;
        EXPECT_TRUE(LoadFilterList(shared.objReader, path, shared.filterSet, log));
        return shared.filterSet;
    }
};

TEST_F(Lists, WhatIsShownCanBeMadeAgain) {
    std::mt19937 random(1);
    int incomplete = 0;
    for (int round = 0; round < 500; ++round) {
        const bool plain = round % 2 == 0;
        const std::string letters = plain ? "ab\xE9\x80\"?" : "ab\t <\x81\x7F";
        const auto text = [&] {
            std::string made;
            for (auto size = 1 + random() % 4; size > 0; --size)
                made += letters[random() % letters.size()];
            return made;
        };
        std::string& list = system.files["list"] = "";
        for (auto items = random() % 5; items > 0; --items)
            list += Lines({text(), text()});
        list += Lines({"</ITEMS>"});
        for (auto rectangles = 1 + random() % 4; rectangles > 0; --rectangles) {
            const std::string x2 = plain ? "2147483647" : std::to_string(random() % 4);
            list += Lines({text(), std::to_string(random() % 9), x2, "-2147483648", "0"});
        }
        list += Lines({"</RECTANGLES>"});
        const bool complete = Run("list show list") == exitComplete;
        EXPECT_EQ(complete, err.str().empty());
        EXPECT_TRUE(complete || !plain) << err.str();
        incomplete += complete ? 0 : 1;
        if (out.str().empty()) continue;
        ASSERT_EQ(Make(out.str()), exitComplete) << err.str();
        const FilterSet loaded = Load("list");
        const FilterSet made = Load("made");
        EXPECT_EQ(complete, loaded.arrItems == made.arrItems && loaded.arrRectangles == made.arrRectangles);
    }
    EXPECT_GT(incomplete, 100);
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
    EXPECT_EQ(Load("made").arrItems[1], (ItemFilter{"1 block", "i_torch"}));
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
