// What windows rely on in every backend. Built once for each backend with a screen.

#include "tests/support/backend_driver.h"
#include "tests/support/temporary_folder.h"
#include "toolkit/backend.h"

#include <gtest/gtest.h>

#include <cmath>
#include <filesystem>

namespace quillmere::test {
namespace {

using namespace std::chrono_literals;
using Strings = std::vector<std::string>;

/// A window with a control of each kind that can have the focus. It records what is raised.
class Sampler : public Window {
 public:
    explicit Sampler(Backend& backend) : Window(backend, "Sampler", "Sampler window", 4500, 4500) {
        check.OnClick = Note("check");
        list.OnClick = Note("list");
        button.OnClick = Note("button");
        other.OnClick = Note("other");
        link.OnClick = Note("link");
        item.OnClick = Note("item");
        SetTakesFiles();
    }

    Frame frame{*this, "frame", "Choices", {120, 120, 3000, 900}};
    CheckBox check{frame, "check", "Check", {120, 240, 1200, 255}};
    OptionButton one{frame, "one", "One", {120, 540, 1200, 255}};
    OptionButton two{frame, "two", "Two", {1500, 540, 1200, 255}};
    Label label{*this, "label", "Label", {120, 1080, 1200, 255}};
    TextBox text{*this, "text", "Text", {1500, 1080, 1500, 285}};
    TextBox log{*this, "log", "Log", {120, 1440, 3000, 600}, TextBox::Style::ReadOnlyLines};
    ListBox list{*this, "list", "List", {120, 2100, 1500, 900}};
    PushButton button{*this, "button", "&Button", {1800, 2100, 1200, 375}};
    PushButton other{*this, "other", "&Menu rival", {1800, 2600, 1200, 375}};
    LinkLabel link{*this, "link", "https://quillmere.example/", {120, 3100, 3000, 255}};
    Line line{*this, "line", {3200, 0, 0, 4500}};
    Timer timer{*this, 100ms};
    Menu menu{*this, "menu", "&Menu"};
    MenuItem item{menu, "item", "&Item"};
    MenuItem separator{menu, "separator", "-"};

    Strings events;
    bool mayClose = true;
    bool leavesKeys = false;
    std::string unfinished;

    std::function<void()> Note(const std::string& event) {
        return [this, event] { events.push_back(event); };
    }
    /// The events since the last call.
    Strings Events() { return std::exchange(events, {}); }

 private:
    bool Unload() override {
        events.emplace_back(mayClose ? "unload" : "unload refused");
        return mayClose;
    }
    bool TakesAccessKey(const Control& /*control*/) const override { return !leavesKeys; }
    std::string ReasonAgainstSessionEnd() const override { return unfinished; }
    void SessionEnds() override { events.emplace_back("session ends"); }
    void Deactivate() override { events.emplace_back("deactivate"); }
    void FilesDropped(const Strings& paths) override { events = paths; }
};

class Reordered : public Sampler {
 public:
    explicit Reordered(Backend& backend) : Sampler(backend) {
        SetTabOrder({&log, &check, &one, &two, &button, &other, &list, &text, &link});
    }
};

class BackendContract : public testing::Test {
 protected:
    BackendContract() { window.Show(); }
    ~BackendContract() override {
        window.mayClose = true;
        window.Close();
    }
    /// The names of the controls that get the focus from seven presses of Tab.
    Strings TabStops(Sampler& shown) {
        Strings stops;
        for (int i = 0; i < 7; ++i) {
            user->Press(shown, Key::Tab);
            stops.push_back(shown.Focused()->Name());
        }
        return stops;
    }

    std::unique_ptr<BackendDriver> user = MakeBackendDriver();
    Backend& backend = user->Target();
    Sampler window{backend};
};

TEST_F(BackendContract, WhatTheUserDoesChangesTheModelAndRaisesEvents) {
    window.list.Add("first");
    window.list.Add("second");
    user->Click(window.check);
    EXPECT_TRUE(window.check.Checked());
    user->Click(window.check);
    EXPECT_FALSE(window.check.Checked());
    user->Click(window.one);
    user->Click(window.two);
    EXPECT_FALSE(window.one.Selected());
    EXPECT_TRUE(window.two.Selected());
    user->Type(window.text, "\xf0\x9f\x98\x80 typed \xc3\xa9");
    EXPECT_EQ(window.text.Text(), "\xf0\x9f\x98\x80 typed \xc3\xa9");
    user->ClickItem(window.list, 1);
    EXPECT_EQ(window.list.Selected(), 1);
    user->Press(window, Key::Up);
    EXPECT_EQ(window.list.Selected(), 0);
    user->Click(window.button);
    user->Click(window.link);
    user->Choose(window.item);
    EXPECT_EQ(window.Events(), (Strings{"check", "check", "list", "list", "button", "link", "item"}));
}

TEST_F(BackendContract, AListRaisesAnEventForEveryChoiceEvenOfTheSameEntry) {
    window.list.Add("first");
    window.list.Add("second");
    window.list.SetFocus();
    user->Press(window, Key::Down);
    EXPECT_EQ(window.list.Selected(), 0) << "nothing was selected, so the first one follows";
    user->ClickItem(window.list, 0);
    user->ClickItem(window.list, 0, Mouse::LeftWithControl);
    user->ClickItem(window.list, 1, Mouse::Right);
    EXPECT_EQ(window.list.Selected(), 0);
    EXPECT_EQ(window.Events(), (Strings{"list", "list", "list"}));
}

TEST_F(BackendContract, OnlyTheFirstLineOfAPastedTextIsTaken) {
    for (const std::string lineBreak : {"\r\n", "\n", "\r", "\u2028"}) {
        user->Type(window.text, "end");
        user->Paste(window.text, "i_torch," + lineBreak + "i_chair");
        EXPECT_EQ(window.text.Text(), "i_torch,end");
    }
}

TEST_F(BackendContract, AHeldKeyPressesAButtonOnce) {
    for (Control* const control : std::vector<Control*>{&window.button, &window.link}) {
        for (const Key key : {Key::Enter, Key::Space}) {
            control->SetFocus();
            user->Press(window, Held::Nothing, {key}, 2);
        }
    }
    EXPECT_EQ(window.Events(), (Strings{"button", "button", "link", "link"}));
    window.button.OnClick = [this] { window.other.SetFocus(); };
    window.button.SetFocus();
    user->Press(window, Held::Nothing, {Key::Enter}, 2);
    EXPECT_EQ(window.Events(), Strings{}) << "the next button has the focus, but not the key";
}

TEST_F(BackendContract, WhatTheProgramDoesIsShownAndRaisesNothing) {
    window.SetCaption("New title*");
    window.label.SetCaption("New label");
    window.text.SetText("set");
    window.log.SetText("line one\r\n\r\nline two");
    window.check.SetChecked(true);
    window.one.Select();
    window.two.Select();
    window.item.SetChecked(true);
    for (const char* const entry : {"a", "b", "c"})
        window.list.Add(entry);
    window.list.Select(2);
    window.list.Replace(0, "A");
    window.list.Remove(1);
    window.button.SetHint("gone soon");
    window.button.SetHint("<b>Reads:</b> C:\\R&D\r\nWrites: caf\xc3\xa9");
    window.text.SetFocus();
    backend.AskForAttention(window);
    user->Look();
    EXPECT_EQ(window.list.Items(), (Strings{"A", "c"}));
    EXPECT_EQ(window.list.Selected(), ListBox::none);
    window.list.Clear();
    user->Look();
    EXPECT_EQ(window.Events(), Strings{});
}

TEST_F(BackendContract, ADisabledControlDoesNothing) {
    window.list.Add("entry");
    window.check.SetFocus();
    for (Control* const control :
         std::vector<Control*>{&window.check, &window.one, &window.text, &window.list, &window.button})
        control->SetEnabled(false);
    user->Look();
    EXPECT_TRUE(window.two.HasFocus()) << "the focus has moved on from the check box";
    user->Click(window.check);
    user->Click(window.one);
    user->Type(window.text, "typed");
    user->ClickItem(window.list, 0);
    user->Click(window.button);
    user->Press(window, Held::Alt, {Key{'B'}});
    EXPECT_FALSE(window.check.Checked() || window.one.Selected());
    EXPECT_EQ(window.text.Text(), "");
    EXPECT_EQ(window.list.Selected(), ListBox::none);
    EXPECT_EQ(window.Events(), Strings{});
    window.button.SetEnabled(true);
    user->Click(window.button);
    EXPECT_EQ(window.Events(), Strings{"button"});
}

TEST_F(BackendContract, ArrowKeysSelectTheOtherOptionButtons) {
    user->Click(window.one);
    for (const auto& [key, selected] : {std::pair(Key::Down, &window.two),
                                        {Key::Right, &window.one},
                                        {Key::Up, &window.two},
                                        {Key::Left, &window.one}}) {
        user->Press(window, key);
        EXPECT_TRUE(selected->Selected() && selected->HasFocus()) << static_cast<int>(key);
    }
    window.two.SetEnabled(false);
    user->Press(window, Key::Down);
    EXPECT_TRUE(window.one.Selected() && window.one.HasFocus());
}

TEST_F(BackendContract, TabGoesThroughTheFocusOrder) {
    EXPECT_TRUE(window.check.HasFocus());
    window.other.SetEnabled(false);
    window.two.Select();
    EXPECT_EQ(TabStops(window), (Strings{"two", "text", "log", "list", "button", "link", "check"}));
    user->Click(window.label);
    EXPECT_TRUE(window.check.HasFocus()) << "a label takes no focus";
    user->Press(window, Held::Shift, {Key::Tab});
    EXPECT_TRUE(window.link.HasFocus());
    user->Press(window, Key::Enter);
    window.button.SetFocus();
    user->Press(window, Key::Space);
    user->Press(window, Key::Enter);
    EXPECT_EQ(window.Events(), (Strings{"link", "button", "button"}));
}

TEST_F(BackendContract, AWindowMaySetItsOwnFocusOrder) {
    Reordered reordered(backend);
    reordered.Show();
    EXPECT_TRUE(reordered.log.HasFocus());
    EXPECT_EQ(TabStops(reordered), (Strings{"check", "one", "two", "button", "other", "list", "text"}));
    user->Press(reordered, Held::Alt, {Key{'B'}});
    EXPECT_EQ(reordered.Events(), Strings{"button"});
    EXPECT_TRUE(reordered.button.HasFocus());
    reordered.Close();
}

TEST_F(BackendContract, AccessKeysPressControlsBeforeTheyOpenMenus) {
    user->Press(window, Held::Alt, {Key{'B'}});
    EXPECT_EQ(window.Events(), Strings{"button"});
    EXPECT_TRUE(window.button.HasFocus());
    user->Press(window, Held::Alt, {Key{'M'}});
    EXPECT_EQ(window.Events(), Strings{"other"});
    window.other.SetEnabled(false);
    user->Press(window, Held::Alt, {Key{'M'}, Key{'I'}});
    EXPECT_EQ(window.Events(), Strings{"item"}) << "a disabled control leaves the key to the menu";
    window.other.SetEnabled(true);
    window.leavesKeys = true;
    user->Press(window, Held::Alt, {Key{'M'}, Key{'I'}});
    EXPECT_EQ(window.Events(), Strings{"item"}) << "and so does a control to which it does not lead now";
    user->Press(window, Held::Nothing, {Key::F10, Key::Down, Key::Enter});
    EXPECT_EQ(window.Events(), Strings{"item"});
    EXPECT_FALSE(window.HasAccessKey('z'));
}

TEST_F(BackendContract, AModalWindowBlocksTheOthersUntilItCloses) {
    Sampler modal(backend);
    user->WhenModalOpens([&](Window& shown) {
        EXPECT_EQ(&shown, &modal);
        user->Click(window.button);
        user->Drop(window, {"file"});
        user->Choose(window.item);
        user->ClickCloseBox(window);
        user->Click(modal.button);
        modal.mayClose = false;
        user->ClickCloseBox(modal);
        EXPECT_TRUE(modal.IsShown());
        modal.mayClose = true;
        user->ClickCloseBox(modal);
    });
    modal.ShowModal();
    EXPECT_FALSE(modal.IsShown());
    EXPECT_EQ(modal.Events(), (Strings{"button", "unload refused", "unload"}));
    EXPECT_EQ(window.Events(), Strings{});
    user->Click(window.button);
    EXPECT_EQ(window.Events(), Strings{"button"});
}

TEST_F(BackendContract, AWindowThatTakesFilesLearnsWhichAreDroppedOnIt) {
    const TemporaryFolder folder;
    const bool anyBytes = std::filesystem::path::preferred_separator == '/';  // in names of files
    const Strings paths = {folder.Path(anyBytes ? "caf\xe9%41 & <b>" : "caf\xc3\xa9%41 & <b>"),
                           folder.Path("list.LST")};
    user->Drop(window, paths);
    EXPECT_EQ(window.Events(), paths);
    Window other(backend, "other", "Takes none", 900, 900);
    other.Show();
    user->Drop(other, paths);
    other.Close();
}

TEST_F(BackendContract, AWindowLearnsThatItIsNoLongerActive) {
    user->ActivateAnother();
    EXPECT_EQ(window.Events(), Strings{"deactivate"});
}

TEST_F(BackendContract, AWindowMayHaveAReasonAgainstTheEndOfTheSession) {
    window.unfinished = "Not yet.";
    EXPECT_FALSE(user->EndSession(window));
    EXPECT_EQ(window.Events(), Strings{});
    window.unfinished.clear();
    EXPECT_TRUE(user->EndSession(window));
    EXPECT_EQ(window.Events(), Strings{"session ends"});
}

TEST_F(BackendContract, MessageBoxesShowWhatTheyAreGivenAndReturnWhatWasPressed) {
    for (const MessageResult result : {MessageResult::Yes, MessageResult::No, MessageResult::Cancel}) {
        user->AnswerMessage(result);
        EXPECT_EQ(backend.ShowMessage({"And teh munky says....", "Do you?", MessageIcon::Question,
                                       MessageButtons::YesNoCancel}),
                  result);
    }
    user->AnswerMessage(MessageResult::Ok);
    EXPECT_EQ(
        backend.ShowMessage({"Title", "Line one\r\nline two", MessageIcon::Critical, MessageButtons::Ok}),
        MessageResult::Ok);
}

TEST_F(BackendContract, FileDialogsReturnAPathOrNothing) {
    const TemporaryFolder folder;
    for (const char* const name : {"other.scp", "present.LST"})
        folder.Put(name, "x");
    FileDialog dialog{FileDialog::Purpose::Open, "Pick one", "List Files (*.LST)|*.LST|All Files (*.*)|*.*",
                      "*.LST", false};
    user->AnswerFileDialog(folder.Path("present.LST"));
    EXPECT_EQ(backend.ShowFileDialog(dialog), folder.Path("present.LST"));
    // Now it opens in that folder, with the first pattern.
    user->AnswerFileDialog(folder.Path("absent.LST"), Strings{"present.LST"});
    EXPECT_EQ(backend.ShowFileDialog(dialog), folder.Path("absent.LST"));
    dialog.filter = "All Files (*.*)|*.*";
    user->AnswerFileDialog("", Strings{"other.scp", "present.LST"});
    EXPECT_EQ(backend.ShowFileDialog(dialog), "");

    dialog.title = "A title longer than any line of the box";
    dialog.purpose = FileDialog::Purpose::Save;
    dialog.overwritePrompt = true;
    user->AnswerFileDialog(folder.Path("new"));
    EXPECT_EQ(backend.ShowFileDialog(dialog), folder.Path("new.LST"));
    user->AnswerFileDialog(folder.Path("dotted.txt"));
    EXPECT_EQ(backend.ShowFileDialog(dialog), folder.Path("dotted.txt"));
    for (const MessageResult mayReplace : {MessageResult::No, MessageResult::Yes}) {
        user->AnswerFileDialog(folder.Path("present"));
        user->AnswerMessage(mayReplace);
    }
    EXPECT_EQ(backend.ShowFileDialog(dialog), folder.Path("present.LST"));
}

TEST_F(BackendContract, TimersTickAlsoWhileAModalWindowIsOpen) {
    int ticks = 0;
    window.timer.OnTick = [&ticks] { ++ticks; };
    const auto fiveTicks = [&] {
        constexpr double day = 86400;
        const double start = backend.TimeOfDay();
        user->WaitUntil([&ticks, end = ticks + 5] { return ticks >= end; });
        EXPECT_GT(std::fmod(backend.TimeOfDay() + day - start, day), 0.25) << "one of them may have been due";
    };
    fiveTicks();
    Sampler modal(backend);
    user->WhenModalOpens([&](Window& shown) {
        fiveTicks();
        shown.Close();
    });
    modal.ShowModal();
}

TEST_F(BackendContract, AWindowMayCloseWhileItsOwnHandlerRuns) {
    window.button.OnClick = [&] {
        user->WhenYielding([&] { user->ClickCloseBox(window); });
        backend.Yield();
        EXPECT_FALSE(window.IsShown());
        window.label.SetCaption("still there");
        window.button.SetEnabled(false);
    };
    user->Click(window.button);
    user->Look();
    EXPECT_EQ(window.label.Caption(), "still there");
}

}  // namespace
}  // namespace quillmere::test
