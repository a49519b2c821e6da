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
    Scenario() {
        folder.Put("LIST.LsT", Lines({"Torches", "i_torch", "</ITEMS>", "</RECTANGLES>"}));
        window.Show();
    }
    ~Scenario() override { window.Close(); }

    void Pick(MenuItem& item, const std::string& name) {
        user->AnswerFileDialog(folder.Path(name));
        user->Choose(item);
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
    void Enter(const Boxes& boxes, const Strings& texts, PushButton& button) {
        for (std::size_t i = 0; i < boxes.size(); ++i)
            user->Type(*boxes[i], texts[i]);
        user->Click(button);
    }
    static Strings Texts(const Boxes& boxes) {
        Strings texts;
        for (const TextBox* const box : boxes)
            texts.push_back(box->Text());
        return texts;
    }

    TemporaryFolder folder;
    std::unique_ptr<BackendDriver> user = MakeBackendDriver();
    modGlobal shared{SystemFileSystem()};
    frmMain window{user->Target(), shared, {folder.Path()}};
};

TEST_F(Scenario, AFileIsCleanedWithTheMouseAndTheKeyboard) {
    folder.Put("world.scp", Lines({"// comment", "", "[WORLDITEM i_torch]", "P=100,200,0,1", "",
                                   "[WORLDITEM i_chair]", "P=300,400,5", "", "[EOF]"}));
    Pick(window.mnuLoadList, "LIST.LsT");
    Pick(window.mnuLoad, "world.scp");
    Pick(window.mnuSave, "cleaned");
    std::string asked;
    for (const FileDialog& dialog : user->dialogs)
        asked += dialog.title + ", " + dialog.filter + (dialog.overwritePrompt ? ", may ask\n" : "\n");
    EXPECT_EQ(
        asked,
        "Select a list file to load, List Files (*.LST)|*.LST|All Files (*.*)|*.*\n"
        "Select a script file to shread, Script Files (*.scp)|*.scp|All Files (*.*)|*.*\n"
        "Select a file to save the output to, Script Files (*.SCP)|*.SCP|All Files (*.*)|*.*, may ask\n");
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

TEST_F(Scenario, ARunningPassShowsItsProgressAndCanBeHalted) {
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

class EditorScenario : public Scenario {
 protected:
    void EnterRectangles(frmEditor& editor) {
        const Boxes boxes = {&editor.txtRectangleName, &editor.txtX1, &editor.txtY1, &editor.txtX2,
                             &editor.txtY2};
        Enter(boxes, {"Caf\xc3\xa9", "10.5", "-7", "11.5", " 7 "}, editor.mnuAddRect);
        EXPECT_EQ(Texts(boxes), Strings(5)) << "emptied for the next one";
        EXPECT_EQ(editor.Caption(), "Rectangle and Item List Editor*");
        user->AnswerMessage(MessageResult::Ok);
        Enter(boxes, {"Mistake", "1", "2", "x", "4"}, editor.mnuAddRect);
        EXPECT_TRUE(editor.txtX2.HasFocus());
        user->Type(editor.txtX2, "3");
        user->Click(editor.mnuAddRect);
        Enter(boxes, {"North gate", "9", "9", "1", "1"}, editor.mnuAddRect);

        user->ClickItem(editor.lstRectangle, 0);
        EXPECT_EQ(Texts(boxes), (Strings{"Caf\xc3\xa9", "10", "-7", "12", "7"}));
        EXPECT_FALSE(editor.mnuEditItem.Enabled()) << "the other half is apart";
        user->Type(editor.txtRectangleName, "South gate");
        user->Click(editor.mnuEditRect);
        EXPECT_EQ(editor.lstRectangle.Items(), (Strings{"South gate", "Mistake", "North gate"}));
        EXPECT_FALSE(editor.mnuEditRect.Enabled() || editor.mnuRemoveRect.Enabled());
        EXPECT_EQ(Texts(boxes), (Strings{"South gate", "10", "-7", "12", "7"}));
        user->ClickItem(editor.lstRectangle, 1);
        user->Click(editor.mnuRemoveRect);
        EXPECT_FALSE(editor.mnuEditRect.Enabled() || editor.mnuRemoveRect.Enabled());
        EXPECT_EQ(editor.lstRectangle.Items(), (Strings{"South gate", "North gate"}));
        EXPECT_EQ(Texts(boxes), Strings(5));
    }
    void EnterItems(frmEditor& editor) {
        const Boxes boxes = {&editor.txtItemName, &editor.txtItem};
        Enter(boxes, {"Caf\xc3\xa9", "i_cafe"}, editor.mnuAddItem);
        Enter(boxes, {"Torch", "i_tor"}, editor.mnuAddItem);
        Enter(boxes, {"Web", "i_web"}, editor.mnuAddItem);
        user->ClickItem(editor.lstItem, 2);
        user->Click(editor.mnuRemoveItem);
        user->ClickItem(editor.lstItem, 0);
        user->Press(editor, Key::Down);
        EXPECT_EQ(Texts(boxes), (Strings{"Torch", "i_tor"}));
        user->Type(editor.txtItem, "i_torch");
        user->Click(editor.mnuEditItem);
        EXPECT_EQ(editor.lstItem.Items(), (Strings{"Caf\xc3\xa9", "Torch"}));
    }
};

TEST_F(EditorScenario, ListsAreEnteredCorrectedAndSaved) {
    user->WhenModalOpens([&](Window& shown) {
        auto& editor = dynamic_cast<frmEditor&>(shown);
        std::string order = shown.Focused()->Name();
        for (int i = 0; i < 10; ++i) {
            user->Press(editor, Key::Tab);
            order += ' ' + shown.Focused()->Name();
        }
        EXPECT_EQ(
            order,
            "lstRectangle txtRectangleName txtX1 txtY1 txtX2 txtY2 mnuAddRect lstItem txtItemName txtItem "
            "mnuAddItem");
        EnterRectangles(editor);
        EnterItems(editor);
        user->AnswerFileDialog(folder.Path("mine"));
        user->Choose(editor.mnuSave);
        EXPECT_EQ(editor.Caption(), "Rectangle and Item List Editor");
        Enter({&editor.txtItemName, &editor.txtItem}, {"Chair", "i_chair"}, editor.mnuAddItem);
        user->AnswerMessage(MessageResult::Cancel);
        user->ClickCloseBox(editor);
        EXPECT_TRUE(editor.IsShown());
        user->AnswerMessage(MessageResult::No);
        user->Choose(editor.mnuClose);
    });
    user->Click(window.cmdEditor);
    EXPECT_EQ(window.cmdEditor.Hint(), "Rectangles loaded: 2\r\nItems loaded: 3");
    EXPECT_EQ(shared.filterSet.arrItems[2].code, "i_chair") << "the main window has it, the file has not";
    EXPECT_EQ(shared.filterSet.arrRectangles[2], RectangleFilter{}) << "the slot of the last one is free";
    EXPECT_EQ(user->messages.front(), (Message{"Shiz....", "A coordinate has to be a number.",
                                               MessageIcon::Information, MessageButtons::Ok}));
    EXPECT_EQ(folder.Get("mine.LST"), Lines({"<ITEMS>", "Caf\xe9", "i_cafe", "Torch", "i_torch", "</ITEMS>",
                                             "<RECTANGLES>", "South gate", "10", "12", "-7", "7",
                                             "North gate", "9", "1", "9", "1", "</RECTANGLES>"}));
}

TEST_F(Scenario, TheAboutBoxShowsTheVersionAndOpensItsLinks) {
    Open(window.mnuAbout, [&](Window& shown) {
        auto& about = dynamic_cast<frmAbout&>(shown);
        EXPECT_EQ(about.lblVersion.Caption(), QUILLMERE_VERSION);
        EXPECT_EQ(about.lblBuild.Caption(), QUILLMERE_BUILD " (" QUILLMERE_BUILD_DATE ")");
        EXPECT_EQ(user->ShownOpacity(about), 1.0);
        EXPECT_EQ(user->HotSpot(about.lblHomeLink), std::pair(12, 1));
        user->Click(about.lblHomeLink);
        user->Press(about, Held::Shift, {Key::Tab});
        user->Press(about, Key::Enter);
        user->Click(about.Command1);
    });
    EXPECT_EQ(user->opened,
              (std::vector<std::string>{"https://quillmere.example/", "mailto:support@quillmere.example"}));
    for (const bool translucent : {true, false}) {
        user->Choose(window.mnuTranslucent);
        EXPECT_NEAR(user->ShownOpacity(window), translucent ? 200 / 255.0 : 1.0, 0.01);
        Open(window.mnuAbout, [&](Window& about) {
            EXPECT_EQ(user->ShownOpacity(about), user->ShownOpacity(window));
            if (translucent) user->Press(about, Key::Escape);
            if (!translucent) user->ActivateAnother();
        });
    }
}

TEST_F(Scenario, TheHelpCannotBeChangedAndItsButtonScolds) {
    window.mnuTranslucent.UserChooses();
    for (const bool escape : {true, false}) {
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
            if (escape) user->Press(help, Key::Escape);
            if (!escape) user->Press(help, Held::Alt, {Key{'O'}});
        });
    }
}

}  // namespace
}  // namespace quillmere::test
