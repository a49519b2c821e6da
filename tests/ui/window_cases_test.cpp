// The many cases of the main window and of the list editor, without a screen.

#include "tests/support/memory_file_system.h"
#include "tests/support/recording_log.h"
#include "tests/support/text.h"
#include "toolkit/headless/headless_backend.h"
#include "ui/frm_editor.h"
#include "ui/frm_main.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <tuple>

namespace quillmere::test {
namespace {

using Strings = std::vector<std::string>;
using enum MessageResult;

constexpr const char* plain = "Rectangle and Item List Editor";
constexpr const char* changed = "Rectangle and Item List Editor*";

class WindowCases : public testing::Test {
 protected:
    WindowCases() {
        system.files["in"] = Lines(
            {"[A one]", "P=1,1,0,2", "", "[A two]", "P=2,2,0,2", "", "[A three]", "P=3,3,0,2", "", "[EOF]"});
        system.files["drop.LsT"] = Lines({"Two", "two", "</ITEMS>", "</RECTANGLES>"});
        window.Show();
    }
    ~WindowCases() override {
        EXPECT_TRUE(backend.NothingQueued());
        window.Close();
    }
    void ChooseWithFile(MenuItem& item, const std::string& file) {
        backend.QueueFile(file);
        item.UserChooses();
    }
    std::string Log() const { return window.txtInfo.Text(); }
    /// Opens the editor, calls `act`, and closes it, with No as the answer to the question about unsaved
    /// work. The editor has a log of its own.
    void Edit(const std::function<void(frmEditor&)>& act) {
        frmEditor editor(backend, shared, log, false);
        backend.QueueModal([&](Window&) {
            act(editor);
            if (!editor.IsShown()) return;
            if (editor.Caption() == changed) backend.QueueMessageResult(No);
            editor.UserCloses();
        });
        editor.ShowModal();
    }
    static void AddItem(frmEditor& editor, const char* name, const char* code) {
        editor.txtItemName.UserTypes(name);
        editor.txtItem.UserTypes(code);
        editor.mnuAddItem.UserClicks();
    }
    FilterSet& Filters() { return shared.filterSet; }

    MemoryFileSystem system;
    modGlobal shared{system};
    HeadlessBackend backend;
    frmMain window{backend, shared, {"program", "other"}};
    RecordingLog log;
};

TEST_F(WindowCases, EveryFilterIsOffAtFirstAndSwitchingItOnChoosesItsFirstOption) {
    ChooseWithFile(window.mnuLoad, "in");
    ChooseWithFile(window.mnuSave, "out.scp");
    Filters().arrItems[0] = {"Two", "two"};
    Filters().arrRectangles[0] = {"Two", 2, 2, 2, 2};
    window.txtFacet.SetText("2");
    const auto headersLeft = [this] {
        window.cmdRun.UserClicks();
        return std::ranges::count(system.files["out.scp"], '[');
    };
    for (const auto& [filter, first, second] :
         {std::tie(window.chkRectangles, window.optRectangleIn, window.optRectangleNotIn),
          std::tie(window.chkItems, window.optItemIn, window.optItemNotIn),
          std::tie(window.chkFacet, window.optFacetIn, window.optFacetNotIn)}) {
        EXPECT_FALSE(first.Enabled() || first.Selected() || second.Enabled() || second.Selected());
        filter.UserClicks();
        EXPECT_TRUE(first.Selected() && first.Enabled() && second.Enabled());
        EXPECT_EQ(headersLeft(), 3) << "the filters so far select one block";
        second.UserClicks();
        EXPECT_EQ(headersLeft(), &filter == &window.chkRectangles ? 2 : 4);
        filter.UserClicks();
        EXPECT_TRUE(second.Selected()) << "switching off leaves the choice";
        EXPECT_FALSE(first.Enabled() || second.Enabled() || window.txtFacet.Enabled());
        filter.UserClicks();
        EXPECT_TRUE(first.Selected());
    }
}

TEST_F(WindowCases, DroppedFilesAreUsedAndACancelledDialogClearsAFileButNoList) {
    window.UserDropsFiles({"in", "drop.LsT", "lst"});
    EXPECT_EQ(window.cmdRun.Hint(), "Reads: lst\r\nWrites: nothing chosen yet");
    ChooseWithFile(window.mnuSave, "cleaned");
    for (MenuItem* const item : {&window.mnuLoad, &window.mnuSave, &window.mnuLoadList})
        ChooseWithFile(*item, "");
    EXPECT_EQ(window.cmdRun.Hint(), "Reads: nothing chosen yet\r\nWrites: nothing chosen yet");
    EXPECT_EQ(Filters().arrItems[0].name, "Two");
    backend.QueueMessageResult(Ok);
    window.mnuRun.UserChooses();
    EXPECT_EQ(backend.messages.back().title, "Not Enuf Info");
    EXPECT_EQ(Log(),
              "File to save: cleaned.SCP\r\n\r\nFile to load: lst\r\n\r\nFile to load: in\r\n\r\n"
              "No options found, using defaults.\r\n\r\n")
        << "this refusal comes before the log is emptied";
    EXPECT_TRUE(window.cmdHalt.Enabled());
    ChooseWithFile(window.mnuLoadList, "absent");
    EXPECT_TRUE(Log().starts_with("Error in list loading module.  Pffft....\r\n\r\nOops number: 53"));
    EXPECT_EQ(window.cmdEditor.Hint(), "Rectangles loaded: 0\r\nItems loaded: 0");
}

TEST_F(WindowCases, DuringAPassAListCanBeLoadedAndEveryEndKeepsTheBlocksWrittenSoFar) {
    ChooseWithFile(window.mnuLoad, "in");
    ChooseWithFile(window.mnuSave, "out.scp");
    window.chkItems.UserClicks();
    const std::function<void()> ends[] = {[&] { window.cmdExit.UserClicks(); }, [&] { window.UserCloses(); },
                                          [&] { static_cast<Window&>(window).SessionEnds(); }};
    for (const auto& end : ends) {
        Filters().arrItems[0] = {"One", "one"};
        backend.QueueEvent([] {});
        backend.QueueEvent([&] { ChooseWithFile(window.mnuLoadList, "drop.LsT"); });
        backend.QueueEvent([] {});
        backend.QueueEvent(end);
        EXPECT_THROW(window.cmdRun.UserClicks(), ProgramEnded);
        EXPECT_EQ(system.files["out.scp"], Lines({"", "[A three]", "P=3,3,0,2", ""}));
        EXPECT_EQ(system.openFiles, 0);
        shared.blnIdle = true;  // as when the program starts again
    }
}

TEST_F(WindowCases, TranslucencyIsSwitchedKeptAndLoaded) {
    EmulatedSystemCalls& calls = backend.Calls();
    const std::string optionsFile = (std::filesystem::path("program") / "DSCPOPTS.INI").string();
    calls.SetWindowLongA(window.Handle(), GWL_EXSTYLE_INDEX, 1);  // another style, which is kept
    calls.majorVersion = 5;
    ChooseWithFile(window.mnuLoad, "in");
    for (const bool on : {true, false}) {
        window.mnuTranslucent.UserChooses();
        EXPECT_EQ(calls.GetWindowLongA(window.Handle(), GWL_EXSTYLE_INDEX), on ? WS_EX_LAYERED_STYLE | 1 : 1);
        EXPECT_EQ(system.files[optionsFile], Lines({on ? "True" : "False", "in", ""}));
    }
    window.Close();
    system.files[optionsFile] = Lines({"True", "other", "out.scp"});
    window.Show();
    EXPECT_NEAR(calls.Opacity(window.Handle()), 200 / 255.0, 0.001);
    EXPECT_EQ(window.cmdRun.Hint(), "Reads: other\r\nWrites: out.scp");
    backend.QueueModal([&](Window& editor) {
        EXPECT_NEAR(calls.Opacity(editor.Handle()), 200 / 255.0, 0.001);
        editor.UserCloses();
    });
    window.cmdEditor.UserClicks();
    for (const std::uint32_t version : {4U, 0U}) {  // an old system; 0: the query fails
        calls.majorVersion = version;
        backend.QueueMessageResult(Ok);
        window.mnuTranslucent.UserChooses();
        EXPECT_TRUE(window.mnuTranslucent.Checked());
    }
    EXPECT_EQ(backend.messages.back(),
              (Message{"Incorrect Windows Version", "Requires Windows 2000 or later.", MessageIcon::Critical,
                       MessageButtons::Ok}));
}

TEST_F(WindowCases, TheEditorRefusesEmptyFieldsAndOneEntryTooMany) {
    Filters().arrItems.fill({"item", "i_x"});
    Edit([&](frmEditor& editor) {
        backend.QueueMessageResult(Ok);
        editor.txtRectangleName.UserTypes("Town");
        editor.txtX2.UserTypes("3");
        editor.mnuAddRect.UserClicks();
        EXPECT_TRUE(editor.txtX1.HasFocus()) << "the first one that is empty";
        EXPECT_EQ(backend.messages.back().text, "You didn't fill out all the fields");
        backend.QueueMessageResult(Ok);
        AddItem(editor, "one too many", "i_y");
        EXPECT_EQ(backend.messages.back().text, "The list is full.");
        EXPECT_EQ(editor.txtItemName.Text(), "one too many");
        EXPECT_EQ(editor.Caption(), plain);
        editor.lstItem.UserSelects(500);
        editor.mnuRemoveItem.UserClicks();
        AddItem(editor, "last", "i_y");
    });
    EXPECT_EQ(Filters().arrItems[500], (ItemFilter{"last", "i_y"}));
}

TEST_F(WindowCases, TheEditorAsksBeforeUnsavedWorkIsLost) {
    for (const bool closing : {true, false}) {
        for (const auto& [answer, file] : std::vector<std::pair<MessageResult, std::string>>{
                 {Cancel, ""}, {No, ""}, {Yes, ""}, {Yes, "saved"}}) {
            const std::string kept = closing || answer == Cancel ? "Torch" : "Two";
            system.files.erase("saved.LST");
            Filters().Clear();
            Edit([&, &answer = answer, &file = file](frmEditor& editor) {
                const Window& shown = editor;
                EXPECT_EQ(shown.ReasonAgainstSessionEnd(), "");
                AddItem(editor, "Torch", "i_torch");
                EXPECT_EQ(shown.ReasonAgainstSessionEnd(), "Do you want to save before exiting?");
                backend.QueueMessageResult(answer);
                if (answer == Yes) backend.QueueFile(file);
                if (!closing && answer != Cancel) backend.QueueFile("drop.LsT");
                (closing ? editor.mnuClose : editor.mnuLoad).UserChooses();
                const Message& question = backend.messages.back();
                EXPECT_EQ(question.title + question.text,
                          closing ? "Si teh save?Do you want to save before exiting?"
                                  : "And teh munky says....Do you want to save your current list?");
                EXPECT_EQ(editor.IsShown(), !closing || answer == Cancel);
                EXPECT_EQ(editor.Caption(), kept == "Torch" ? changed : plain);
                EXPECT_EQ(editor.lstItem.Items(), Strings{kept});
                EXPECT_EQ(system.files.contains("saved.LST"), !file.empty());
            });
            EXPECT_EQ(Filters().arrItems[0].name, kept);
        }
    }
}

TEST_F(WindowCases, AFailedLoadOrSaveInTheEditorIsInTheLogAndAsksForAttention) {
    Filters().arrItems[0] = {"Torch", "i_torch"};
    system.files["cut"] = Lines({"Web", "i_web"});
    Edit([&](frmEditor& editor) {
        editor.lstItem.UserSelects(0);
        ChooseWithFile(editor.mnuLoad, "cut");
        EXPECT_EQ(log.entries, Report(FailureKind::InputPastEnd, loadModule));
        EXPECT_EQ(editor.lstItem.Count(), 0) << "although the working list holds what was read";
        editor.mnuEditItem.UserClicks();
        editor.mnuRemoveItem.UserClicks();
        EXPECT_EQ(editor.txtItem.Text(), "i_torch");
        log.EmptyLog();
        ChooseWithFile(editor.mnuSave, "missing/list");
        EXPECT_EQ(log.entries, Report(FailureKind::PathNotFound, saveModule));
        AddItem(editor, "Chair", "i_chair");
        ChooseWithFile(editor.mnuSave, "");
        EXPECT_EQ(editor.Caption(), plain) << "the mark goes before the dialog comes";
        EXPECT_EQ(backend.alerts, 2);
    });
    EXPECT_EQ(Filters().arrItems[0].name, "Chair") << "in the place of what was read";
}

TEST_F(WindowCases, TheEditorShowsAListWithGapsAndAnyBytesAndSavesItWithoutTheGaps) {
    std::string everyByte;
    for (int byte = 1; byte < 256; ++byte) {
        if (byte != '\r') everyByte += static_cast<char>(byte);
    }
    const std::string first = Lines({"<ITEMS>", "caf\xe9 \x80", "i_cafe"});
    const std::string middle = Lines({"B", everyByte, "</ITEMS>", "<RECTANGLES>"});
    const std::string last = Lines({"\x81", "1", "3", "2", "4", "</RECTANGLES>"});
    system.files["list"] =
        first + Lines({"", "i_lost", "", ""}) + middle + Lines({"", "1", "1", "1", "1"}) + last;
    Edit([&](frmEditor& editor) {
        ChooseWithFile(editor.mnuLoad, "list");
        EXPECT_EQ(editor.lstItem.Items(), (Strings{"café €", "B"}));
        EXPECT_EQ(editor.lstRectangle.Items(), Strings{"\xc2\x81"});
        editor.lstItem.UserSelects(1);
        editor.mnuEditItem.UserClicks();  // stored as shown
        ChooseWithFile(editor.mnuSave, "saved");
    });
    EXPECT_EQ(system.files["saved.LST"], first + middle + last);
    EXPECT_EQ(Filters().arrItems[1], (ItemFilter{"B", everyByte}));
    EXPECT_EQ(backend.alerts, 0);
}

TEST_F(WindowCases, ACharacterThatTheCodePageLacksIsStoredAsAQuestionMark) {
    const std::string warning =
        "A character that the code page does not have was stored as \"?\"; an item code with it never "
        "matches.";
    Edit([&](frmEditor& editor) {
        AddItem(editor, "euro €", "€");
        EXPECT_EQ(log.entries, Strings{}) << "the page has the euro sign, but not the arrow";
        AddItem(editor, "Torch →", "i_torch");
        AddItem(editor, "→", "i_web");
        EXPECT_EQ(log.entries, Strings{warning}) << "once for each opening of the window";
    });
    Edit([&](frmEditor& editor) {
        editor.lstItem.UserSelects(0);
        editor.txtItem.UserTypes("→");
        editor.mnuEditItem.UserClicks();
        EXPECT_EQ(editor.lstItem.Items(), (Strings{"euro €", "Torch ?", "?"})) << "as they are stored";
        EXPECT_EQ(editor.txtItem.Text(), "→") << "as it was typed";
    });
    EXPECT_EQ(log.entries, Strings(2, warning));
    EXPECT_EQ(Filters().arrItems[0], (ItemFilter{"euro \x80", "?"}));
}

}  // namespace
}  // namespace quillmere::test
