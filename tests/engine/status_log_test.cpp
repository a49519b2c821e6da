#include "engine/status_log.h"

#include "engine/progress_display.h"

#include <gtest/gtest.h>

namespace quillmere::test {
namespace {

TEST(StatusLog, ShowsTheNewestEntryFirst) {
    StatusLog log;
    log.LogInfo("A");
    log.LogInfo("B");
    EXPECT_EQ(log.Text(), "B\r\n\r\nA\r\n\r\n");
    log.LogInfo("");
    EXPECT_EQ(log.Text(), "\r\n\r\nB\r\n\r\nA\r\n\r\n");
    log.EmptyLog();
    EXPECT_EQ(log.Text(), "");
}

TEST(StatusLog, ReportsAFailureInThreeEntries) {
    StatusLog log;
    ReportFailure(log, Failure(FailureKind::FileNotFound), "Error in filter engine.  Pffft....");
    EXPECT_EQ(log.Text(),
              "Error in filter engine.  Pffft....\r\n\r\nOops number: 53\r\n\r\n"
              "Oops description: File not found\r\n\r\n");
}

TEST(StatusLog, HoldsTheInfoLineApart) {
    StatusLog log;
    EXPECT_EQ(log.InfoLine(), "(Pacing like a mindless robot)");
    log.ShowInfo(ProgressText(1200));
    EXPECT_EQ(log.InfoLine(), "Processed  1200 objects.");
    EXPECT_EQ(log.Text(), "");
}

}  // namespace
}  // namespace quillmere::test
