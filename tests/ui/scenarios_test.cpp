// What a user does with each window of the program, from the first click to the last. Built once for each
// backend with a screen.

#include "bench/world_generator.h"
#include "tests/support/backend_driver.h"
#include "tests/support/temporary_folder.h"
#include "tests/support/text.h"
#include "ui/frm_about.h"
#include "ui/frm_editor.h"
#include "ui/frm_help.h"
#include "ui/frm_main.h"

#include <gtest/gtest.h>

namespace quillmere::test {
namespace {

using Strings = std::vector<std::string>;
using Boxes = std::vector<TextBox*>;

class Scenario : public testing::Test {
 protected:
    Scenario() { window.Show(); }
    ~Scenario() override { window.Close(); }

    /// Chooses the item, which opens a dialog with that title and these kinds of files, and picks a file.
    void Pick(MenuItem& item, const std::string& name, const std::string& titleAndFilter) {
        user->AnswerFileDialog(folder.Path(name));
        user->Choose(item);
        const FileDialog& shown = user->dialogs.back();
        EXPECT_EQ(shown.title + ": " + shown.filter, titleAndFilter + "|All Files (*.*)|*.*");
        EXPECT_EQ(shown.overwritePrompt, shown.purpose == FileDialog::Purpose::Save);
    }
    bool LogShows(const std::string& text) const {
        return window.txtInfo.Text().find(text) != std::string::npos;
    }
    /// Opens a window from a menu, calls `act`, and expects that this has closed it.
    void Open(MenuItem& item, const std::function<void(Window&)>& act) {
        user->WhenModalOpens([&](Window& shown) {
            act(shown);
            EXPECT_FALSE(shown.IsShown());
        });
        user->Choose(item);
        EXPECT_TRUE(window.TakesInput());
    }
    /// Fills in the boxes and presses the button.
    void Enter(const Boxes& boxes, const Strings& texts, PushButton& button) {
        for (std::size_t i = 0; i < boxes.size(); ++i)
            user->Type(*boxes[i], texts[i]);
        user->Click(button);
    }

    TemporaryFolder folder;
    std::unique_ptr<BackendDriver> user = MakeBackendDriver();
    modGlobal shared{SystemFileSystem()};
    frmMain window{user->Target(), shared, {folder.Path()}};
};

TEST_F(Scenario, AFileIsCleanedWithMouseAndKeyboardAndThenAPassIsHalted) {
    std::string order;
    for (int i = 0; i < 8; ++i) {
        order += window.Focused()->Name() + ' ';
        user->Press(window, Key::Tab);
    }
    EXPECT_EQ(order, "txtInfo chkRectangles chkItems chkFacet cmdEditor cmdRun cmdHalt cmdExit ");
    folder.Put("LIST.LsT", Lines({"Torches", "i_torch", "</ITEMS>", "</RECTANGLES>"}));
    folder.Put("world.scp", Lines({"// comment", "", "[WORLDITEM i_torch]", "P=100,200,0,1", "",
                                   "[WORLDITEM i_chair]", "P=300,400,5", "", "[EOF]"}));
    Pick(window.mnuLoadList, "LIST.LsT", "Select a list file to load: List Files (*.LST)|*.LST");
    Pick(window.mnuLoad, "world.scp", "Select a script file to shread: Script Files (*.scp)|*.scp");
    Pick(window.mnuSave, "cleaned", "Select a file to save the output to: Script Files (*.SCP)|*.SCP");
    EXPECT_EQ(window.cmdRun.Hint(),
              "Reads: " + folder.Path("world.scp") + "\r\nWrites: " + folder.Path("cleaned.SCP"));
    user->Click(window.chkItems);
    user->Click(window.chkFacet);
    user->Click(window.optFacetNotIn);
    user->AnswerMessage(MessageResult::Ok);  // no facet was entered
    user->Click(window.cmdRun);
    EXPECT_TRUE(window.txtFacet.HasFocus());
    user->Type(window.txtFacet, "0");
    user->Click(window.cmdRun);
    EXPECT_EQ(folder.Get("cleaned.SCP"),
              Lines({"// comment", "", "[WORLDITEM i_chair]", "P=300,400,5", "", "[EOF]", ""}));
    EXPECT_TRUE(LogShows("Processed 3 items.\r\n\r\nCompleted in "));
    EXPECT_TRUE(window.cmdEditor.Enabled() && !window.cmdHalt.Enabled());

    folder.Put("large.scp", MakeWorld(100'000, 3));
    user->Drop(window, {folder.Path("large.scp")});
    user->WhenYielding([&] {
        EXPECT_FALSE(window.cmdEditor.Enabled());
        user->WaitUntil([&] { return window.lblInfo.Caption().starts_with("Processed "); });
        user->Press(window, Held::Alt, {Key{'H'}});
    });
    user->Click(window.cmdRun);
    EXPECT_TRUE(window.txtInfo.HasFocus()) << "not Exit, which is next";
    EXPECT_TRUE(LogShows("Halt command issued."));
    EXPECT_FALSE(LogShows("Processed "));
}

TEST_F(Scenario, ListsAreEnteredCorrectedAndSaved) {
    user->WhenModalOpens([&](Window& shown) {
        auto& editor = dynamic_cast<frmEditor&>(shown);
        const Boxes rectangle = {&editor.txtRectangleName, &editor.txtX1, &editor.txtY1, &editor.txtX2,
                                 &editor.txtY2};
        user->AnswerMessage(MessageResult::Ok);
        Enter(rectangle, {"Gate", "10.5", "-7", "x", " 7 "}, editor.mnuAddRect);
        EXPECT_TRUE(editor.txtX2.HasFocus());
        user->Type(editor.txtX2, "11.5");
        user->Click(editor.mnuAddRect);
        Enter(rectangle, {"Mistake", "1", "2", "3", "4"}, editor.mnuAddRect);
        Enter(rectangle, {"North gate", "9", "9", "1", "1"}, editor.mnuAddRect);
        user->ClickItem(editor.lstRectangle, 1);
        user->Click(editor.mnuRemoveRect);
        user->ClickItem(editor.lstRectangle, 0);
        user->Type(editor.txtRectangleName, "South gate");
        user->Click(editor.mnuEditRect);

        const Boxes item = {&editor.txtItemName, &editor.txtItem};
        for (const Strings& texts :
             {Strings{"Torch", "i_tor"}, {"Caf\xc3\xa9", "i_cafe"}, {"Web", "i_web"}}) {
            Enter(item, texts, editor.mnuAddItem);
            EXPECT_EQ(item[0]->Text() + item[1]->Text(), "") << "for the next one";
        }
        user->ClickItem(editor.lstItem, 1);
        user->Press(editor, Key::Down);
        user->Click(editor.mnuRemoveItem);
        EXPECT_FALSE(editor.mnuEditItem.Enabled() || editor.mnuRemoveItem.Enabled());
        EXPECT_EQ(item[0]->Text() + item[1]->Text(), "");
        user->ClickItem(editor.lstItem, 0);
        Enter(item, {"Candle", "i_torch"}, editor.mnuEditItem);
        EXPECT_FALSE(editor.mnuEditItem.Enabled() || editor.mnuRemoveItem.Enabled());
        EXPECT_EQ(editor.txtItemName.Text(), "Candle") << "not emptied";
        EXPECT_EQ(editor.lstItem.Items(), (Strings{"Candle", "Caf\xc3\xa9"}));
        Pick(editor.mnuSave, "mine", "Select a file to save this list to: List Files (*.LST)|*.LST");
        Enter(item, {"Chair", "i_chair"}, editor.mnuAddItem);
        user->AnswerMessage(MessageResult::No);
        user->ClickCloseBox(editor);
    });
    user->Click(window.cmdEditor);
    EXPECT_EQ(window.cmdEditor.Hint(), "Rectangles loaded: 2\r\nItems loaded: 3") << "the file has two";
    EXPECT_EQ(user->messages.front(), (Message{"Shiz....", "A coordinate has to be a number.",
                                               MessageIcon::Information, MessageButtons::Ok}));
    EXPECT_EQ(folder.Get("mine.LST"), Lines({"<ITEMS>", "Candle", "i_torch", "Caf\xe9", "i_cafe", "</ITEMS>",
                                             "<RECTANGLES>", "South gate", "10", "12", "-7", "7",
                                             "North gate", "9", "1", "9", "1", "</RECTANGLES>"}));
}

TEST_F(Scenario, TheAboutBoxAndTheHelpAreUsedAndClosedInEachWay) {
    user->WhenModalOpens([&](Window& about) { about.Close(); });
    user->Press(window, Held::Alt, {Key{'H'}, Key{'A'}});  // Help, since there is nothing to halt
    for (const bool translucent : {false, true}) {
        if (translucent) user->Choose(window.mnuTranslucent);
        EXPECT_NEAR(user->ShownOpacity(window), translucent ? 200 / 255.0 : 1.0, 0.01);
        Open(window.mnuAbout, [&](Window& about) {
            EXPECT_EQ(user->ShownOpacity(about), user->ShownOpacity(window));
            if (translucent) user->Press(about, Key::Escape);
            if (!translucent) user->ActivateAnother();
        });
    }
    Open(window.mnuAbout, [&](Window& shown) {
        auto& about = dynamic_cast<frmAbout&>(shown);
        EXPECT_EQ(about.lblVersion.Caption(), QUILLMERE_VERSION);
        EXPECT_EQ(about.lblBuild.Caption(), QUILLMERE_BUILD " (" QUILLMERE_BUILD_DATE ")");
        EXPECT_EQ(user->HotSpot(about.lblHomeLink), std::pair(12, 1));
        user->Click(about.lblHomeLink);
        user->Press(about, Held::Shift, {Key::Tab});
        user->Press(about, Key::Enter);
        user->Click(about.Command1);
    });
    EXPECT_EQ(user->opened, (Strings{"https://quillmere.example/", "mailto:support@quillmere.example"}));
    Open(window.mnuHelp, [&](Window& shown) {
        auto& help = dynamic_cast<frmHelp&>(shown);
        EXPECT_EQ(user->ShownOpacity(help), 1.0) << "never translucent";
        const std::string text = help.Text1.Text();
        user->Type(help.Text1, "x");
        EXPECT_EQ(help.Text1.Text(), text);
        user->AnswerMessage(MessageResult::Ok);
        user->Click(help.cmdWtf);
        EXPECT_EQ(user->messages.back().title, "WTF?!?");
        EXPECT_EQ(user->messages.back().icon, MessageIcon::Critical);
        EXPECT_TRUE(help.IsShown());
        user->Press(help, Key::Escape);
    });
    Open(window.mnuHelp, [&](Window& help) { user->Press(help, Held::Alt, {Key{'O'}}); });
}

}  // namespace
}  // namespace quillmere::test
