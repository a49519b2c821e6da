#include "engine/progress_display.h"

#include <gtest/gtest.h>

#include <string>

namespace quillmere::test {
namespace {

class Progress : public testing::Test {
 protected:
    /// The info line after so many ticks while no pass runs.
    const std::string& AfterIdleTicks(int ticks) {
        for (int i = 0; i < ticks; ++i)
            display.Tick(true, 0, log);
        return log.InfoLine();
    }

    StatusLog log;
    ProgressDisplay display;
};

TEST_F(Progress, ShowsARemarkEvery25SecondsInTurn) {
    const std::string atStart = log.InfoLine();
    EXPECT_EQ(AfterIdleTicks(250), atStart);
    EXPECT_EQ(AfterIdleTicks(1), "(Helloooo....)");
    EXPECT_EQ(AfterIdleTicks(249), "(Helloooo....)");
    EXPECT_EQ(AfterIdleTicks(1), "Are you gonna do anything?");
    EXPECT_EQ(AfterIdleTicks(10 * 250), "Si teh munky. :D");
    EXPECT_EQ(AfterIdleTicks(250), atStart);
    EXPECT_EQ(AfterIdleTicks(250), "(Helloooo....)");
    AfterIdleTicks(20);
    display.Tick(false, 1, log);
    EXPECT_EQ(AfterIdleTicks(249), "Processed  1 objects.") << "a pass starts the time anew";
    EXPECT_EQ(AfterIdleTicks(1), "Are you gonna do anything?");
    EXPECT_EQ(log.Text(), "");
}

}  // namespace
}  // namespace quillmere::test
