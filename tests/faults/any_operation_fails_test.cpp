#include "bench/world_generator.h"
#include "filters/list_file.h"
#include "tests/support/pass_rig.h"
#include "tests/support/text.h"
#include "ui/options_file.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <iterator>

namespace quillmere::test {
namespace {

using Entries = std::vector<std::string>;

/// Runs `operation` with its first access to a file failing, then with its second, and so on: every open,
/// read, write and close. Each is tried twice, with only that one failing and with all from it on. The log
/// must then end with exactly one of the `reports`.
void Sweep(PassRig& rig, const char* what, const std::vector<Entries>& reports,
           const std::function<void()>& operation) {
    rig.fileSystem.operations = 0;
    operation();
    const std::size_t operations = rig.fileSystem.operations;
    ASSERT_GE(operations, 2U) << what;
    for (std::size_t failing = 1; failing <= operations; ++failing) {
        for (const bool forEver : {false, true}) {
            SCOPED_TRACE(testing::Message()
                         << what << ", operation " << failing << (forEver ? " and on" : ""));
            rig.log.EmptyLog();
            rig.fileSystem.FailAt(failing, FailureKind::DiskFull, forEver);
            operation();
            const auto first = std::ranges::find_if(
                rig.log.entries, [](const std::string& entry) { return entry.starts_with("Oops"); });
            EXPECT_NE(std::ranges::find(reports, Entries(first, rig.log.entries.end())), reports.end())
                << testing::PrintToString(rig.log.entries);
            EXPECT_EQ(rig.fileSystem.openFiles, 0);
            EXPECT_FALSE(rig.shared.openFiles.IsOpen(1) || rig.shared.openFiles.IsOpen(2));
            EXPECT_TRUE(rig.shared.blnIdle);
        }
    }
    rig.fileSystem.FailAt(0, FailureKind::DiskFull);
}

TEST(AnyOperationFails, IsReportedAsStatedAndLeavesNothingOpen) {
    PassRig rig;
    rig.settings.filters[FilterKind::Facet] = {Direction::In, "9"};
    const std::string world = MakeWorld(20'000, 1);
    Entries bothReports = Report(FailureKind::DiskFull, readerModule);
    std::ranges::copy(Report(FailureKind::BadFileNameOrNumber, passModule), std::back_inserter(bothReports));
    Sweep(rig, "pass", {Report(FailureKind::DiskFull, passModule), bothReports}, [&] { rig.Clean(world); });

    rig.fileSystem.files["list"] =
        Lines({"Torch", "i_torch", "</ITEMS>", "Town", "1", "3", "2", "4", "</RECTANGLES>"});
    rig.fileSystem.mostBytesPerRead = 10;
    FilterSet filters;
    Sweep(rig, "list load", {Report(FailureKind::DiskFull, loadModule)},
          [&] { LoadFilterList(rig.shared.objReader, "list", filters, rig.log); });
    LoadFilterList(rig.shared.objReader, "list", filters, rig.log);
    Sweep(rig, "list save", {Report(FailureKind::DiskFull, saveModule)},
          [&] { SaveFilterList(rig.shared.objWriter, "list", filters, rig.log); });

    Options options{true, "in", "out"};
    Sweep(rig, "options save", {Report(FailureKind::DiskFull, "Error in options saving module.  Pffft....")},
          [&] { SaveOptions(rig.fileSystem, "ini", options, rig.log); });
    SaveOptions(rig.fileSystem, "ini", options, rig.log);
    Sweep(rig, "options load", {Report(FailureKind::DiskFull, "Error in options loading module.  Pffft....")},
          [&] { LoadOptions(rig.fileSystem, {"ini"}, options, rig.log); });
}

}  // namespace
}  // namespace quillmere::test
