#pragma once

#include "toolkit/backend.h"

#include <chrono>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace quillmere::test {

enum class Key { Tab, BackTab, Space, Enter, Escape, Up, Down };
enum class Mouse { Left, LeftWithControl, Right };

struct Pixel {
    int x;
    int y;
    bool operator==(const Pixel&) const = default;
};

/// A message box as it was shown to the user.
struct SeenMessage {
    std::string title;
    std::string text;
    MessageIcon icon;
    MessageButtons buttons;
    bool operator==(const SeenMessage&) const = default;
};

/// Acts as the user of one backend: clicks and types on what is shown, and reads it. The same tests use it to
/// run on every backend. Message boxes and file dialogs get the answers that were queued for them. One
/// without an answer fails the test, and so does an answer that is left over.
class BackendDriver {
 public:
    virtual ~BackendDriver() = default;
    virtual Backend& Target() = 0;

    // Events. Each function returns when the program has handled the event.
    virtual void Click(Control& control) = 0;
    virtual void ClickItem(ListBox& list, int index, Mouse how) = 0;
    void ClickItem(ListBox& list, int index) { ClickItem(list, index, Mouse::Left); }
    /// Replaces the text of a single-line box from the keyboard, after a click into it.
    virtual void Type(TextBox& box, const std::string& text) = 0;
    /// Pastes in front of the text of a single-line box, after a click into it.
    virtual void Paste(TextBox& box, const std::string& text) = 0;
    /// Presses a key in the active window, on the control with the focus, and holds it until it has repeated
    /// itself that often.
    virtual void Press(Window& window, Key key, int repeats) = 0;
    void Press(Window& window, Key key) { Press(window, key, 0); }
    /// Presses Alt and a letter.
    virtual void PressAccessKey(Window& window, char key) = 0;
    /// Opens the menu and clicks the item.
    virtual void Choose(MenuItem& item) = 0;
    virtual void ClickCloseBox(Window& window) = 0;
    /// Drops files on the window from another program.
    virtual void Drop(Window& window, const std::vector<std::string>& paths) = 0;
    /// Logs off, with `window` as the only one shown. Returns whether the program let the session end.
    virtual bool EndSession(Window& window) = 0;
    /// Activates a window of another program.
    virtual void Deactivate(Window& window) = 0;
    /// Lets time pass.
    virtual void Wait(std::chrono::milliseconds time) = 0;

    // What happens later. Several answers are used in the order in which they were queued.

    /// Yes and No also answer the question whether an existing file may be replaced.
    virtual void AnswerMessage(MessageResult result) = 0;
    /// An empty path cancels the dialog.
    virtual void AnswerFileDialog(const std::string& path) = 0;
    /// Calls `act` while the next modal window is open. It has to close the window.
    virtual void WhenModalOpens(std::function<void(Window&)> act) = 0;
    /// Calls `act` once, from the next Yield that delivers events.
    virtual void WhenYielding(std::function<void()> act) = 0;

    // What the user sees.
    virtual std::string ShownText(const Control& control) = 0;  ///< of a label or text box
    virtual std::string ShownHint(const Control& control) = 0;  ///< after the mouse has rested on it
    virtual bool ShownEnabled(const Control& control) = 0;
    virtual bool ShownChecked(const Control& control) = 0;  ///< check box or option button
    virtual bool ShownChecked(const MenuItem& item) = 0;
    virtual std::vector<std::string> ShownItems(const ListBox& list) = 0;
    virtual int ShownSelection(const ListBox& list) = 0;
    virtual std::string ShownTitle(const Window& window) = 0;
    virtual bool ShownFocus(const Control& control) = 0;
    /// Which pixel of the pointer's picture is the place pointed to, while it is over the link.
    virtual Pixel HotSpot(const LinkLabel& link) = 0;
    virtual double ShownOpacity(const Window& window) = 0;  ///< 0 to 1

    std::vector<SeenMessage> messages;  ///< boxes shown so far
    std::vector<FileDialog> dialogs;    ///< file dialogs asked for so far
    std::vector<std::string> opened;    ///< web and mail addresses opened so far
};

/// The driver of the backend that the test program is built for.
std::unique_ptr<BackendDriver> MakeBackendDriver();

}  // namespace quillmere::test
