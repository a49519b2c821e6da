#include "tests/support/backend_driver.h"
#include "toolkit/access_key.h"
#include "toolkit/hand_pointer.h"
#include "toolkit/headless/headless_backend.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <filesystem>

namespace quillmere::test {
namespace {

/// Passes on to the driver what was shown and opened.
class RecordedBackend : public HeadlessBackend {
 public:
    explicit RecordedBackend(BackendDriver& driver) : driver_(driver) {
        OnOpenAddress = [this](const std::string& address) {
            driver_.opened.push_back(address);
            return true;
        };
    }

    MessageResult ShowMessage(const Message& message) override {
        driver_.messages.push_back(message);
        return HeadlessBackend::ShowMessage(message);
    }
    std::string ShowFileDialog(const FileDialog& dialog) override {
        driver_.dialogs.push_back(dialog);
        std::string path = HeadlessBackend::ShowFileDialog(dialog);
        while (dialog.overwritePrompt && std::filesystem::exists(path) &&
               HeadlessBackend::ShowMessage({"", "May it be replaced?"}) != MessageResult::Yes)
            path = HeadlessBackend::ShowFileDialog(dialog);
        return path;
    }

 private:
    BackendDriver& driver_;
};

/// The item that the key chooses: its access key, or Enter for the first one.
MenuItem& Chosen(const Menu& menu, int key) {
    const auto& items = menu.Items();
    const auto found = std::ranges::find_if(
        items, [key](const MenuItem* item) { return AccessKeyOf(item->Caption()) == std::tolower(key); });
    return found == items.end() ? *items.front() : **found;
}

/// Calls the controls' functions for events. There is no screen to compare them with.
class HeadlessDriver : public BackendDriver {
 public:
    ~HeadlessDriver() override {
        if (!backend_.NothingQueued()) ADD_FAILURE() << "an answer or event was queued that nobody asked for";
    }
    Backend& Target() override { return backend_; }

    void Click(Control& control) override {
        control.UserFocuses();
        control.UserClicks();
    }
    void ClickItem(ListBox& list, int index, Mouse how) override {
        list.UserFocuses();
        if (how != Mouse::Right) list.UserSelects(index);
    }
    void Type(TextBox& box, const std::string& text) override {
        box.UserFocuses();
        box.UserTypes(text);
    }
    void Paste(TextBox& box, const std::string& text) override { box.UserTypes(text, box.Text()); }
    void Press(Window& window, Held held, const std::vector<Key>& keys) override {
        const Menu* menu = nullptr;
        for (const Key key : keys) {
            const int code = static_cast<int>(key);
            if (menu != nullptr && key != Key::Down)
                Chosen(*menu, code).UserChooses();
            else if (key == Key::F10)
                menu = window.Menus().front();
            else if (held == Held::Alt)
                menu = window.UserPressesAccessKey(static_cast<char>(std::tolower(code)));
            else if (key == Key::Tab)
                window.UserPressesTab(held == Held::Shift);
            else if (key == Key::Escape)
                window.UserPressesEscape();
            else if (key == Key::Space || key == Key::Enter)
                Click(*window.Focused());
            else if (auto* const option = dynamic_cast<OptionButton*>(window.Focused()))
                option->UserPressesArrow(key == Key::Down || key == Key::Right);
            else if (auto* const list = dynamic_cast<ListBox*>(window.Focused()))
                list->UserSelects(list->Selected() + (key == Key::Down ? 1 : -1));
        }
    }
    void Hold(Window& window, Key key, int /*repeats*/) override { Press(window, Held::Nothing, {key}); }
    void Choose(MenuItem& item) override { item.UserChooses(); }
    void ClickCloseBox(Window& window) override { window.UserCloses(); }
    void Drop(Window& window, const std::vector<std::string>& paths) override {
        window.UserDropsFiles(paths);
    }
    bool EndSession(Window& window) override {
        if (!window.ReasonAgainstSessionEnd().empty()) return false;
        window.SessionEnds();
        return true;
    }
    void Deactivate(Window& window) override { window.UserDeactivates(); }
    void WaitUntil(const std::function<bool()>& condition) override {
        constexpr std::chrono::milliseconds step{10};
        constexpr int patience = 1000;
        int steps = 0;
        while (!condition() && ++steps < patience)
            backend_.Advance(step);
        EXPECT_LT(steps, patience) << "waited in vain";
    }

    void AnswerMessage(MessageResult result) override { backend_.QueueMessageResult(result); }
    void AnswerFileDialog(const std::string& path) override { backend_.QueueFile(path); }
    void WhenModalOpens(std::function<void(Window&)> act) override { backend_.QueueModal(std::move(act)); }
    void WhenYielding(std::function<void()> act) override { backend_.QueueEvent(std::move(act)); }

    void Look() override {}
    std::pair<int, int> HotSpot(const LinkLabel& /*link*/) override {
        return {HandPointer::hotX, HandPointer::hotY};
    }
    double ShownOpacity(const Window& window) override { return backend_.Calls().Opacity(window.Handle()); }

 private:
    RecordedBackend backend_{*this};
};

}  // namespace

std::unique_ptr<BackendDriver> MakeBackendDriver() {
    return std::make_unique<HeadlessDriver>();
}

}  // namespace quillmere::test
