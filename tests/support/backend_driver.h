#pragma once

#include "toolkit/backend.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <deque>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <thread>
#include <tuple>
#include <utility>
#include <vector>

namespace quillmere::test {

/// A letter is `Key{'A'}` to `Key{'Z'}`.
enum class Key { Tab, Enter, Escape, Space, Home, Left, Up, Right, Down, Delete, F10 };
enum class Held { Nothing, Shift, Control, Alt };
enum class Mouse { Left, LeftWithControl, Right };

/// What a control holds, and what the screen shows of it. The two are compared.
struct Appearance {
    std::string name{};  ///< what screen readers call the control
    std::string text{};  ///< its caption, or the text of a text box
    std::string hint{};
    bool enabled = true;
    bool focused = false;
    bool checked = false;
    std::vector<std::string> items{};
    int selected = ListBox::none;
    bool takesFiles = false;

    /// Name, text and hint, and then the rest in the order in which it is declared.
    std::string AsLine() const {
        const auto state = std::tuple(enabled, focused, checked, items, selected, takesFiles);
        std::string line = name + ": " + text + '|' + hint + '|' + testing::PrintToString(state) + '\n';
        std::erase(line, '\r');
        return line;
    }
};

/// Acts as the user of one backend: clicks and types on what is shown. The same tests use it to run on every
/// backend with a screen. After each event it compares what the screen shows with what the controls hold, so
/// tests need only ask the controls. Message boxes and file dialogs get the answers that were queued for
/// them. One without an answer fails the test, and so does an answer that is left over.
class BackendDriver {
 public:
    virtual ~BackendDriver() {
        if (!results_.empty() || !files_.empty() || !modalActs_.empty() || !yieldActs_.empty())
            ADD_FAILURE() << "an answer or event was queued that nobody asked for";
    }
    virtual Backend& Target() = 0;

    // Events. Each function returns when the program has handled the event.
    void Click(Control& control) { ClickItem(control, ListBox::none); }
    /// Clicks a row of a list, or the control itself where `row` is none.
    void ClickItem(Control& control, int row, Mouse how = Mouse::Left) {
        if (Activate(control.OwnerWindow())) ClickIn(control, row, how);
        Look();
    }
    /// Presses keys in the active window, one after the other: the first while `held` is held down. Each key
    /// repeats itself that often before it is released.
    void Press(Window& window, Held held, const std::vector<Key>& keys, int repeats = 0) {
        if (!Activate(window)) return;
        for (const Key key : keys)
            Strike(window, std::exchange(held, Held::Nothing), key, repeats);
        Look();
    }
    void Press(Window& window, Key key) { Press(window, Held::Nothing, {key}); }
    /// Replaces the text of a single-line box from the keyboard, after a click into it.
    void Type(TextBox& box, const std::string& text) {
        Click(box);
        if (!box.HasFocus()) return;
        Press(box.OwnerWindow(), Held::Control, {Key{'A'}});
        Press(box.OwnerWindow(), Key::Delete);
        Enter(box.OwnerWindow(), text);
        Look();
    }
    /// Pastes in front of the text of a single-line box, after a click into it.
    void Paste(TextBox& box, const std::string& text) {
        CopyFromElsewhere(text);
        Click(box);
        Press(box.OwnerWindow(), Key::Home);
        Press(box.OwnerWindow(), Held::Control, {Key{'V'}});
    }
    /// Opens the menu with the keyboard and chooses the item.
    void Choose(MenuItem& item) {
        const Menu& menu = item.Parent();
        std::vector<Key> keys(PlaceIn(menu.OwnerWindow().Menus(), menu), Key::Right);
        keys.insert(keys.begin(), Key::F10);
        keys.insert(keys.end(), {Key::Down, Key::Home});  // open, and at the first item
        for (std::size_t i = 0; i < PlaceIn(menu.Items(), item); ++i)
            if (!menu.Items()[i]->IsSeparator()) keys.push_back(Key::Down);
        keys.push_back(Key::Enter);
        Press(menu.OwnerWindow(), Held::Nothing, keys);
    }
    virtual void ClickCloseBox(Window& window) = 0;
    /// Drops files on the window from another program.
    virtual void Drop(Window& window, const std::vector<std::string>& paths) = 0;
    /// Logs off, with `window` as the only one shown. Returns whether the program let the session end.
    virtual bool EndSession(Window& window) = 0;
    /// Activates another window for a moment.
    void ActivateAnother() {
        Window other(Target(), "other", "Other", 900, 900);
        other.Show();
        Settle();
        other.Close();
    }
    /// Lets time pass until `condition` holds. Fails the test when that takes unreasonably long.
    void WaitUntil(const std::function<bool()>& condition) {
        EXPECT_TRUE(Comes(condition)) << "waited in vain";
    }

    // What happens later. Several answers are used in the order in which they were queued.

    /// Yes and No also answer the question whether an existing file may be replaced.
    void AnswerMessage(MessageResult result) { results_.push_back(result); }
    using Listed = std::optional<std::vector<std::string>>;
    /// An empty path cancels the dialog. If `files` are given, the dialog has to list just these.
    void AnswerFileDialog(const std::string& path, const Listed& files = {}) {
        files_.emplace_back(path, files);
    }
    /// Calls `act` while the next modal window is open. It has to close the window.
    void WhenModalOpens(std::function<void(Window&)> act) { modalActs_.push_back(std::move(act)); }
    /// Calls `act` once, from the next Yield.
    void WhenYielding(std::function<void()> act) { yieldActs_.push_back(std::move(act)); }

    // What the user sees.

    /// Compares what the screen shows with what the windows and their controls hold. Called after each event;
    /// tests call it after a change that the program makes.
    void Look() {
        std::string held;
        std::string shown;
        Settle();
        Comes([&] {
            held = Describe([](const auto& part) { return HeldBy(part); });
            shown = Describe([this](const auto& part) { return Shown(part); });
            return held == shown;
        });
        EXPECT_EQ(held, shown);
    }

    /// Which pixel of the pointer's picture is the place pointed to, while it is over the link.
    virtual std::pair<int, int> HotSpot(const LinkLabel& link) = 0;
    virtual double ShownOpacity(const Window& window) = 0;  ///< 0 to 1

    std::vector<Message> messages;    ///< boxes shown so far
    std::vector<FileDialog> dialogs;  ///< file dialogs asked for so far
    std::vector<std::string> opened;  ///< web and mail addresses opened so far

 protected:
    /// Activates the window as a click on it would. Returns false if it is blocked so that the user cannot
    /// even try to use it.
    virtual bool Activate(const Window& window) = 0;
    virtual void ClickIn(const Control& control, int row, Mouse how) = 0;
    virtual void Strike(Window& window, Held held, Key key, int repeats) = 0;
    /// Handles the events that are waiting.
    virtual void Settle() = 0;
    /// Calls `act` from an event of its own.
    virtual void Post(std::function<void()> act) = 0;
    /// Types the text at the caret.
    virtual void Enter(Window& window, const std::string& text) = 0;
    /// Puts the text on the clipboard.
    virtual void CopyFromElsewhere(const std::string& text) = 0;
    virtual Appearance Shown(const Control& control) = 0;
    virtual Appearance Shown(const MenuItem& item) = 0;
    virtual Appearance Shown(const Window& window) = 0;

    static std::size_t PlaceIn(const auto& all, const auto& one) {
        return static_cast<std::size_t>(std::ranges::find(all, &one) - all.begin());
    }

    /// The backend itself, with prompts recorded and events arriving as a test has queued them.
    template <class Screen>
    class Driven : public Screen {
     public:
        template <class... Arguments>
        explicit Driven(BackendDriver& driver, Arguments&&... arguments)
            : Screen(std::forward<Arguments>(arguments)...), driver_(driver) {}

        void Realize(Window& window) override {
            Screen::Realize(window);
            driver_.windows_.push_back(&window);
        }
        void Discard(Window& window) override {
            std::erase(driver_.windows_, &window);
            Screen::Discard(window);
        }
        void RunModal(Window& window) override {
            driver_.Post([this, &window] { driver_.ActIn(window); });
            Screen::RunModal(window);
        }
        MessageResult ShowMessage(const Message& message) override {
            driver_.messages.push_back(message);
            return Screen::ShowMessage(message);
        }
        std::string ShowFileDialog(const FileDialog& dialog) override {
            driver_.dialogs.push_back(dialog);
            return Screen::ShowFileDialog(dialog);
        }
        void Yield() override {
            driver_.yieldActs_.empty() ? Screen::Yield() : Take(driver_.yieldActs_, "a yield")();
        }
        void EndProgram() override { ADD_FAILURE() << "the program was ended"; }

     protected:
        BackendDriver& driver_;
    };

    /// The answer to the box that is shown, or Cancel if none is queued. `ofBackend`: the backend itself
    /// asks, whether an existing file may be replaced.
    MessageResult AnswerTo(const Message& shown, bool ofBackend) {
        EXPECT_EQ(shown, ofBackend ? shown : messages.back());
        return Take(results_, "the box " + shown.text, MessageResult::Cancel);
    }
    /// The path to enter in the dialog that is shown; empty to cancel it. `list` returns the files it lists.
    std::string PathFor(const std::string& shownTitle,
                        const std::function<std::vector<std::string>()>& list) {
        EXPECT_EQ(shownTitle, dialogs.back().title);
        const auto [path, files] = Take(files_, "the file dialog " + shownTitle);
        const bool listed = Comes([&files = files, &list] { return !files || list() == *files; });
        EXPECT_TRUE(listed) << testing::PrintToString(list());
        return path;
    }

 private:
    /// Takes what was queued first. If there is nothing, the test fails, and goes on with `otherwise`.
    template <class Answer>
    static Answer Take(std::deque<Answer>& queue, const std::string& what, const Answer& otherwise = {}) {
        if (queue.empty()) ADD_FAILURE() << "nothing was queued for " << what;
        if (queue.empty()) return otherwise;
        Answer first = std::move(queue.front());
        queue.pop_front();
        return first;
    }
    /// Does what was queued for the modal window that is open, and makes sure that it is closed.
    void ActIn(Window& window) {
        Take<std::function<void(Window&)>>(modalActs_, window.Name(),
                                           [](Window& left) { left.Close(); })(window);
        if (window.IsShown()) ADD_FAILURE() << "nobody closed the modal window " << window.Name();
        window.Close();
    }
    /// Handles events until `condition` holds. Returns false when that takes longer than a busy machine
    /// stands still, and at once when the test has failed already.
    bool Comes(const std::function<bool()>& condition) {
        constexpr std::chrono::minutes patience{1};
        const auto end = std::chrono::steady_clock::now() + patience;
        while (!condition()) {
            if (std::chrono::steady_clock::now() > end || testing::Test::HasFailure()) return false;
            std::this_thread::sleep_for(std::chrono::milliseconds(5));
            Settle();
        }
        return true;
    }

    /// A line for each part of all windows.
    template <class Appears>
    std::string Describe(Appears appears) const {
        std::string lines;
        for (const Window* const window : windows_) {
            lines += appears(*window).AsLine();
            for (const Control* const control : window->Controls())
                lines += appears(*control).AsLine();
            for (const Menu* const menu : window->Menus())
                for (const MenuItem* const item : menu->Items())
                    lines += appears(*item).AsLine();
        }
        return lines;
    }
    static Appearance HeldBy(const Window& window) {
        return {.text = window.Caption(), .takesFiles = window.TakesFiles()};
    }
    static Appearance HeldBy(const MenuItem& item) {
        return {.text = item.IsSeparator() ? "" : item.Caption(), .checked = item.Checked()};
    }
    static Appearance HeldBy(const Control& control) {
        Appearance held{.name = control.AccessibleName(),
                        .text = control.Caption(),
                        .hint = control.Hint(),
                        .enabled = control.Enabled(),
                        .focused = control.HasFocus()};
        if (const auto* const box = dynamic_cast<const CheckBox*>(&control)) held.checked = box->Checked();
        if (const auto* const option = dynamic_cast<const OptionButton*>(&control))
            held.checked = option->Selected();
        if (const auto* const box = dynamic_cast<const TextBox*>(&control)) held.text = box->Text();
        if (const auto* const list = dynamic_cast<const ListBox*>(&control)) {
            held.items = list->Items();
            held.selected = list->Selected();
        }
        return held;
    }

    std::vector<const Window*> windows_;  ///< that are shown
    std::deque<MessageResult> results_;
    std::deque<std::pair<std::string, Listed>> files_;
    std::deque<std::function<void(Window&)>> modalActs_;
    std::deque<std::function<void()>> yieldActs_;
};

/// The driver of the backend that the test program is built for.
std::unique_ptr<BackendDriver> MakeBackendDriver();

}  // namespace quillmere::test
