// The main window, from the first click to the cleaned file. Built once for each backend.

#include "bench/world_generator.h"
#include "tests/support/backend_driver.h"
#include "tests/support/temporary_folder.h"
#include "tests/support/text.h"
#include "ui/frm_main.h"

#include <gtest/gtest.h>

namespace quillmere::test {
namespace {

using namespace std::chrono_literals;

class MainScenario : public testing::Test {
 protected:
    MainScenario() {
        folder.Put("world.scp", Lines({"// comment", "", "[WORLDITEM i_torch]", "P=100,200,0,1", "",
                                       "[WORLDITEM i_chair]", "P=300,400,5", "", "[EOF]"}));
        folder.Put("list.lst", Lines({"Torches", "i_torch", "</ITEMS>", "</RECTANGLES>"}));
        window.Show();
    }
    ~MainScenario() override { window.Close(); }

    void Pick(MenuItem& item, const std::string& name) {
        user->AnswerFileDialog(folder.Path(name));
        user->Choose(item);
    }
    /// Whether the Status log shows the text.
    bool LogShows(const std::string& text) {
        user->Wait(50ms);
        return user->ShownText(window.txtInfo).find(text) != std::string::npos;
    }

    TemporaryFolder folder;
    std::unique_ptr<BackendDriver> user = MakeBackendDriver();
    modGlobal shared{SystemFileSystem()};
    frmMain window{user->Target(), shared, {"settings"}};
};

TEST_F(MainScenario, AFileIsCleanedWithTheMouseAndTheKeyboard) {
    Pick(window.mnuLoadList, "list.lst");
    Pick(window.mnuLoad, "world.scp");
    Pick(window.mnuSave, "cleaned");
    EXPECT_EQ(user->dialogs.front().title, "Select a list file to load");
    EXPECT_TRUE(LogShows("File to save: " + folder.Path("cleaned.SCP")));
    EXPECT_EQ(user->ShownHint(window.cmdRun),
              "Reads: " + folder.Path("world.scp") + "\r\nWrites: " + folder.Path("cleaned.SCP"));

    user->Click(window.chkItems);
    EXPECT_TRUE(user->ShownChecked(window.optItemIn));
    user->Click(window.chkFacet);
    user->Click(window.optFacetNotIn);
    user->Type(window.txtFacet, "0");
    user->Click(window.cmdRun);
    EXPECT_EQ(folder.Get("cleaned.SCP"),
              Lines({"// comment", "", "[WORLDITEM i_chair]", "P=300,400,5", "", "[EOF]", ""}));
    EXPECT_TRUE(LogShows("Processed 3 items.\r\n\r\nCompleted in 0 seconds.") ||
                LogShows("Processed 3 items.\n\nCompleted in 0 seconds."));
    EXPECT_FALSE(user->ShownEnabled(window.cmdHalt));
    EXPECT_TRUE(user->ShownEnabled(window.cmdEditor));
}

TEST_F(MainScenario, AnEmptyFacetIsRefusedAndTheFocusGoesThere) {
    user->Drop(window, {folder.Path("list.lst"), folder.Path("world.scp")});
    EXPECT_EQ(window.cmdEditor.Hint(), "Rectangles loaded: 0\r\nItems loaded: 1");
    Pick(window.mnuSave, "cleaned.scp");
    user->Click(window.chkFacet);
    user->AnswerMessage(MessageResult::Ok);
    user->Click(window.cmdRun);
    EXPECT_EQ(user->messages,
              std::vector{(SeenMessage{"nooOOO!!!",
                                       "You didn't specify a Facet, but you chose to use it as a filter.",
                                       MessageIcon::Information, MessageButtons::Ok})});
    EXPECT_TRUE(user->ShownFocus(window.txtFacet));
}

TEST_F(MainScenario, ARunningPassShowsItsProgressAndCanBeHalted) {
    folder.Put("world.scp", MakeWorld(100'000, 3));
    Pick(window.mnuLoad, "world.scp");
    Pick(window.mnuSave, "cleaned.scp");
    user->Click(window.chkFacet);
    user->Type(window.txtFacet, "9");
    bool active = false;
    user->WhenYielding([&] {
        active = !user->ShownEnabled(window.cmdEditor);
        user->Wait(150ms);
        user->PressAccessKey(window, 'h');
    });
    EXPECT_EQ(window.UserPressesAccessKey('h'), &window.mnuHelpRoot) << "nothing to halt";
    user->Click(window.cmdRun);
    EXPECT_TRUE(active);
    EXPECT_TRUE(user->ShownFocus(window.txtInfo)) << "not Exit, which is next";
    EXPECT_TRUE(LogShows("Halt command issued."));
    EXPECT_FALSE(LogShows("Removed "));
    EXPECT_EQ(user->ShownText(window.lblInfo).substr(0, 10), "Processed ");
    EXPECT_LT(folder.Get("cleaned.scp").size(), folder.Get("world.scp").size());
}

}  // namespace
}  // namespace quillmere::test
