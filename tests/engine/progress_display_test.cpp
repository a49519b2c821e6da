#include "engine/progress_display.h"

#include <gtest/gtest.h>

#include <string>

namespace quillmere::test {
namespace {

TEST(ProgressDisplay, ShowsARemarkEvery25SecondsInTurn) {
    StatusLog log;
    ProgressDisplay display;
    const auto afterIdleTicks = [&](int ticks) {
        for (int i = 0; i < ticks; ++i)
            display.Tick(true, 0, log);
        return log.InfoLine();
    };
    const std::string atStart = log.InfoLine();
    EXPECT_EQ(afterIdleTicks(250), atStart);
    EXPECT_EQ(afterIdleTicks(1), "(Helloooo....)");
    EXPECT_EQ(afterIdleTicks(249), "(Helloooo....)");
    EXPECT_EQ(afterIdleTicks(1), "Are you gonna do anything?");
    EXPECT_EQ(afterIdleTicks(10 * 250), "Si teh munky. :D");
    EXPECT_EQ(afterIdleTicks(250), atStart);
    EXPECT_EQ(afterIdleTicks(270), "(Helloooo....)");
    display.Tick(false, 1, log);
    EXPECT_EQ(afterIdleTicks(249), "Processed  1 objects.") << "a pass starts the time anew";
    EXPECT_EQ(afterIdleTicks(1), "Are you gonna do anything?");
    EXPECT_EQ(log.Text(), "");
}

}  // namespace
}  // namespace quillmere::test
