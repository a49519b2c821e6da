#include "tests/support/backend_driver.h"
#include "toolkit/hand_pointer.h"
#include "toolkit/headless/headless_backend.h"

#include <gtest/gtest.h>

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
        driver_.messages.push_back({message.title, message.text, message.icon, message.buttons});
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

/// Calls the controls' functions for events, and reads the state of the controls.
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
    void Press(Window& window, Key key, int /*repeats*/) override {
        Control* const focused = window.Focused();
        auto* const list = dynamic_cast<ListBox*>(focused);
        switch (key) {
            case Key::Tab:
            case Key::BackTab:
                window.UserPressesTab(key == Key::BackTab);
                break;
            case Key::Space:
            case Key::Enter:
                if (focused != nullptr) Click(*focused);
                break;
            case Key::Up:
                if (list != nullptr) list->UserSelects(list->Selected() - 1);
                break;
            case Key::Down:
                if (list != nullptr) list->UserSelects(list->Selected() + 1);
                break;
            case Key::Escape:
                window.UserPressesEscape();
                break;
        }
    }
    void PressAccessKey(Window& window, char key) override { window.UserPressesAccessKey(key); }
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
    void Wait(std::chrono::milliseconds time) override { backend_.Advance(time); }

    void AnswerMessage(MessageResult result) override { backend_.QueueMessageResult(result); }
    void AnswerFileDialog(const std::string& path) override { backend_.QueueFile(path); }
    void WhenModalOpens(std::function<void(Window&)> act) override { backend_.QueueModal(std::move(act)); }
    void WhenYielding(std::function<void()> act) override { backend_.QueueEvent(std::move(act)); }

    std::string ShownText(const Control& control) override {
        const auto* const box = dynamic_cast<const TextBox*>(&control);
        return box != nullptr ? box->Text() : control.Caption();
    }
    std::string ShownHint(const Control& control) override { return control.Hint(); }
    bool ShownEnabled(const Control& control) override { return control.Enabled(); }
    bool ShownChecked(const Control& control) override {
        if (const auto* const box = dynamic_cast<const CheckBox*>(&control)) return box->Checked();
        return dynamic_cast<const OptionButton&>(control).Selected();
    }
    bool ShownChecked(const MenuItem& item) override { return item.Checked(); }
    std::vector<std::string> ShownItems(const ListBox& list) override { return list.Items(); }
    int ShownSelection(const ListBox& list) override { return list.Selected(); }
    std::string ShownTitle(const Window& window) override { return window.Caption(); }
    bool ShownFocus(const Control& control) override { return control.HasFocus(); }
    Pixel HotSpot(const LinkLabel& /*link*/) override { return {HandPointer::hotX, HandPointer::hotY}; }
    double ShownOpacity(const Window& window) override { return backend_.Calls().Opacity(window.Handle()); }

 private:
    RecordedBackend backend_{*this};
};

}  // namespace

std::unique_ptr<BackendDriver> MakeBackendDriver() {
    return std::make_unique<HeadlessDriver>();
}

}  // namespace quillmere::test
