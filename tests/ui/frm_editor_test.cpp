#include "ui/frm_editor.h"

#include "tests/support/memory_file_system.h"
#include "tests/support/recording_log.h"
#include "tests/support/text.h"
#include "toolkit/headless/headless_backend.h"

#include <gtest/gtest.h>

namespace quillmere::test {
namespace {

using Strings = std::vector<std::string>;

constexpr const char* plain = "Rectangle and Item List Editor";
constexpr const char* changed = "Rectangle and Item List Editor*";

/// Each test opens the editor on the shared filter set, acts, and closes it.
class Editor : public testing::Test {
 protected:
    ~Editor() override { EXPECT_TRUE(backend.NothingQueued()); }

    /// Opens the editor, calls `act`, and closes it, with No as the answer to the question about unsaved
    /// work.
    void Edit(const std::function<void(frmEditor&)>& act) {
        frmEditor editor(backend, shared, log, false);
        backend.QueueModal([&](Window&) {
            act(editor);
            if (!editor.IsShown()) return;
            if (editor.Caption() == changed) backend.QueueMessageResult(MessageResult::No);
            editor.UserCloses();
        });
        editor.ShowModal();
    }
    static void AddItem(frmEditor& editor, const char* name, const char* code) {
        editor.txtItemName.UserTypes(name);
        editor.txtItem.UserTypes(code);
        editor.mnuAddItem.UserClicks();
    }
    void ChooseWithFile(MenuItem& item, const std::string& file) {
        backend.QueueFile(file);
        item.UserChooses();
    }
    FilterSet& Filters() { return shared.filterSet; }

    MemoryFileSystem system;
    modGlobal shared{system};
    HeadlessBackend backend;
    RecordingLog log;
};

TEST_F(Editor, RefusesEmptyFieldsAndOneEntryTooMany) {
    Filters().arrItems.fill({"item", "i_x"});
    Edit([&](frmEditor& editor) {
        for (int i = 0; i < 3; ++i)
            backend.QueueMessageResult(MessageResult::Ok);
        editor.txtRectangleName.UserTypes("Town");
        editor.txtX2.UserTypes("3");
        editor.mnuAddRect.UserClicks();
        EXPECT_TRUE(editor.txtX1.HasFocus()) << "the first one that is empty";
        AddItem(editor, "Torch", "");
        EXPECT_EQ(editor.txtItemName.Text(), "Torch");
        AddItem(editor, "one too many", "i_y");
        EXPECT_EQ(editor.Caption(), plain);
        EXPECT_EQ(editor.lstRectangle.Count(), 0);
        EXPECT_EQ(editor.lstItem.Count(), 501);
        editor.lstItem.UserSelects(500);
        editor.mnuRemoveItem.UserClicks();
        AddItem(editor, "last", "i_y");
    });
    Strings texts;
    for (const Message& message : backend.messages)
        texts.push_back(message.text);
    const std::string fields = "You didn't fill out all the fields";
    EXPECT_EQ(texts, (Strings{fields, fields, "The list is full.", "Do you want to save before exiting?"}));
    EXPECT_EQ(Filters().arrItems[500], (ItemFilter{"last", "i_y"}));
}

TEST_F(Editor, AsksBeforeUnsavedWorkIsLost) {
    using enum MessageResult;
    for (const bool closing : {true, false}) {
        for (const auto& [answer, file] : std::vector<std::pair<MessageResult, std::string>>{
                 {Cancel, ""}, {No, ""}, {Yes, ""}, {Yes, "saved"}}) {
            system.files = {{"list", Lines({"Web", "i_web", "</ITEMS>", "</RECTANGLES>"})}};
            const std::string kept = closing || answer == Cancel ? "Torch" : "Web";
            Filters().Clear();
            Edit([&, &answer = answer, &file = file](frmEditor& editor) {
                const Window& shown = editor;
                EXPECT_EQ(shown.ReasonAgainstSessionEnd(), "");
                AddItem(editor, "Torch", "i_torch");
                EXPECT_EQ(shown.ReasonAgainstSessionEnd(), "Do you want to save before exiting?");
                backend.QueueMessageResult(answer);
                if (answer == Yes) backend.QueueFile(file);
                if (!closing && answer != Cancel) backend.QueueFile("list");
                (closing ? editor.mnuClose : editor.mnuLoad).UserChooses();
                EXPECT_EQ(backend.messages.back().title, closing ? "Si teh save?" : "And teh munky says....");
                EXPECT_EQ(editor.IsShown(), !closing || answer == Cancel);
                EXPECT_EQ(editor.Caption(), kept == "Torch" ? changed : plain);
                EXPECT_EQ(editor.lstItem.Items(), Strings{kept});
                EXPECT_EQ(system.files.contains("saved.LST"), !file.empty());
            });
            EXPECT_EQ(Filters().arrItems[0].name, kept);
        }
    }
}

TEST_F(Editor, AFailedLoadOrSaveIsInTheLogAndAsksForAttention) {
    Filters().arrItems[0] = {"Torch", "i_torch"};
    system.files["cut"] = Lines({"Web", "i_web"});
    Edit([&](frmEditor& editor) {
        editor.lstItem.UserSelects(0);
        ChooseWithFile(editor.mnuLoad, "cut");
        EXPECT_EQ(log.entries, Report(FailureKind::InputPastEnd, loadModule));
        EXPECT_EQ(backend.alerts, 1);
        EXPECT_EQ(editor.lstItem.Count(), 0) << "although the working list holds what was read";
        EXPECT_TRUE(editor.mnuEditItem.Enabled());
        editor.mnuEditItem.UserClicks();
        editor.mnuRemoveItem.UserClicks();
        EXPECT_EQ(editor.txtItem.Text(), "i_torch");
        log.EmptyLog();
        ChooseWithFile(editor.mnuSave, "missing/list");
        EXPECT_EQ(log.entries, Report(FailureKind::PathNotFound, saveModule));
        EXPECT_EQ(backend.alerts, 2);
        AddItem(editor, "Chair", "i_chair");
        ChooseWithFile(editor.mnuSave, "");
        EXPECT_EQ(editor.Caption(), plain) << "the mark goes before the dialog comes";
        EXPECT_EQ(backend.alerts, 2);
    });
    EXPECT_EQ(Filters().arrItems[0].name, "Chair") << "in the place of what was read";
}

TEST_F(Editor, AListWithGapsAndAnyBytesIsShownAndSavedWithoutTheGaps) {
    std::string everyByte;
    for (int byte = 1; byte < 256; ++byte) {
        if (byte != '\r') everyByte += static_cast<char>(byte);
    }
    const std::string first = Lines({"<ITEMS>", "caf\xe9 \x80", "i_cafe"});
    const std::string last =
        Lines({"B", everyByte, "</ITEMS>", "<RECTANGLES>", "\x81", "1", "3", "2", "4", "</RECTANGLES>"});
    system.files["list"] = first + Lines({"", "i_lost", "", ""}) + last;
    Filters().arrRectangles[3] = {"after a gap", 1, 1, 1, 1};
    Edit([](frmEditor& editor) { EXPECT_EQ(editor.Caption(), plain) << "nothing changed, nothing to ask"; });
    EXPECT_EQ(Filters().arrRectangles[0].name, "after a gap");
    EXPECT_EQ(Filters().arrRectangles[3], RectangleFilter{});
    Edit([&](frmEditor& editor) {
        ChooseWithFile(editor.mnuLoad, "list");
        EXPECT_EQ(editor.lstItem.Items(), (Strings{"café €", "B"}));
        EXPECT_EQ(editor.lstRectangle.Items(), Strings{"\xc2\x81"});
        editor.lstItem.UserSelects(1);
        editor.mnuEditItem.UserClicks();  // stored as shown
        ChooseWithFile(editor.mnuSave, "saved");
        EXPECT_TRUE(backend.dialogs.back().overwritePrompt);
    });
    EXPECT_EQ(system.files["saved.LST"], first + last);
    EXPECT_EQ(Filters().arrItems[1], (ItemFilter{"B", everyByte}));
    EXPECT_EQ(backend.alerts, 0);
}

TEST_F(Editor, ACharacterThatTheCodePageLacksIsStoredAsAQuestionMark) {
    Strings told;
    const std::string warning =
        "A character that the code page does not have was stored as \"?\"; an item code with it never "
        "matches.";
    Edit([&](frmEditor& editor) {
        AddItem(editor, "euro €", "€");
        EXPECT_EQ(log.entries, told) << "the page has the euro sign, but not the arrow";
        AddItem(editor, "Torch →", "i_torch");
        AddItem(editor, "→", "i_web");
        told.push_back(warning);  // once for each opening of the window
        EXPECT_EQ(log.entries, told);
    });
    Edit([&](frmEditor& editor) {
        editor.lstItem.UserSelects(0);
        editor.txtItem.UserTypes("→");
        editor.mnuEditItem.UserClicks();
        EXPECT_EQ(editor.lstItem.Items(), (Strings{"euro €", "Torch ?", "?"})) << "as they are stored";
        EXPECT_EQ(editor.txtItem.Text(), "→") << "as it was typed";
        told.push_back(warning);
        EXPECT_EQ(log.entries, told);
    });
    EXPECT_EQ(Filters().arrItems[0], (ItemFilter{"euro \x80", "?"}));
    EXPECT_EQ(Filters().arrItems[1], (ItemFilter{"Torch ?", "i_torch"}));
}

}  // namespace
}  // namespace quillmere::test
