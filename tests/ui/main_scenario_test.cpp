// The main window, from the first click to the cleaned file. Built once for each backend with a screen.

#include "bench/world_generator.h"
#include "tests/support/backend_driver.h"
#include "tests/support/temporary_folder.h"
#include "tests/support/text.h"
#include "ui/frm_main.h"

#include <gtest/gtest.h>

namespace quillmere::test {
namespace {

class MainScenario : public testing::Test {
 protected:
    MainScenario() {
        folder.Put("LIST.LsT", Lines({"Torches", "i_torch", "</ITEMS>", "</RECTANGLES>"}));
        window.Show();
    }
    ~MainScenario() override { window.Close(); }

    void Pick(MenuItem& item, const std::string& name) {
        user->AnswerFileDialog(folder.Path(name));
        user->Choose(item);
    }
    /// Whether the Status log shows the text.
    bool LogShows(const std::string& text) const {
        return window.txtInfo.Text().find(text) != std::string::npos;
    }

    TemporaryFolder folder;
    std::unique_ptr<BackendDriver> user = MakeBackendDriver();
    modGlobal shared{SystemFileSystem()};
    frmMain window{user->Target(), shared, {"settings"}};
};

TEST_F(MainScenario, AFileIsCleanedWithTheMouseAndTheKeyboard) {
    folder.Put("world.scp", Lines({"// comment", "", "[WORLDITEM i_torch]", "P=100,200,0,1", "",
                                   "[WORLDITEM i_chair]", "P=300,400,5", "", "[EOF]"}));
    Pick(window.mnuLoadList, "LIST.LsT");
    Pick(window.mnuLoad, "world.scp");
    Pick(window.mnuSave, "cleaned");
    EXPECT_EQ(user->dialogs.front().title, "Select a list file to load");
    EXPECT_TRUE(LogShows("File to save: " + folder.Path("cleaned.SCP")));
    EXPECT_EQ(window.cmdRun.Hint(),
              "Reads: " + folder.Path("world.scp") + "\r\nWrites: " + folder.Path("cleaned.SCP"));

    user->Click(window.chkItems);
    EXPECT_TRUE(window.optItemIn.Selected());
    user->Click(window.chkFacet);
    user->Click(window.optFacetNotIn);
    user->AnswerMessage(MessageResult::Ok);
    user->Click(window.cmdRun);
    EXPECT_EQ(
        user->messages,
        std::vector{(Message{"nooOOO!!!", "You didn't specify a Facet, but you chose to use it as a filter.",
                             MessageIcon::Information, MessageButtons::Ok})});
    EXPECT_TRUE(window.txtFacet.HasFocus());
    user->Type(window.txtFacet, "0");
    user->Click(window.cmdRun);
    EXPECT_EQ(folder.Get("cleaned.SCP"),
              Lines({"// comment", "", "[WORLDITEM i_chair]", "P=300,400,5", "", "[EOF]", ""}));
    EXPECT_TRUE(LogShows("Processed 3 items.\r\n\r\nCompleted in "));
    EXPECT_FALSE(window.cmdHalt.Enabled());
    EXPECT_TRUE(window.cmdEditor.Enabled());
}

TEST_F(MainScenario, ARunningPassShowsItsProgressAndCanBeHalted) {
    folder.Put("world.scp", MakeWorld(100'000, 3));
    user->Drop(window, {folder.Path("world.scp"), folder.Path("LIST.LsT")});
    EXPECT_EQ(window.cmdEditor.Hint(), "Rectangles loaded: 0\r\nItems loaded: 1");
    Pick(window.mnuSave, "cleaned.scp");
    user->Click(window.chkFacet);
    user->Type(window.txtFacet, "9");
    user->WhenYielding([&] {
        EXPECT_FALSE(window.cmdEditor.Enabled());
        user->WaitUntil([&] { return window.lblInfo.Caption().starts_with("Processed "); });
        user->Press(window, Held::Alt, {Key{'H'}});
    });
    user->WhenModalOpens([&](Window& about) { about.Close(); });
    user->Press(window, Held::Alt, {Key{'H'}, Key{'A'}});  // Help, since there is nothing to halt
    user->Click(window.cmdRun);
    EXPECT_TRUE(window.txtInfo.HasFocus()) << "not Exit, which is next";
    EXPECT_TRUE(LogShows("Halt command issued."));
    EXPECT_FALSE(LogShows("Removed "));
    EXPECT_LT(folder.Get("cleaned.scp").size(), folder.Get("world.scp").size());
}

}  // namespace
}  // namespace quillmere::test
