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
        for (Control* const control : Controls())
            control->OnClick = Note(control->Name());
        item.OnClick = Note("item");
        SetTakesFiles();
    }

    Frame frame{*this, "frame", "Choices", {120, 120, 3000, 900}};
    CheckBox check{frame, "check", "Check", {120, 240, 1200, 255}};
    OptionButton one{frame, "one", "One", {120, 540, 1200, 255}};
    OptionButton two{frame, "two", "Two", {1500, 540, 1200, 255}};
    OptionButton three{frame, "three", "Three", {1500, 240, 1200, 255}};
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
    std::string unfinished;

    std::function<void()> Note(const std::string& event) {
        return [this, event] { events.push_back(event); };
    }
    /// The events since the last call.
    Strings Events() { return std::exchange(events, {}); }

 private:
    std::string ReasonAgainstSessionEnd() const override { return unfinished; }
    void SessionEnds() override { events.emplace_back("session ends"); }
    void FilesDropped(const Strings& paths) override { events = paths; }
};

class BackendContract : public testing::Test {
 protected:
    BackendContract() { window.Show(); }
    ~BackendContract() override { window.Close(); }

    std::unique_ptr<BackendDriver> user = MakeBackendDriver();
    Backend& backend = user->Target();
    Sampler window{backend};
};

TEST_F(BackendContract, AListRaisesAnEventForEveryChoiceEvenOfTheSameEntry) {
    window.list.Add("first");
    window.list.Add("second");
    window.list.SetFocus();
    user->Press(window, Key::Down);
    EXPECT_EQ(window.list.Selected(), 0) << "nothing was selected, so the first one follows";
    user->ClickItem(window.list, 1);
    user->Press(window, Key::Up);
    user->ClickItem(window.list, 0);
    user->ClickItem(window.list, 0, Mouse::LeftWithControl);
    user->ClickItem(window.list, 1, Mouse::Right);
    EXPECT_EQ(window.list.Selected(), 0);
    EXPECT_EQ(window.Events(), Strings(5, "list"));
}

TEST_F(BackendContract, OnlyTheFirstLineOfAPastedTextIsTaken) {
    for (const std::string lineBreak : {"\r\n", "\n", "\r", "\u2028"}) {
        user->Type(window.text, "\xf0\x9f\x98\x80 typed \xc3\xa9");
        user->Paste(window.text, "i_torch," + lineBreak + "i_chair");
        EXPECT_EQ(window.text.Text(), "i_torch,\xf0\x9f\x98\x80 typed \xc3\xa9");
    }
}

TEST_F(BackendContract, AHeldKeyPressesAButtonOnce) {
    for (Control* const control : std::vector<Control*>{&window.button, &window.link}) {
        for (const Key key : {Key::Enter, Key::Space}) {
            control->SetFocus();
            user->Press(window, Held::Nothing, {key}, 2);
        }
    }
    user->Press(window, Held::Alt, {Key{'B'}}, 2);
    EXPECT_EQ(window.Events(), (Strings{"button", "button", "link", "link", "button"}));
    window.button.OnClick = [this] { window.other.SetFocus(); };
    window.button.SetFocus();
    user->Press(window, Held::Nothing, {Key::Enter}, 2);
    EXPECT_EQ(window.Events(), Strings{}) << "the next button has the focus, but not the key";
}

TEST_F(BackendContract, WhatTheProgramDoesIsShownAndRaisesNothing) {
    window.text.SetText("set");
    window.log.SetText("line one\r\n\r\nline two");
    window.check.SetChecked(true);
    window.one.Select();
    window.two.Select();
    for (const char* const entry : {"a", "b", "c"})
        window.list.Add(entry);
    window.list.Select(2);
    window.list.Remove(1);
    window.button.SetHint("gone soon");
    window.button.SetHint("<b>Reads:</b> C:\\R&D\r\nWrites: caf\xc3\xa9");
    window.text.SetFocus();
    backend.AskForAttention(window);
    user->Look();
    window.list.Clear();
    user->Look();
    EXPECT_EQ(window.Events(), Strings{});
}

TEST_F(BackendContract, ADisabledControlDoesNothing) {
    window.check.SetFocus();
    for (Control* const control : std::vector<Control*>{&window.check, &window.one, &window.button})
        control->SetEnabled(false);
    user->Look();
    EXPECT_TRUE(window.two.HasFocus()) << "the focus has moved on from the check box";
    user->Click(window.check);
    user->Click(window.one);
    user->Click(window.button);
    user->Press(window, Held::Alt, {Key{'B'}});
    EXPECT_FALSE(window.check.Checked() || window.one.Selected());
    window.button.SetEnabled(true);
    user->Click(window.button);
    EXPECT_EQ(window.Events(), Strings{"button"});
}

TEST_F(BackendContract, ArrowKeysSelectTheOtherOptionButtons) {
    user->Click(window.one);
    for (const auto& [key, selected] : {std::pair(Key::Down, &window.two),
                                        {Key::Right, &window.three},
                                        {Key::Up, &window.two},
                                        {Key::Left, &window.one}}) {
        user->Press(window, key);
        EXPECT_TRUE(selected->Selected() && selected->HasFocus()) << selected->Name();
    }
    window.two.SetEnabled(false);
    user->Press(window, Key::Down);
    EXPECT_TRUE(window.three.Selected() && window.three.HasFocus());
}

TEST_F(BackendContract, TheKeyboardReachesEveryControl) {
    for (const bool checked : {true, false}) {
        user->Press(window, Key::Space);
        EXPECT_EQ(window.check.Checked(), checked);
    }
    window.other.SetEnabled(false);
    window.two.Select();
    for (const Control* const stop :
         std::vector<Control*>{&window.two, &window.text, &window.log, &window.list, &window.button,
                               &window.link, &window.check}) {
        user->Press(window, Key::Tab);
        EXPECT_EQ(window.Focused(), stop);
    }
    user->Click(window.label);
    EXPECT_TRUE(window.check.HasFocus()) << "a label takes no focus";
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
}

TEST_F(BackendContract, AModalWindowBlocksTheOthersButNotTheirTimers) {
    constexpr double day = 86400;
    int ticks = 0;
    window.timer.OnTick = [&ticks] { ++ticks; };
    Sampler modal(backend);
    user->WhenModalOpens([&](Window& shown) {
        user->Click(window.button);
        user->Drop(window, {"file"});
        user->Choose(window.item);
        user->ClickCloseBox(window);
        user->Click(modal.button);
        const double start = backend.TimeOfDay();
        user->WaitUntil([&ticks, end = ticks + 5] { return ticks >= end; });
        EXPECT_GT(std::fmod(backend.TimeOfDay() + day - start, day), 0.25) << "one of them may have been due";
        user->ClickCloseBox(shown);
    });
    modal.ShowModal();
    EXPECT_EQ(modal.Events(), Strings{"button"});
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
}

TEST_F(BackendContract, AWindowMayHaveAReasonAgainstTheEndOfTheSession) {
    window.unfinished = "Not yet.";
    EXPECT_FALSE(user->EndSession(window));
    EXPECT_EQ(window.Events(), Strings{});
    window.unfinished.clear();
    EXPECT_TRUE(user->EndSession(window));
    EXPECT_EQ(window.Events(), Strings{"session ends"});
}

TEST_F(BackendContract, MessageBoxesReturnWhatWasPressed) {
    const Message question{"A title that is longer than the text and the three buttons",
                           "Line one\r\nline two", MessageIcon::Question, MessageButtons::YesNoCancel};
    for (const MessageResult result : {MessageResult::Yes, MessageResult::No, MessageResult::Cancel}) {
        user->AnswerMessage(result);
        EXPECT_EQ(backend.ShowMessage(question), result);
    }
}

TEST_F(BackendContract, FileDialogsReturnAPathOrNothing) {
    const TemporaryFolder folder;
    for (const char* const name : {"other.scp", "present.LST"})
        folder.Put(name, "x");
    FileDialog dialog{FileDialog::Purpose::Open, "Pick one", "List Files (*.LST)|*.LST|All Files (*.*)|*.*",
                      "*.LST", false};
    const auto pick = [&](const std::string& name, const std::optional<Strings>& listed = std::nullopt) {
        user->AnswerFileDialog(folder.Path(name), listed);
        return std::filesystem::path(backend.ShowFileDialog(dialog)).filename();
    };
    EXPECT_EQ(pick("present.LST"), "present.LST");
    // Now it opens in that folder, with the first pattern.
    EXPECT_EQ(pick("absent.LST", Strings{"present.LST"}), "absent.LST");
    dialog.filter = "All Files (*.*)|*.*";
    user->AnswerFileDialog("", Strings{"other.scp", "present.LST"});
    EXPECT_EQ(backend.ShowFileDialog(dialog), "");

    dialog.title = "A title longer than any line of the box";
    dialog.purpose = FileDialog::Purpose::Save;
    dialog.overwritePrompt = true;
    EXPECT_EQ(pick("new"), "new.LST");
    EXPECT_EQ(pick("dotted.txt"), "dotted.txt");
    user->AnswerFileDialog(folder.Path("present"));
    user->AnswerMessage(MessageResult::No);
    user->AnswerMessage(MessageResult::Yes);
    EXPECT_EQ(pick("present"), "present.LST");
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
