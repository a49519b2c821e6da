#include "ui/frm_editor.h"

#include "tests/support/memory_file_system.h"
#include "tests/support/recording_log.h"
#include "tests/support/text.h"
#include "toolkit/headless/headless_backend.h"

#include <gtest/gtest.h>

#include <array>

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
    static void AddRectangle(frmEditor& editor, const std::array<const char*, 5>& nameX1Y1X2Y2) {
        const std::array boxes = {&editor.txtRectangleName, &editor.txtX1, &editor.txtY1, &editor.txtX2,
                                  &editor.txtY2};
        for (std::size_t i = 0; i < boxes.size(); ++i)
            boxes[i]->UserTypes(nameX1Y1X2Y2[i]);
        editor.mnuAddRect.UserClicks();
    }
    static void AddItem(frmEditor& editor, const char* name, const char* code) {
        editor.txtItemName.UserTypes(name);
        editor.txtItem.UserTypes(code);
        editor.mnuAddItem.UserClicks();
    }
    /// The names in the slots before the first free one.
    static Strings Names(const auto& table) {
        Strings names;
        for (std::size_t slot = 0; !table[slot].name.empty(); ++slot)
            names.push_back(table[slot].name);
        return names;
    }
    FilterSet& Filters() { return shared.filterSet; }

    MemoryFileSystem system;
    modGlobal shared{system};
    HeadlessBackend backend;
    RecordingLog log;
};

TEST_F(Editor, AddsEditsAndDeletesRectangles) {
    Edit([&](frmEditor& editor) {
        AddRectangle(editor, {"North gate", "100", "200", "150", "260"});
        EXPECT_EQ(editor.Caption(), changed);
        EXPECT_EQ(editor.txtX1.Text() + editor.txtRectangleName.Text(), "");
        AddRectangle(editor, {" ", "10.5", "-7", "11.5", "  7 "});
        AddRectangle(editor, {"North gate", "9", "9", "1", "1"});
        EXPECT_EQ(editor.lstRectangle.Items(), (Strings{"North gate", " ", "North gate"}));

        editor.txtX1.UserTypes("typed over");
        editor.lstRectangle.UserSelects(1);
        EXPECT_EQ(editor.txtX1.Text() + "," + editor.txtY1.Text() + "," + editor.txtX2.Text() + "," +
                      editor.txtY2.Text(),
                  "10,-7,12,7");
        EXPECT_TRUE(editor.mnuEditRect.Enabled() && editor.mnuRemoveRect.Enabled());
        EXPECT_FALSE(editor.mnuEditItem.Enabled()) << "the other half is apart";
        editor.txtRectangleName.UserTypes("South");
        editor.mnuEditRect.UserClicks();
        EXPECT_EQ(editor.lstRectangle.Items(), (Strings{"North gate", "South", "North gate"}));
        EXPECT_EQ(editor.txtRectangleName.Text(), "South");
        EXPECT_FALSE(editor.mnuEditRect.Enabled() || editor.mnuRemoveRect.Enabled());

        editor.lstRectangle.UserSelects(0);
        editor.mnuRemoveRect.UserClicks();
        EXPECT_EQ(editor.lstRectangle.Selected(), ListBox::none);
        EXPECT_EQ(editor.txtRectangleName.Text(), "");
    });
    EXPECT_EQ(Names(Filters().arrRectangles), (Strings{"South", "North gate"}));
    EXPECT_EQ(Filters().arrRectangles[0], (RectangleFilter{"South", 10, -7, 12, 7}));
    EXPECT_EQ(Filters().arrRectangles[1], (RectangleFilter{"North gate", 9, 9, 1, 1})) << "corners as typed";
    EXPECT_EQ(Filters().arrRectangles[2], RectangleFilter{});
}

TEST_F(Editor, RefusesWhatItCannotStoreAndChangesNothing) {
    Edit([&](frmEditor& editor) {
        for (int i = 0; i < 5; ++i)
            backend.QueueMessageResult(MessageResult::Ok);
        AddRectangle(editor, {"Town", "1", "", "3", ""});
        EXPECT_TRUE(editor.txtY1.HasFocus()) << "the first one that is empty";
        for (const char* const noNumber : {"x", " ", "2147483648"}) {
            AddRectangle(editor, {"Town", "1", "2", noNumber, "4"});
            EXPECT_TRUE(editor.txtX2.HasFocus());
        }
        AddItem(editor, "Torch", "");
        EXPECT_EQ(editor.txtItemName.Text(), "Torch");
        EXPECT_EQ(editor.lstRectangle.Count() + editor.lstItem.Count(), 0);
        EXPECT_EQ(editor.Caption(), plain);
        editor.mnuEditRect.SetEnabled(true);
        editor.mnuRemoveRect.SetEnabled(true);
        editor.mnuEditRect.UserClicks();
        editor.mnuRemoveRect.UserClicks();
    });
    Strings texts;
    for (const Message& message : backend.messages) {
        EXPECT_EQ(message.title, "Shiz....");
        texts.push_back(message.text);
    }
    const std::string fields = "You didn't fill out all the fields";
    const std::string number = "A coordinate has to be a number.";
    EXPECT_EQ(texts, (Strings{fields, number, number, number, fields}));
    EXPECT_TRUE(Names(Filters().arrRectangles).empty());
}

TEST_F(Editor, AFullListTakesNoMore) {
    Filters().arrItems.fill({"item", "i_x"});
    Edit([&](frmEditor& editor) {
        backend.QueueMessageResult(MessageResult::Ok);
        AddItem(editor, "one too many", "i_y");
        EXPECT_EQ(backend.messages.back().text, "The list is full.");
        EXPECT_EQ(editor.lstItem.Count(), 501);
        EXPECT_EQ(editor.Caption(), plain);
        editor.lstItem.UserSelects(500);
        editor.mnuRemoveItem.UserClicks();
        AddItem(editor, "last", "i_y");
    });
    EXPECT_EQ(Filters().arrItems[500], (ItemFilter{"last", "i_y"}));
}

TEST_F(Editor, AsksBeforeUnsavedWorkIsDiscardedAtTheEnd) {
    using enum MessageResult;
    const std::vector<std::pair<std::vector<MessageResult>, std::string>> cases = {
        {{No}, ""}, {{Cancel, No}, ""}, {{Yes}, ""}, {{Yes}, "list"}};
    for (const auto& [answers, file] : cases) {
        Filters().Clear();
        frmEditor editor(backend, shared, log, false);
        backend.QueueModal([&, &answers = answers, &file = file](Window& shown) {
            EXPECT_EQ(shown.ReasonAgainstSessionEnd(), "");
            AddItem(editor, "Torch", "i_torch");
            EXPECT_EQ(shown.ReasonAgainstSessionEnd(), "Do you want to save before exiting?");
            for (const MessageResult answer : answers) {
                backend.QueueMessageResult(answer);
                if (answer == Yes) backend.QueueFile(file);
                editor.mnuClose.UserChooses();
                EXPECT_EQ(editor.IsShown(), answer == Cancel);
                EXPECT_EQ(editor.Caption(), changed);
                EXPECT_EQ(Filters().arrItems[0].name.empty(), answer == Cancel);
            }
        });
        editor.ShowModal();
        EXPECT_EQ(backend.messages.back().title, "Si teh save?");
        EXPECT_EQ(system.files.contains("list.LST"), !file.empty());
    }
}

TEST_F(Editor, LoadsAndSavesListsAndKeepsItsMark) {
    system.files["list"] =
        Lines({"Torch", "i_torch", "</ITEMS>", "Town", "1", "3", "2", "4", "</RECTANGLES>"});
    Edit([&](frmEditor& editor) {
        AddItem(editor, "Old", "i_old");
        backend.QueueMessageResult(MessageResult::Cancel);
        editor.mnuLoad.UserChooses();
        EXPECT_EQ(backend.messages.back().title, "And teh munky says....");
        EXPECT_EQ(editor.Caption(), changed);
        backend.QueueFile("");
        editor.mnuSave.UserChooses();
        EXPECT_EQ(editor.Caption(), plain) << "the mark goes before the dialog comes";

        backend.QueueFile("list");
        editor.mnuLoad.UserChooses();
        EXPECT_EQ(editor.lstItem.Items(), Strings{"Torch"});
        EXPECT_EQ(editor.lstRectangle.Items(), Strings{"Town"});
        AddItem(editor, "Web", "i_web");
        backend.QueueFile("saved");
        editor.mnuSave.UserChooses();
        EXPECT_TRUE(backend.dialogs.back().overwritePrompt);
    });
    EXPECT_EQ(system.files["saved.LST"],
              Lines({"<ITEMS>", "Torch", "i_torch", "Web", "i_web", "</ITEMS>", "<RECTANGLES>", "Town", "1",
                     "3", "2", "4", "</RECTANGLES>"}));
    EXPECT_EQ(Names(Filters().arrItems), (Strings{"Torch", "Web"}));
    EXPECT_EQ(backend.alerts, 0);
}

TEST_F(Editor, AFailedLoadOrSaveIsInTheLogAndAsksForAttention) {
    Filters().arrItems[0] = {"Torch", "i_torch"};
    system.files["cut"] = Lines({"Web", "i_web"});
    Edit([&](frmEditor& editor) {
        editor.lstItem.UserSelects(0);
        backend.QueueFile("cut");
        editor.mnuLoad.UserChooses();
        EXPECT_EQ(log.entries, Report(FailureKind::InputPastEnd, loadModule));
        EXPECT_EQ(backend.alerts, 1);
        EXPECT_EQ(editor.lstItem.Count(), 0) << "although the working list holds what was read";
        EXPECT_TRUE(editor.mnuEditItem.Enabled());
        editor.mnuEditItem.UserClicks();
        editor.mnuRemoveItem.UserClicks();
        EXPECT_EQ(editor.txtItem.Text(), "i_torch");
        log.EmptyLog();
        backend.QueueFile("missing/list");
        editor.mnuSave.UserChooses();
        EXPECT_EQ(log.entries, Report(FailureKind::PathNotFound, saveModule));
        EXPECT_EQ(backend.alerts, 2);
    });
    EXPECT_EQ(Names(Filters().arrItems), Strings{"Web"});
}

TEST_F(Editor, ClosesTheGapsOfAListEditedByHand) {
    system.files["gaps"] = Lines({"", "i_lost", "A", "i_a", "", "", "B", "i_b", "</ITEMS>", "</RECTANGLES>"});
    Edit([&](frmEditor& editor) {
        backend.QueueFile("gaps");
        editor.mnuLoad.UserChooses();
        EXPECT_EQ(editor.lstItem.Items(), (Strings{"A", "B"}));
        editor.lstItem.UserSelects(1);
        EXPECT_EQ(editor.txtItem.Text(), "i_b");
    });
    EXPECT_EQ(Names(Filters().arrItems), (Strings{"A", "B"}));
    Filters().arrRectangles[3] = {"after a gap", 1, 1, 1, 1};
    Edit([](frmEditor& editor) { EXPECT_EQ(editor.Caption(), plain) << "nothing changed, nothing to ask"; });
    EXPECT_EQ(Filters().arrRectangles[0].name, "after a gap");
}

TEST_F(Editor, ShowsTheCodePageAndWritesTheSameBytes) {
    std::string everyByte;
    for (int byte = 1; byte < 256; ++byte) {
        if (byte != '\r') everyByte += static_cast<char>(byte);
    }
    const std::string content = Lines({"<ITEMS>", "caf\xe9 \x80", everyByte, "</ITEMS>", "<RECTANGLES>",
                                       "\x81", "1", "3", "2", "4", "</RECTANGLES>"});
    system.files["list"] = content;
    Edit([&](frmEditor& editor) {
        backend.QueueFile("list");
        editor.mnuLoad.UserChooses();
        EXPECT_EQ(editor.lstItem.Items(), Strings{"caf\xc3\xa9 \xe2\x82\xac"});
        editor.lstItem.UserSelects(0);
        editor.mnuEditItem.UserClicks();  // stored as shown
        backend.QueueFile("same");
        editor.mnuSave.UserChooses();
        EXPECT_EQ(system.files["same.LST"], content);
        AddItem(editor, "euro \xe2\x82\xac", "\xe2\x82\xac");
        EXPECT_EQ(log.entries, Strings{}) << "the page has the euro sign, but not the arrow";
        AddItem(editor, "Torch \xe2\x86\x92", "i_torch");
        editor.lstItem.UserSelects(0);
        editor.txtItem.UserTypes("\xe2\x86\x92");
        editor.mnuEditItem.UserClicks();
        EXPECT_EQ(editor.lstItem.Items().back(), "Torch ?") << "as it is stored";
        EXPECT_EQ(editor.txtItem.Text(), "\xe2\x86\x92") << "as it was typed";
    });
    EXPECT_EQ(Filters().arrItems[0].code, "?");
    EXPECT_EQ(Names(Filters().arrItems), (Strings{"caf\xe9 \x80", "euro \x80", "Torch ?"}));
    EXPECT_EQ(log.entries, Strings{"A character that the code page does not have was stored as \"?\"; an "
                                   "item code with it never matches."})
        << "told once";
}

}  // namespace
}  // namespace quillmere::test
