#include "filters/list_file.h"

#include "engine/mod_global.h"
#include "tests/support/memory_file_system.h"
#include "tests/support/recording_log.h"
#include "tests/support/text.h"

#include <gtest/gtest.h>

#include <string>

namespace quillmere::test {
namespace {

class ListFile : public testing::Test {
 protected:
    bool Load(const std::string& content) {
        system.files["list"] = content;
        return LoadFilterList(shared.objReader, "list", filters, log);
    }
    std::string Saved() {
        EXPECT_TRUE(SaveFilterList(shared.objWriter, "saved", filters, log));
        return system.files["saved"];
    }
    void ExpectFailedLoad(const std::string& content, FailureKind kind, const std::string& where) {
        log.EmptyLog();
        EXPECT_FALSE(Load(content));
        EXPECT_EQ(log.entries, Report(kind, loadModule));
        EXPECT_EQ(log.failedWhere, where);
        EXPECT_EQ(system.openFiles, 0);
    }

    MemoryFileSystem system;
    modGlobal shared{system};
    FilterSet filters;
    RecordingLog log;
};

TEST_F(ListFile, WritesEachFieldOnALineAndReadsItBack) {
    const std::string content = Lines({"<ITEMS>", "Torch", "i_torch", " Two words", "<code>", "</ITEMS>",
                                       "<RECTANGLES>", "Town", "100", "300", "-200", "400", "</RECTANGLES>"});
    ASSERT_TRUE(Load(content));
    EXPECT_EQ(filters.arrItems[0], (ItemFilter{"Torch", "i_torch"}));
    EXPECT_EQ(filters.arrItems[1], (ItemFilter{" Two words", "<code>"}));
    EXPECT_EQ(filters.arrRectangles[0], (RectangleFilter{"Town", 100, -200, 300, 400}));
    EXPECT_EQ(Saved(), content);

    // Only the closing lines are needed, and others that begin with < are skipped.
    EXPECT_TRUE(Load(Lines({"</ITEMS>", "</RECTANGLES>"})));
    EXPECT_EQ(Saved(), Lines({"<ITEMS>", "</ITEMS>", "<RECTANGLES>", "</RECTANGLES>"}))
        << "nothing is left of the old list";
    EXPECT_TRUE(Load(Lines({"<x>", "</ITEMS> ", "a", "b", "</ITEMS>", "</ITEMS>", "r", " 12.5 ", "13.5", "+1",
                            "2", "</RECTANGLES>", "never read"})));
    EXPECT_EQ(Saved(), Lines({"<ITEMS>", "a", "b", "</ITEMS>", "<RECTANGLES>", "r", "12", "14", "1", "2",
                              "</RECTANGLES>"}));

    // A gap is kept, and saving stops at it.
    EXPECT_TRUE(
        Load(Lines({"", "lost", "a", "", "c", "d", "</ITEMS>", "", "1", "2", "3", "4", "</RECTANGLES>"})));
    EXPECT_EQ(filters.arrItems[2], (ItemFilter{"c", "d"}));
    EXPECT_EQ(filters.arrRectangles[0], (RectangleFilter{"", 1, 3, 2, 4}));
    EXPECT_EQ(Saved(), Lines({"<ITEMS>", "", "lost", "</ITEMS>", "<RECTANGLES>", "</RECTANGLES>"}));
    EXPECT_TRUE(log.entries.empty());
}

TEST_F(ListFile, KeepsWhatWasReadBeforeAFailure) {
    ExpectFailedLoad(Lines({"a", "b", "</ITEMS>", "Town", "100", "x"}), FailureKind::TypeMismatch,
                     "list, line 6");
    EXPECT_EQ(filters.arrItems[0], (ItemFilter{"a", "b"}));
    EXPECT_EQ(filters.arrRectangles[0], (RectangleFilter{"Town", 100, 0, 0, 0}));

    ExpectFailedLoad(Lines({"a", "b", "</ITEMS>", "Town", "1", "3", "2", "4"}), FailureKind::InputPastEnd,
                     "list, line 8");
    EXPECT_EQ(filters.arrRectangles[0], (RectangleFilter{"Town", 1, 2, 3, 4}));

    ExpectFailedLoad(Lines({"</ITEMS>", "", "<RECTANGLES>"}), FailureKind::TypeMismatch, "list, line 3");
    ExpectFailedLoad(Lines({"</ITEMS>", "r", "2147483648"}), FailureKind::Overflow, "list, line 3");
    ExpectFailedLoad("", FailureKind::InputPastEnd, "list");
}

TEST_F(ListFile, HoldsAsManyEntriesAsThereAreSlots) {
    std::string items;
    std::string rectangles;
    const std::string name(300, 'x');  // together they do not fit the writer's buffer
    for (std::size_t i = 0; i < filterSlots; ++i) {
        const std::string number = std::to_string(i);
        items += Lines({name, "i_" + number});
        rectangles += Lines({name, number, number, number, number});
    }
    const std::string full = Lines({"<ITEMS>"}) + items + Lines({"</ITEMS>", "<RECTANGLES>"}) + rectangles +
                             Lines({"</RECTANGLES>"});
    ASSERT_TRUE(Load(full));
    system.operations = 0;
    EXPECT_EQ(Saved(), full);
    for (std::size_t operation = system.operations; operation > 0; --operation) {
        log.EmptyLog();
        system.FailAt(operation, FailureKind::DiskFull);
        EXPECT_FALSE(SaveFilterList(shared.objWriter, "saved", filters, log));
        EXPECT_EQ(log.entries, Report(FailureKind::DiskFull, saveModule));
        EXPECT_EQ(log.failedWhere, "saved");
        EXPECT_FALSE(shared.openFiles.IsOpen(1)) << operation;
    }
    ExpectFailedLoad(items + Lines({"one too many", "x", "</ITEMS>", "</RECTANGLES>"}),
                     FailureKind::SubscriptOutOfRange, "list, line 1003");
    EXPECT_EQ(filters.arrItems[500], (ItemFilter{name, "i_500"}));
}

}  // namespace
}  // namespace quillmere::test
