#include "engine/status_log.h"

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

}  // namespace
}  // namespace quillmere::test
