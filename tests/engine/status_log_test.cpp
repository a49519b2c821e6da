#include "engine/status_log.h"

#include "base/failure_report.h"
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

}  // namespace
}  // namespace quillmere::test
