#pragma once

#include "toolkit/backend.h"

#include <chrono>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace quillmere::test {

enum class Key { Tab, BackTab, Space, Enter, Escape, Up, Down };

/// A message box as it was shown to the user.
struct SeenMessage {
    std::string title;
    std::string text;
    MessageIcon icon;
    MessageButtons buttons;
    bool operator==(const SeenMessage&) const = default;
};

/// A user of one backend: clicks and types on what is shown, and looks at it. The same tests run on every
/// backend through this. Prompts are answered by what was queued for them; one that nobody queued fails the
/// test, and so does an answer that nobody asked for.
class BackendDriver {
 public:
    virtual ~BackendDriver() = default;
    virtual Backend& Target() = 0;

    // What the user does. Each returns when the program has handled it.
    virtual void Click(Control& control) = 0;
    virtual void ClickItem(ListBox& list, int index) = 0;
    /// Replaces the text of a single-line box from the keyboard, after a click into it.
    virtual void Type(TextBox& box, const std::string& text) = 0;
    /// A key pressed in the active window, on the control with the focus.
    virtual void Press(Window& window, Key key) = 0;
    /// Alt and a letter.
    virtual void PressAccessKey(Window& window, char key) = 0;
    /// Opens the menu and picks the item.
    virtual void Choose(MenuItem& item) = 0;
    virtual void ClickCloseBox(Window& window) = 0;
    /// Another program's window becomes the active one.
    virtual void Deactivate(Window& window) = 0;
    /// Lets time pass.
    virtual void Wait(std::chrono::milliseconds time) = 0;

    // What the user will do when asked; several answers are used in order.
    /// Yes or No also answers whether an existing file may be replaced.
    virtual void AnswerMessage(MessageResult result) = 0;
    /// An empty path cancels the dialog.
    virtual void AnswerFileDialog(const std::string& path) = 0;
    /// Runs `act` while the next modal window is open. The window has to be closed by then.
    virtual void WhenModalOpens(std::function<void(Window&)> act) = 0;
    /// Runs `act` once, as an event that arrives meanwhile, at the next Yield that serves events.
    virtual void WhenYielding(std::function<void()> act) = 0;

    // What the user sees.
    virtual std::string ShownText(const Control& control) = 0;  ///< caption, or text of a text box
    virtual bool ShownEnabled(const Control& control) = 0;
    virtual bool ShownChecked(const Control& control) = 0;  ///< check box or option button
    virtual bool ShownChecked(const MenuItem& item) = 0;
    virtual std::vector<std::string> ShownItems(const ListBox& list) = 0;
    virtual int ShownSelection(const ListBox& list) = 0;
    virtual std::string ShownTitle(const Window& window) = 0;
    virtual bool ShownFocus(const Control& control) = 0;
    virtual double ShownOpacity(const Window& window) = 0;  ///< 0 to 1

    std::vector<SeenMessage> messages;  ///< boxes shown so far
    std::vector<FileDialog> dialogs;    ///< file dialogs asked for so far
    std::vector<std::string> opened;    ///< what was handed to the shell
};

/// The driver of the backend that the test program is built for.
std::unique_ptr<BackendDriver> MakeBackendDriver();

}  // namespace quillmere::test
