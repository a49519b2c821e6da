#include "engine/filter_pass.h"

#include "tests/support/pass_rig.h"
#include "tests/support/text.h"

#include <gtest/gtest.h>

#include <functional>
#include <map>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

namespace quillmere::test {
namespace {

// What a pass keeps is also tested by fuzz/world_script.cpp, with each filter and every kind of preamble.

using Entries = std::vector<std::string>;
using Filters = std::map<FilterKind, FilterSetting>;
using enum Direction;
using enum FilterKind;

const Filters removesNothing = {{Facet, {In, "7"}}};

const std::string beforeTheLast = Lines(
    {"// comment", "", "[WORLDITEM i_torch]", "P=100,200,0,1", "", "[WORLDITEM i_chair]", "P=300,400,5", ""});
const std::string tavern = beforeTheLast + Lines({"[WORLDITEM i_Torch]", "P=150,200,0,2", "", "[EOF]"});

TEST(FilterPass, CleansAWorldByteForByteAndReports) {
    PassRig rig;
    rig.AddItem("i_torch");
    rig.AddRectangle(100, 200, 150, 260);
    rig.settings.filters = {{Item, {In}}};
    EXPECT_EQ(rig.Clean(tavern), Lines({"// comment", "", "[WORLDITEM i_chair]", "P=300,400,5", "",
                                        "[WORLDITEM i_Torch]", "P=150,200,0,2", "", "[EOF]", ""}));
    EXPECT_EQ(rig.outcome, PassOutcome::Complete);
    EXPECT_EQ(rig.log.entries,
              (Entries{"Scanning filter options...", "Not filtering Facets....",
                       "Not filtering rectangles....", "Filtering item where value is equal to list values.",
                       "Passed validation.", "Processing file...", "Removed 1 items.",
                       "Averaged 4 objects a second.", "Completed in 0 seconds.", "Processed 4 items."}));
    EXPECT_EQ(rig.events, (Entries{"active", "idle"}));
    EXPECT_TRUE(rig.shared.blnIdle);
    EXPECT_EQ(rig.pass.Processed(), 0);
    EXPECT_EQ(rig.fileSystem.openFiles, 0);

    rig.settings.filters = {{Item, {NotIn}}, {Rectangle, {In}}, {Facet, {NotIn, " 1.4 "}}};
    EXPECT_EQ(rig.Clean(tavern), beforeTheLast + Lines({"[EOF]", ""}));
    EXPECT_EQ(rig.log.entries[1], "Filtering Facets where value is NOT equal to  1.4 .");
    EXPECT_EQ(rig.log.entries[2], "Filtering rectangles where value is equal to list values.");
    EXPECT_EQ(rig.log.entries[3], "Filtering item where value is NOT equal to list values.");
}

TEST(FilterPass, RefusesWhatItCannotRunBeforeItOpensAFile) {
    const std::string noFile =
        "Not Enuf Info: You need to pick a file to load and save in order to run a report.";
    const std::string sameFile = "nooOOO!!!: You picked the same file to load and save.";
    const std::string noFilter = "Is teh duh....: You didn't chose any filters.";
    const std::string noFacet = "nooOOO!!!: You didn't specify a Facet, but you chose to use it as a filter.";
    const std::string noRectangles =
        "nooOOO!!!: You didn't specify any rectangles, but you chose to use them as a filter.";
    const std::string noItems =
        "nooOOO!!!: You didn't specify any items, but you chose to use them as a filter.";
    for (const auto& [input, output, filters, events] :
         std::vector<std::tuple<std::string, std::string, Filters, Entries>>{
             {"", "out", {}, {noFile}},
             {"in", "", {}, {noFile}},
             {"in", "in", {}, {sameFile}},
             {"in", "out", {}, {"active", noFilter, "idle"}},
             {"in", "out", {{Facet, {In}}}, {"active", noFacet, "focus on facet", "idle"}},
             {"in", "out", {{Rectangle, {In}}}, {"active", noRectangles, "idle"}},
             {"in", "out", {{Item, {In}}}, {"active", noItems, "idle"}}}) {
        PassRig rig;
        rig.log.LogInfo("from before");
        rig.settings.strInputFile = input;
        rig.settings.strOutputFile = output;
        rig.settings.filters = filters;
        rig.Clean(tavern);
        EXPECT_EQ(rig.outcome, PassOutcome::Refused);
        EXPECT_EQ(rig.events, events);
        EXPECT_EQ(rig.log.entries, Entries{events.size() > 1 ? "Scanning filter options..." : "from before"});
        EXPECT_EQ(rig.fileSystem.operations, 0U);
        EXPECT_TRUE(rig.shared.blnIdle);
    }
}

TEST(FilterPass, FailsWhenItsInputCannotBeReadTwiceOrIsAnotherOneThen) {
    PassRig rig;
    rig.settings.filters = removesNothing;
    MemoryFileSystem& system = rig.fileSystem;
    const auto expectFailure = [&](FailureKind kind, const std::string& where) {
        EXPECT_EQ(rig.outcome, PassOutcome::Failed);
        EXPECT_EQ(Entries(rig.log.entries.end() - 3, rig.log.entries.end()), Report(kind, passModule));
        EXPECT_EQ(rig.log.failedWhere, where);
    };
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
        expectFailure(kind, "in (" + how + " while it was read)");
    }
    system.files = {{"pipe", tavern}, {"out", "old"}};
    rig.settings.strInputFile = "pipe";
    EXPECT_EQ(rig.Clean(""), "old");
    expectFailure(PathFileAccessError, "pipe (a pipe cannot be read twice)");
}

TEST(FilterPass, ReportsAReaderFailureAndThenItsOwn) {
    PassRig rig;
    Entries reports = Report(FailureKind::TypeMismatch, readerModule);
    const Entries own = Report(FailureKind::BadFileNameOrNumber, passModule);
    reports.insert(reports.end(), own.begin(), own.end());
    for (const char* const facet : {"7", "0"}) {  // 0 removes the empty record after the failure
        rig.settings.filters = {{Facet, {In, facet}}};
        EXPECT_EQ(rig.Clean(Lines({"[A kept]", "P=1,1,1,1", "", "[A bad]", "P=1,x", "", "[A unread]"})),
                  Lines({"", "[A kept]", "P=1,1,1,1", ""}))
            << "what was written before the failure stays";
        EXPECT_EQ(rig.outcome, PassOutcome::Failed);
        EXPECT_EQ(Entries(rig.log.entries.begin() + 6, rig.log.entries.end()), reports);
        EXPECT_EQ(rig.events.back(), "idle");
        EXPECT_TRUE(rig.shared.blnIdle);
        EXPECT_EQ(rig.pass.Processed(), 0);
        EXPECT_EQ(rig.fileSystem.openFiles, 0);
    }
}

TEST(FilterPass, HaltStopsBeforeTheNextBlockWithoutAReport) {
    PassRig rig;
    rig.settings.filters = removesNothing;
    int yields = 0;
    rig.onYield = [&] {
        EXPECT_FALSE(rig.shared.blnIdle);
        EXPECT_EQ(rig.pass.Run(rig.settings), PassOutcome::Busy);
        EXPECT_EQ(rig.pass.Processed(), yields);
        if (++yields == 2) rig.pass.Halt();
    };
    EXPECT_EQ(rig.Clean(tavern), beforeTheLast) << "the block in hand is still written";
    EXPECT_EQ(rig.outcome, PassOutcome::Halted);
    EXPECT_EQ(rig.log.entries.back(), "Halt command issued.");

    rig.onYield = [] {};
    EXPECT_EQ(rig.Clean(tavern), tavern + "\r\n") << "the request does not outlive its pass";
    rig.pass.Halt();
    EXPECT_EQ(rig.Clean(tavern), Lines({"// comment", ""})) << "a request from before a pass stops it";
}

TEST(FilterPass, CountsSecondsAcrossHalvesAndMidnight) {
    PassRig rig;
    rig.settings.filters = removesNothing;
    for (const auto& [start, end, seconds, rate] :
         std::vector<std::tuple<double, double, std::string, std::string>>{{10.5, 12.9, "2", "2"},
                                                                           {11.5, 12.9, "0", "4"},
                                                                           {10.6, 10.9, "0", "4"},
                                                                           {86'399.0, 2.5, "4", "1"}}) {
        rig.times = {start, end};
        rig.Clean(tavern);
        EXPECT_EQ(rig.log.entries[7], "Averaged " + rate + " objects a second.") << start;
        EXPECT_EQ(rig.log.entries[8], "Completed in " + seconds + " seconds.") << start;
    }
}

}  // namespace
}  // namespace quillmere::test
