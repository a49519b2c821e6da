#include "engine/progress_display.h"

#include <gtest/gtest.h>

#include <string>

namespace quillmere::test {
namespace {

TEST(ProgressDisplay, ShowsARemarkEvery25SecondsInTurn) {
    StatusLog log;
    ProgressDisplay display;
    const std::string atStart = log.InfoLine();
    const auto idle = [&](int ticks, const std::string& shown) {
        for (int i = 0; i < ticks; ++i)
            display.Tick(true, 0, log);
        EXPECT_EQ(log.InfoLine(), shown);
    };
    idle(250, atStart);
    idle(1, "(Helloooo....)");
    idle(249, "(Helloooo....)");
    idle(1, "Are you gonna do anything?");
    idle(10 * 250, "Si teh munky. :D");
    idle(250, atStart);
    idle(270, "(Helloooo....)");
    display.Tick(false, 1, log);
    idle(249, "Processed  1 objects.");  // a pass starts the time anew
    idle(1, "Are you gonna do anything?");
    EXPECT_EQ(log.Text(), "");
}

}  // namespace
}  // namespace quillmere::test
