#pragma once

#include "tests/support/backend_driver.h"

#include <gtest/gtest.h>

#include <deque>
#include <functional>
#include <optional>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace quillmere::test {

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

    std::string AsLine() const {
        std::string line = name + ": " + text + '|' + hint + (enabled ? "" : "|disabled") +
                           (focused ? "|focused" : "") + (checked ? "|checked" : "");
        for (const std::string& item : items)
            line += '|' + item;
        if (selected != ListBox::none) line += "|row " + std::to_string(selected);
        std::erase(line, '\r');
        return line + '\n';
    }
};

/// Common to the drivers of backends with a screen. Keeps what a test has queued until a box, dialog or
/// window appears, and fails the test if none appears or if one appears for which nothing is queued.
class ScreenDriver : public BackendDriver {
 public:
    ~ScreenDriver() override {
        if (!results_.empty() || !files_.empty() || !modalActs_.empty() || !yieldActs_.empty())
            ADD_FAILURE() << "an answer or event was queued that nobody asked for";
    }
    void Type(TextBox& box, const std::string& text) override {
        Click(box);
        if (!box.HasFocus()) return;
        Press(box.OwnerWindow(), Held::Control, {Key{'A'}});
        Press(box.OwnerWindow(), Key::Delete);
        Enter(box.OwnerWindow(), text);
        Look();
    }
    void Paste(TextBox& box, const std::string& text) override {
        CopyFromElsewhere(text);
        Click(box);
        Press(box.OwnerWindow(), Key::Home);
        Press(box.OwnerWindow(), Held::Control, {Key{'V'}});
    }
    void Deactivate(Window& /*window*/) override {
        Window other(Target(), "other", "Other", 900, 900);
        other.Show();
        Settle();
        other.Close();
    }
    void WaitUntil(const std::function<bool()>& condition) override {
        EXPECT_TRUE(Comes(condition)) << "waited in vain";
    }
    void AnswerMessage(MessageResult result) override { results_.push_back(result); }
    void AnswerFileDialog(const std::string& path) override { files_.push_back(path); }
    void WhenModalOpens(std::function<void(Window&)> act) override { modalActs_.push_back(std::move(act)); }
    void WhenYielding(std::function<void()> act) override { yieldActs_.push_back(std::move(act)); }
    void Look() override {
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

 protected:
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

    /// The backend itself, with prompts recorded and events arriving as a test has queued them.
    template <class Screen>
    class Driven : public Screen {
     public:
        template <class... Arguments>
        explicit Driven(ScreenDriver& driver, Arguments&&... arguments)
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
            const auto act = Take(driver_.yieldActs_);
            act ? (*act)() : Screen::Yield();
        }
        void EndProgram() override { ADD_FAILURE() << "the program was ended"; }

     private:
        ScreenDriver& driver_;
    };

    /// The answer to the box that is shown; nothing if none is queued.
    std::optional<MessageResult> AnswerTo(const Message& shown) {
        EXPECT_EQ(shown, messages.back());
        const std::optional<MessageResult> result = Take(results_);
        if (!result) ADD_FAILURE() << "no answer was queued to the box " << shown.title << ": " << shown.text;
        return result;
    }
    /// The answer to the question whether an existing file may be replaced.
    bool MayReplace() {
        const std::optional<MessageResult> result = Take(results_);
        if (!result) ADD_FAILURE() << "nobody said whether a file may be replaced";
        return result == MessageResult::Yes;
    }
    /// The path to enter in the dialog that is shown; empty to cancel it.
    std::string PathFor(const std::string& shownTitle) {
        EXPECT_EQ(shownTitle, dialogs.back().title);
        const std::optional<std::string> path = Take(files_);
        if (!path) ADD_FAILURE() << "nobody queued an answer to the file dialog " << shownTitle;
        return path.value_or("");
    }

 private:
    /// Takes what was queued first, if there is anything.
    template <class Answer>
    static std::optional<Answer> Take(std::deque<Answer>& queue) {
        if (queue.empty()) return std::nullopt;
        Answer first = std::move(queue.front());
        queue.pop_front();
        return first;
    }
    /// Does what was queued for the modal window that is open, and makes sure that it is closed.
    void ActIn(Window& window) {
        const auto act = Take(modalActs_);
        if (!act) ADD_FAILURE() << "nobody waited for the modal window " << window.Name();
        if (act) (*act)(window);
        if (act && window.IsShown()) ADD_FAILURE() << "nobody closed the modal window " << window.Name();
        window.Close();
    }
    /// Handles events until `condition` holds. Returns false when that takes longer than a busy machine
    /// stands still, and at once when the test has failed already.
    bool Comes(const std::function<bool()>& condition) {
        constexpr std::chrono::minutes patience{2};
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
    static Appearance HeldBy(const Window& window) { return {.text = window.Caption()}; }
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
    std::deque<std::string> files_;
    std::deque<std::function<void(Window&)>> modalActs_;
    std::deque<std::function<void()>> yieldActs_;
};

}  // namespace quillmere::test
