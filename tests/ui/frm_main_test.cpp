#include "ui/frm_main.h"

#include "tests/support/memory_file_system.h"
#include "tests/support/text.h"
#include "toolkit/headless/headless_backend.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <tuple>

namespace quillmere::test {
namespace {

class MainWindow : public testing::Test {
 protected:
    MainWindow() {
        system.files["in"] =
            Lines({"// comment", "", "[A one]", "P=1,1,0,1", "", "[A two]", "P=2,2,0,2", "", "[EOF]"});
        system.files["drop.LsT"] = Lines({"Two", "two", "</ITEMS>", "</RECTANGLES>"});
    }
    ~MainWindow() override {
        EXPECT_TRUE(backend.NothingQueued());
        window.Close();
    }
    void Pick(const std::string& input, const std::string& output) {
        backend.QueueFile(input);
        window.mnuLoad.UserChooses();
        backend.QueueFile(output);
        window.mnuSave.UserChooses();
    }
    /// Shows the window, chooses both files and a facet filter on 2.
    void Arrange() {
        window.Show();
        Pick("in", "out.scp");
        if (!window.chkFacet.Checked()) window.chkFacet.UserClicks();
        window.txtFacet.UserTypes("2");
    }
    std::string Log() const { return window.txtInfo.Text(); }
    const std::string optionsFile = (std::filesystem::path("program") / "DSCPOPTS.INI").string();

    MemoryFileSystem system;
    modGlobal shared{system};
    HeadlessBackend backend;
    frmMain window{backend, shared, {"program"}};
};

TEST_F(MainWindow, StartsWithEveryFilterOffAndSwitchingOneOnChoosesItsFirstOption) {
    window.Show();
    std::string order = window.Focused()->Name();
    for (int i = 0; i < 7; ++i)
        order += ' ' + window.UserPressesTab(false)->Name();
    EXPECT_EQ(order, "txtInfo chkRectangles chkItems chkFacet cmdEditor cmdRun cmdHalt cmdExit");
    for (const auto& [filter, first, second] :
         {std::tie(window.chkRectangles, window.optRectangleIn, window.optRectangleNotIn),
          std::tie(window.chkItems, window.optItemIn, window.optItemNotIn),
          std::tie(window.chkFacet, window.optFacetIn, window.optFacetNotIn)}) {
        EXPECT_FALSE(first.Enabled() || first.Selected() || second.Enabled() || second.Selected());
        filter.UserClicks();
        EXPECT_TRUE(first.Selected() && first.Enabled() && second.Enabled());
        second.UserClicks();
        filter.UserClicks();
        EXPECT_TRUE(second.Selected()) << "switching off leaves the choice";
        EXPECT_FALSE(first.Enabled() || second.Enabled());
        EXPECT_FALSE(window.txtFacet.Enabled());
        filter.UserClicks();
        EXPECT_TRUE(first.Selected());
    }
    window.txtFacet.UserTypes("7");
    window.chkFacet.UserClicks();
    EXPECT_EQ(window.txtFacet.Text(), "7");
}

TEST_F(MainWindow, DroppedFilesAreUsedAndACancelledDialogClearsAFile) {
    window.Show();
    window.UserDropsFiles({"in", "drop.LsT", "lst"});
    EXPECT_EQ(shared.filterSet.arrItems[0].name, "Two");
    EXPECT_EQ(window.cmdRun.Hint(), "Reads: lst\r\nWrites: nothing chosen yet");
    Pick("in", "cleaned");
    Pick("", "");
    EXPECT_EQ(window.cmdRun.Hint(), "Reads: nothing chosen yet\r\nWrites: nothing chosen yet");
    backend.QueueMessageResult(MessageResult::Ok);
    window.mnuRun.UserChooses();
    EXPECT_EQ(backend.messages.back().title, "Not Enuf Info");
    EXPECT_EQ(Log(),
              "File to save: cleaned.SCP\r\n\r\nFile to load: in\r\n\r\n"
              "File to load: lst\r\n\r\nFile to load: in\r\n\r\nNo options found, using defaults.\r\n\r\n")
        << "this refusal comes before the log is emptied";
    EXPECT_TRUE(window.cmdHalt.Enabled());
}

TEST_F(MainWindow, LoadsAListWhileAPassRuns) {
    Arrange();
    window.chkItems.UserClicks();
    shared.filterSet.arrItems[0] = {"One", "one"};
    backend.QueueEvent([] {});
    backend.QueueEvent([this] {
        backend.QueueFile("drop.LsT");
        window.mnuLoadList.UserChooses();
        window.cmdRun.UserClicks();  // a second Run does nothing
        window.cmdEditor.UserClicks();
    });
    window.cmdRun.UserClicks();
    EXPECT_EQ(system.files["out.scp"], Lines({"// comment", "", "[A one]", "P=1,1,0,1", "", "[EOF]", ""}));
    EXPECT_EQ(Log().find("File to save"), std::string::npos) << "the pass has emptied the log";
    std::string log;
    for (const char* const file : {"absent", ""}) {
        backend.QueueFile(file);
        window.mnuLoadList.UserChooses();
        EXPECT_EQ(Log().substr(0, 39), "Error in list loading module.  Pffft...");
        if (log.empty()) log = Log();
    }
    EXPECT_EQ(Log(), log) << "a cancelled dialog changes nothing";
    EXPECT_EQ(window.cmdEditor.Hint(), "Rectangles loaded: 0\r\nItems loaded: 0");
}

TEST_F(MainWindow, ExitTheCloseBoxAndTheEndOfTheSessionKeepTheBlocksWrittenSoFar) {
    const std::function<void()> ends[] = {[&] { window.cmdExit.UserClicks(); }, [&] { window.UserCloses(); },
                                          [&] { static_cast<Window&>(window).SessionEnds(); }};
    for (const auto& end : ends) {
        Arrange();
        backend.QueueEvent([] {});
        backend.QueueEvent(end);
        EXPECT_THROW(window.cmdRun.UserClicks(), ProgramEnded);
        EXPECT_EQ(system.files["out.scp"], Lines({"// comment", "", "[A one]", "P=1,1,0,1", ""}));
        EXPECT_EQ(system.openFiles, 0);
        shared.blnIdle = true;
        window.UserCloses();
        EXPECT_FALSE(window.IsShown()) << "an idle window just closes";
    }
}

TEST_F(MainWindow, TranslucencyIsSwitchedKeptAndLoaded) {
    window.Show();
    EXPECT_EQ(backend.Calls().Opacity(window.Handle()), 1.0);
    Pick("in", "out.scp");
    backend.Calls().SetWindowLongA(window.Handle(), GWL_EXSTYLE_INDEX, 1);
    window.mnuTranslucent.UserChooses();
    EXPECT_EQ(backend.Calls().GetWindowLongA(window.Handle(), GWL_EXSTYLE_INDEX), WS_EX_LAYERED_STYLE | 1)
        << "other styles are kept";
    EXPECT_TRUE(window.mnuTranslucent.Checked());
    EXPECT_EQ(system.files[optionsFile], Lines({"True", "in", "out.scp"}));
    for (const std::uint32_t version : {0U, 4U}) {  // an old system; 0: the query fails
        backend.Calls().majorVersion = version;
        backend.QueueMessageResult(MessageResult::Ok);
        window.mnuTranslucent.UserChooses();
        EXPECT_EQ(backend.messages.back().title, "Incorrect Windows Version");
        EXPECT_EQ(backend.messages.back().icon, MessageIcon::Critical);
        EXPECT_TRUE(window.mnuTranslucent.Checked());
    }
    backend.Calls().majorVersion = 5;
    window.mnuTranslucent.UserChooses();
    EXPECT_EQ(backend.Calls().GetWindowLongA(window.Handle(), GWL_EXSTYLE_INDEX), 1);
    window.Close();

    system.files[optionsFile] = Lines({"True", "other", "out.scp"});
    window.Show();
    EXPECT_NEAR(backend.Calls().Opacity(window.Handle()), 200 / 255.0, 0.001);
    EXPECT_TRUE(window.mnuTranslucent.Checked());
    EXPECT_EQ(window.cmdRun.Hint(), "Reads: other\r\nWrites: out.scp");
    window.mnuTranslucent.UserChooses();
    EXPECT_EQ(backend.Calls().Opacity(window.Handle()), 1.0);
    EXPECT_EQ(system.files[optionsFile], Lines({"False", "other", "out.scp"}));
    EXPECT_EQ(Log().find("options"), Log().rfind("options")) << "nothing was said but at the first start";
}

}  // namespace
}  // namespace quillmere::test
