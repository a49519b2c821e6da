#include "engine/filter_pass.h"

#include "tests/support/pass_rig.h"
#include "tests/support/text.h"

#include <gtest/gtest.h>

#include <string>
#include <tuple>
#include <vector>

namespace quillmere::test {
namespace {

using Entries = std::vector<std::string>;

const std::string tavern =
    Lines({"// comment", "", "[WORLDITEM i_torch]", "P=100,200,0,1", "", "[WORLDITEM i_chair]", "P=300,400,5",
           "", "[WORLDITEM i_Torch]", "P=150,200,0,2", "", "[EOF]"});

/// The codes of the blocks that a text holds, in order.
Entries Codes(const std::string& world) {
    Entries codes;
    for (std::size_t at = world.find("[WORLDITEM "); at != std::string::npos;
         at = world.find("[WORLDITEM ", at)) {
        at += std::string("[WORLDITEM ").size();
        codes.push_back(world.substr(at, world.find(']', at) - at));
    }
    return codes;
}

TEST(FilterPass, CleansTheWorkedExampleByteForByte) {
    PassRig rig;
    rig.AddItem("i_torch");
    rig.settings.filters[FilterKind::Item] = {Direction::In};
    EXPECT_EQ(rig.Clean(Lines({"// comment", "", "[WORLDITEM i_torch]", "P=100,200,0,1", "",
                               "[WORLDITEM i_chair]", "P=300,400,5", "", "[EOF]"})),
              Lines({"// comment", "", "[WORLDITEM i_chair]", "P=300,400,5", "", "[EOF]", ""}));
    EXPECT_EQ(rig.outcome, PassOutcome::Complete);
    EXPECT_EQ(rig.log.entries,
              (Entries{"Scanning filter options...", "Not filtering Facets....",
                       "Not filtering rectangles....", "Filtering item where value is equal to list values.",
                       "Passed validation.", "Processing file...", "Removed 1 items.",
                       "Averaged 3 objects a second.", "Completed in 0 seconds.", "Processed 3 items."}));
    EXPECT_EQ(rig.events, (Entries{"active", "idle"}));
    EXPECT_TRUE(rig.shared.blnIdle);
    EXPECT_EQ(rig.pass.Processed(), 0);
    EXPECT_EQ(rig.fileSystem.openFiles, 0);
}

TEST(FilterPass, EachFilterWorksInBothDirections) {
    struct Case {
        std::map<FilterKind, FilterSetting> filters;
        Entries kept;
        const char* removed;
    };
    using enum Direction;
    const auto item = [](Direction direction) {
        return std::pair(FilterKind::Item, FilterSetting{direction});
    };
    const auto area = [](Direction direction) {
        return std::pair(FilterKind::Rectangle, FilterSetting{direction});
    };
    const auto facet = [](Direction direction) {
        return std::pair(FilterKind::Facet, FilterSetting{direction, " 1 "});
    };
    // The empty record at the end counts and is judged too: no code, position 0,0, facet 0.
    for (const Case& c : std::vector<Case>{
             {{item(In)}, {"i_chair", "i_Torch"}, "Removed 1 items."},
             {{item(NotIn)}, {"i_torch"}, "Removed 3 items."},
             {{area(In)}, {"i_chair"}, "Removed 2 items."},
             {{area(NotIn)}, {"i_torch", "i_Torch"}, "Removed 2 items."},
             {{facet(In)}, {"i_chair", "i_Torch"}, "Removed 1 items."},
             {{facet(NotIn)}, {"i_torch"}, "Removed 3 items."},
             {{item(NotIn), area(In)}, {"i_torch", "i_chair"}, "Removed 1 items."},
             {{item(In), area(In), facet(NotIn)}, {"i_torch", "i_chair", "i_Torch"}, "Removed 0 items."}}) {
        PassRig rig;
        rig.AddItem("i_torch");
        rig.AddRectangle(100, 200, 150, 260);
        rig.settings.filters = c.filters;
        EXPECT_EQ(Codes(rig.Clean(tavern)), c.kept);
        EXPECT_EQ(rig.log.entries[6], c.removed);
    }
}

TEST(FilterPass, AnnouncesTheSettings) {
    PassRig rig;
    rig.AddItem("x");
    rig.AddRectangle(0, 0, 1, 1);
    rig.settings.filters = {{FilterKind::Item, {Direction::NotIn}},
                            {FilterKind::Rectangle, {Direction::In}},
                            {FilterKind::Facet, {Direction::NotIn, " 1.4 "}}};
    rig.Clean(tavern);
    EXPECT_EQ(rig.log.entries[1], "Filtering Facets where value is NOT equal to  1.4 .");
    EXPECT_EQ(rig.log.entries[2], "Filtering rectangles where value is equal to list values.");
    EXPECT_EQ(rig.log.entries[3], "Filtering item where value is NOT equal to list values.");
}

TEST(FilterPass, CopiesThePreambleWithoutItsEmptyLines) {
    PassRig rig;
    rig.settings.filters[FilterKind::Facet] = {Direction::In, "7"};
    EXPECT_EQ(rig.Clean(Lines({"", "a", "", " [not a header]", "\t[x]", "[A b]", "", ""})),
              Lines({"a", " [not a header]", "\t[x]", "", "[A b]", "", ""}))
        << "two records: the block, the empty one";
    EXPECT_EQ(rig.Clean(Lines({"[A b]"})), Lines({"", "[A b]", ""}));
    EXPECT_EQ(rig.Clean("a\r\n\r\nlast"), Lines({"a", "last", "", ""})) << "the empty record is kept";
    EXPECT_EQ(rig.Clean(""), Lines({""}));
    EXPECT_EQ(rig.log.entries.back(), "Processed 0 items.");
    EXPECT_EQ(rig.Clean("\n\n\n"), "\n\n\n\r\n\r\n\r\n") << "line feeds alone end no line";
}

TEST(FilterPass, RefusesWhatItCannotRun) {
    struct Case {
        const char* what;
        std::function<void(PassRig&)> arrange;
        Entries events;
    };
    const std::string noFile =
        "Not Enuf Info: You need to pick a file to load and save in order to run a report.";
    for (const Case& c : std::vector<Case>{
             {"no input", [](PassRig& rig) { rig.settings.strInputFile.clear(); }, {noFile}},
             {"no output", [](PassRig& rig) { rig.settings.strOutputFile.clear(); }, {noFile}},
             {"same file",
              [](PassRig& rig) { rig.settings.strOutputFile = "in"; },
              {"nooOOO!!!: You picked the same file to load and save."}},
             {"no facet",
              [](PassRig& rig) { rig.settings.filters[FilterKind::Facet] = {Direction::In}; },
              {"active", "nooOOO!!!: You didn't specify a Facet, but you chose to use it as a filter.",
               "focus on facet", "idle"}},
             {"no rectangles",
              [](PassRig& rig) { rig.settings.filters[FilterKind::Rectangle] = {Direction::In}; },
              {"active",
               "nooOOO!!!: You didn't specify any rectangles, but you chose to use them as a filter.",
               "idle"}},
             {"no items",
              [](PassRig& rig) { rig.settings.filters[FilterKind::Item] = {Direction::In}; },
              {"active", "nooOOO!!!: You didn't specify any items, but you chose to use them as a filter.",
               "idle"}},
             {"no filter",
              [](PassRig&) {},
              {"active", "Is teh duh....: You didn't chose any filters.", "idle"}}}) {
        PassRig rig;
        rig.log.LogInfo("from before");
        c.arrange(rig);
        rig.Clean(tavern);
        EXPECT_EQ(rig.outcome, PassOutcome::Refused) << c.what;
        EXPECT_EQ(rig.events, c.events) << c.what;
        const bool logEmptied = c.events.size() > 1;
        EXPECT_EQ(rig.log.entries, Entries{logEmptied ? "Scanning filter options..." : "from before"})
            << c.what;
        EXPECT_EQ(rig.fileSystem.operations, 0U) << c.what;
        EXPECT_TRUE(rig.shared.blnIdle);
    }
}

/// A rig with a facet filter that removes nothing.
class FailingPass : public testing::Test {
 protected:
    FailingPass() { rig.settings.filters[FilterKind::Facet] = {Direction::In, "7"}; }
    void ExpectFailed(Entries expected) {
        EXPECT_EQ(rig.outcome, PassOutcome::Failed);
        EXPECT_EQ(rig.log.entries, expected);
        EXPECT_EQ(rig.events.back(), "idle");
        EXPECT_TRUE(rig.shared.blnIdle);
        EXPECT_EQ(rig.pass.Processed(), 0);
        EXPECT_EQ(rig.fileSystem.openFiles, 0);
    }
    static Entries Join(Entries entries, const Entries& more) {
        entries.insert(entries.end(), more.begin(), more.end());
        return entries;
    }
    PassRig rig;
    const Entries scanning{"Scanning filter options..."};
    const Entries validated{"Scanning filter options...", "Filtering Facets where value is equal to 7.",
                            "Not filtering rectangles....", "Not filtering items....", "Passed validation."};
    const Entries processing = Join(validated, {"Processing file..."});
};

TEST_F(FailingPass, RefusesAnInputThatCannotBeReadTwiceBeforeItTouchesTheOutput) {
    rig.fileSystem.files["pipe"] = tavern;
    rig.fileSystem.files["out"] = "old";
    rig.settings.strInputFile = "pipe";
    EXPECT_EQ(rig.Clean(""), "old");
    ExpectFailed(Join(validated, Report(FailureKind::PathFileAccessError, passModule)));
}

TEST_F(FailingPass, RefusesAnInputThatIsAnotherOneWhenItIsOpenedAgain) {
    MemoryFileSystem& system = rig.fileSystem;
    using enum FailureKind;
    for (const auto& [kind, how, change] :
         std::vector<std::tuple<FailureKind, std::string, std::function<void()>>>{
             {FileChanged, "changed", [&] { ++system.state.written; }},
             {FileChanged, "changed", [&] { system.files["in"] += '\n'; }},
             {FileChanged, "changed", [&] { system.files["in"][0] = '['; }},
             {InputPastEnd, "cut short", [&] { system.files["in"].pop_back(); }},
             {FileChanged, "replaced", [&] { ++system.state.number[1]; }}}) {
        system.operations = 0;
        system.beforeOperation = [&system, act = change] {
            if (system.operations == 4) act();  // the second opening
        };
        rig.Clean(tavern);
        ExpectFailed(Join(processing, Report(kind, passModule)));
        EXPECT_EQ(rig.log.failedWhere, "in (" + how + " while it was read)");
    }
}

TEST_F(FailingPass, ReportsAReaderFailureAndThenItsOwn) {
    const Entries reports = Join(Report(FailureKind::TypeMismatch, readerModule),
                                 Report(FailureKind::BadFileNameOrNumber, passModule));
    const std::string world = Lines({"[A kept]", "", "[A bad]", "P=1,x", "", "[A unread]"});
    EXPECT_EQ(rig.Clean(world), Lines({"", "[A kept]", ""})) << "what was written before the failure stays";
    ExpectFailed(Join(processing, reports));
    rig.settings.filters[FilterKind::Facet].text = "0";  // removes the empty record after the failure
    rig.Clean(world);
    EXPECT_EQ(rig.outcome, PassOutcome::Failed);
}

TEST(FilterPass, HaltStopsBeforeTheNextBlockWithoutAReport) {
    PassRig rig;
    rig.settings.filters[FilterKind::Facet] = {Direction::In, "7"};
    int yields = 0;
    rig.onYield = [&] {
        EXPECT_FALSE(rig.shared.blnIdle);
        EXPECT_EQ(rig.pass.Run(rig.settings), PassOutcome::Busy);
        EXPECT_EQ(rig.pass.Processed(), yields);
        if (++yields == 2) rig.pass.Halt();
    };
    EXPECT_EQ(Codes(rig.Clean(tavern)), (Entries{"i_torch", "i_chair"}))
        << "the block in hand is still written";
    EXPECT_EQ(rig.outcome, PassOutcome::Halted);
    EXPECT_EQ(rig.log.entries.back(), "Halt command issued.");
    EXPECT_EQ(rig.fileSystem.files["out"].find("[EOF]"), std::string::npos);

    rig.onYield = [] {};
    EXPECT_EQ(Codes(rig.Clean(tavern)).size(), 3U) << "the request does not outlive its pass";
    rig.pass.Halt();
    EXPECT_EQ(rig.Clean(tavern), Lines({"// comment", ""})) << "a request from before a pass stops it";
}

TEST(FilterPass, TestsEachBlockAgainstTheListsOfThatMoment) {
    PassRig rig;
    rig.AddItem("i_torch");
    rig.settings.filters[FilterKind::Item] = {Direction::In};
    rig.onYield = [&] {
        if (rig.pass.Processed() == 1) rig.shared.filterSet.arrItems[0].code = "i_chair";
    };
    EXPECT_EQ(Codes(rig.Clean(tavern)), Entries{"i_Torch"});
}

TEST(FilterPass, CountsSecondsAcrossHalvesAndMidnight) {
    struct Case {
        double start, end;
        const char* completed;
        const char* averaged;
    };
    for (const Case& c : {Case{10.5, 12.9, "Completed in 2 seconds.", "Averaged 2 objects a second."},
                          Case{11.5, 12.9, "Completed in 0 seconds.", "Averaged 4 objects a second."},
                          Case{10.6, 10.9, "Completed in 0 seconds.", "Averaged 4 objects a second."},
                          Case{86'399.0, 2.5, "Completed in 4 seconds.", "Averaged 1 objects a second."}}) {
        PassRig rig;
        rig.settings.filters[FilterKind::Facet] = {Direction::In, "7"};
        rig.times = {c.start, c.end};
        rig.Clean(tavern);
        EXPECT_EQ(rig.log.entries[8], c.completed) << c.start;
        EXPECT_EQ(rig.log.entries[7], c.averaged) << c.start;
    }
}

}  // namespace
}  // namespace quillmere::test
