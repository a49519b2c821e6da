// The list editor, from an empty filter set to a saved one. Built once for each backend.

#include "tests/support/backend_driver.h"
#include "tests/support/temporary_folder.h"
#include "tests/support/text.h"
#include "ui/frm_editor.h"
#include "ui/frm_main.h"

#include <gtest/gtest.h>

namespace quillmere::test {
namespace {

using Strings = std::vector<std::string>;

class EditorScenario : public testing::Test {
 protected:
    EditorScenario() { window.Show(); }
    ~EditorScenario() override { window.Close(); }

    void AddRectangle(frmEditor& editor, const std::string& name, const std::string& from,
                      const std::string& to) {
        user->Type(editor.txtRectangleName, name);
        user->Type(editor.txtX1, from);
        user->Type(editor.txtY1, from);
        user->Type(editor.txtX2, to);
        user->Type(editor.txtY2, to);
        user->Click(editor.mnuAddRect);
    }
    void AddItem(frmEditor& editor, const std::string& name, const std::string& code) {
        user->Type(editor.txtItemName, name);
        user->Type(editor.txtItem, code);
        user->Click(editor.mnuAddItem);
    }
    void EnterTheLists(frmEditor& editor) {
        AddRectangle(editor, "Everywhere", "0", "6000");
        AddRectangle(editor, "Mistake", "1", "x");  // refused
        user->Type(editor.txtX2, "2");
        user->Type(editor.txtY2, "2");
        user->Click(editor.mnuAddRect);
        AddItem(editor, "Caf\xc3\xa9", "i_cafe");
        AddItem(editor, "Torch", "i_tor");
        EXPECT_EQ(user->ShownItems(editor.lstRectangle), (Strings{"Everywhere", "Mistake"}));
        EXPECT_EQ(user->ShownTitle(editor), "Rectangle and Item List Editor*");
    }
    void CorrectThem(frmEditor& editor) {
        user->ClickItem(editor.lstRectangle, 1);
        EXPECT_EQ(user->ShownText(editor.txtX2), "2");
        user->Click(editor.mnuRemoveRect);
        EXPECT_FALSE(user->ShownEnabled(editor.mnuRemoveRect));
        user->ClickItem(editor.lstItem, 0);
        user->Press(editor, Key::Down);
        EXPECT_EQ(user->ShownText(editor.txtItem), "i_tor");
        user->Type(editor.txtItem, "i_torch");
        user->Click(editor.mnuEditItem);
        EXPECT_EQ(user->ShownItems(editor.lstItem), (Strings{"Caf\xc3\xa9", "Torch"}));
    }

    TemporaryFolder folder;
    std::unique_ptr<BackendDriver> user = MakeBackendDriver();
    modGlobal shared{SystemFileSystem()};
    frmMain window{user->Target(), shared, {"settings"}};
};

TEST_F(EditorScenario, ListsAreEnteredCorrectedAndSaved) {
    user->WhenModalOpens([&](Window& shown) {
        auto& editor = dynamic_cast<frmEditor&>(shown);
        user->AnswerMessage(MessageResult::Ok);
        EnterTheLists(editor);
        CorrectThem(editor);
        user->AnswerFileDialog(folder.Path("mine"));
        user->Choose(editor.mnuSave);
        EXPECT_EQ(user->ShownTitle(editor), "Rectangle and Item List Editor");
        AddItem(editor, "Chair", "i_chair");
        user->AnswerMessage(MessageResult::Cancel);
        user->ClickCloseBox(editor);
        EXPECT_TRUE(editor.IsShown());
        user->AnswerMessage(MessageResult::No);
        user->Choose(editor.mnuClose);
    });
    user->Click(window.cmdEditor);
    EXPECT_EQ(window.cmdEditor.Hint(), "Rectangles loaded: 1\r\nItems loaded: 3");
    EXPECT_EQ(shared.filterSet.arrItems[2].code, "i_chair") << "the main window has it, the file has not";
    EXPECT_EQ(user->messages.front(), (SeenMessage{"Shiz....", "A coordinate has to be a number.",
                                                   MessageIcon::Information, MessageButtons::Ok}));
    EXPECT_EQ(folder.Get("mine.LST"),
              Lines({"<ITEMS>", "Caf\xe9", "i_cafe", "Torch", "i_torch", "</ITEMS>", "<RECTANGLES>",
                     "Everywhere", "0", "6000", "0", "6000", "</RECTANGLES>"}));
}

}  // namespace
}  // namespace quillmere::test
