// The list editor, from an empty filter set to a saved one. Built once for each backend with a screen.

#include "tests/support/backend_driver.h"
#include "tests/support/temporary_folder.h"
#include "tests/support/text.h"
#include "ui/frm_editor.h"
#include "ui/frm_main.h"

#include <gtest/gtest.h>

namespace quillmere::test {
namespace {

using Strings = std::vector<std::string>;
using Boxes = std::vector<TextBox*>;

class EditorScenario : public testing::Test {
 protected:
    EditorScenario() { window.Show(); }
    ~EditorScenario() override { window.Close(); }

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
        user->ClickItem(editor.lstItem, 0);
        user->Press(editor, Key::Down);
        EXPECT_EQ(Texts(boxes), (Strings{"Torch", "i_tor"}));
        user->Type(editor.txtItem, "i_torch");
        user->Click(editor.mnuEditItem);
        EXPECT_EQ(editor.lstItem.Items(), (Strings{"Caf\xc3\xa9", "Torch"}));
    }

    TemporaryFolder folder;
    std::unique_ptr<BackendDriver> user = MakeBackendDriver();
    modGlobal shared{SystemFileSystem()};
    frmMain window{user->Target(), shared, {"settings"}};
};

TEST_F(EditorScenario, ListsAreEnteredCorrectedAndSaved) {
    user->WhenModalOpens([&](Window& shown) {
        auto& editor = dynamic_cast<frmEditor&>(shown);
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

}  // namespace
}  // namespace quillmere::test
