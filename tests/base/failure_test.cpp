#include "tests/support/recording_log.h"

#include <gtest/gtest.h>

namespace quillmere::test {
namespace {

TEST(Failure, EachKindIsReportedWithItsDescriptionAndNumber) {
    for (const auto& [kind, shown] : shownFailures) {
        RecordingLog log;
        ReportFailure(log, Failure(kind, "save.scp, line 3"), passModule);
        EXPECT_EQ(log.entries, Report(kind, passModule));
        EXPECT_EQ(log.failedWhere, "save.scp, line 3");
    }
}

TEST(Failure, KeepsTheFirstPlaceThatItIsAboutAndItsAdvice) {
    const Failure failure = Failure(FailureKind::DiskFull).Advised("Make room.").At("save.scp").At("other");
    EXPECT_EQ(failure.Where() + ": " + failure.what() + ". " + failure.Advice(),
              "save.scp: Disk full. Make room.");
}

}  // namespace
}  // namespace quillmere::test
