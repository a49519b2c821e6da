#include "filters/list_file.h"

#include "engine/mod_global.h"
#include "tests/support/memory_file_system.h"
#include "tests/support/recording_log.h"
#include "tests/support/text.h"

#include <gtest/gtest.h>

#include <string>
#include <tuple>
#include <vector>

namespace quillmere::test {
namespace {

class ListFile : public testing::Test {
 protected:
    bool Load(const std::string& content) {
        system.files["list"] = content;
        log.EmptyLog();
        return LoadFilterList(shared.objReader, "list", filters, log);
    }
    bool Save() { return SaveFilterList(shared.objWriter, "saved", filters, log); }
    std::string LoadedAndSaved(const std::string& content) {
        EXPECT_TRUE(Load(content) && Save() && log.entries.empty());
        return system.files["saved"];
    }

    MemoryFileSystem system;
    modGlobal shared{system};
    FilterSet filters;
    RecordingLog log;
};

TEST_F(ListFile, WritesEachFieldOnALineAndReadsItBack) {
    const std::string content = Lines({"<ITEMS>", "Torch", "i_torch", " Two words", "<code>", "</ITEMS>",
                                       "<RECTANGLES>", "Town", "100", "300", "-200", "400", "</RECTANGLES>"});
    EXPECT_EQ(LoadedAndSaved(content), content);
    EXPECT_EQ(filters.arrItems[1], (ItemFilter{" Two words", "<code>"}));
    EXPECT_EQ(filters.arrRectangles[0], (RectangleFilter{"Town", 100, -200, 300, 400}));
    EXPECT_EQ(LoadedAndSaved(Lines({"</ITEMS>", "</RECTANGLES>"})),
              Lines({"<ITEMS>", "</ITEMS>", "<RECTANGLES>", "</RECTANGLES>"}))
        << "nothing is left of the other list";
    // Other lines that begin with < are skipped where a name is expected.
    EXPECT_EQ(
        LoadedAndSaved(Lines({"<x>", "</ITEMS> ", "a", "b", "</ITEMS>", "</ITEMS>", "r", " 12.5 ", "13.5",
                              "+1", "2", "</RECTANGLES>", "never read"})),
        Lines({"<ITEMS>", "a", "b", "</ITEMS>", "<RECTANGLES>", "r", "12", "14", "1", "2", "</RECTANGLES>"}));
    // A gap is kept, and saving stops at it.
    EXPECT_EQ(LoadedAndSaved(Lines(
                  {"", "lost", "a", "", "c", "d", "</ITEMS>", "", "1", "2", "3", "4", "</RECTANGLES>"})),
              Lines({"<ITEMS>", "", "lost", "</ITEMS>", "<RECTANGLES>", "</RECTANGLES>"}));
    EXPECT_EQ(filters.arrItems[2], (ItemFilter{"c", "d"}));
    EXPECT_EQ(filters.arrRectangles[0], (RectangleFilter{"", 1, 3, 2, 4}));
}

TEST_F(ListFile, KeepsWhatWasReadBeforeAFailure) {
    using enum FailureKind;
    for (const auto& [content, kind, where, town] :
         std::vector<std::tuple<std::string, FailureKind, std::string, RectangleFilter>>{
             {Lines({"a", "b", "</ITEMS>", "Town", "100", "x"}), TypeMismatch, "list, line 6", {"Town", 100}},
             {Lines({"a", "b", "</ITEMS>", "Town", "1", "3", "2", "4"}),
              InputPastEnd,
              "list, line 8",
              {"Town", 1, 2, 3, 4}},
             {Lines({"a", "b", "</ITEMS>", "", "<RECTANGLES>"}), TypeMismatch, "list, line 5", {}},
             {Lines({"a", "b", "</ITEMS>", "r", "2147483648"}), Overflow, "list, line 5", {"r"}},
             {Lines({"a", "b"}), InputPastEnd, "list, line 2", {}}}) {
        EXPECT_FALSE(Load(content));
        EXPECT_EQ(log.entries, Report(kind, loadModule));
        EXPECT_EQ(log.failedWhere, where);
        EXPECT_EQ(system.openFiles, 0);
        EXPECT_EQ(filters.arrItems[0], (ItemFilter{"a", "b"}));
        EXPECT_EQ(filters.arrRectangles[0], town);
    }
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
    EXPECT_EQ(LoadedAndSaved(full), full);
    for (const std::size_t operation : {1U, 2U, 3U, 4U}) {  // the open, two writes, the close
        log.EmptyLog();
        system.FailAt(operation, FailureKind::DiskFull);
        EXPECT_FALSE(Save());
        EXPECT_EQ(log.entries, Report(FailureKind::DiskFull, saveModule));
        EXPECT_EQ(log.failedWhere, "saved");
        EXPECT_FALSE(shared.openFiles.IsOpen(1)) << operation;
    }
    EXPECT_FALSE(Load(items + Lines({"one too many", "x", "</ITEMS>", "</RECTANGLES>"})));
    EXPECT_EQ(log.failedWhere, "list, line 1003");
    EXPECT_EQ(filters.arrItems[500], (ItemFilter{name, "i_500"}));
    EXPECT_FALSE(Load(""));
    EXPECT_EQ(log.failedWhere, "list");
}

}  // namespace
}  // namespace quillmere::test
