#pragma once

#include "toolkit/backend.h"

#include <chrono>
#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace quillmere::test {

/// The values are the key codes of Windows. A letter is `Key{'A'}` to `Key{'Z'}`.
enum class Key {
    Tab = 9,
    Enter = 13,
    Escape = 27,
    Space = 32,
    Home = 36,
    Left = 37,
    Up = 38,
    Right = 39,
    Down = 40,
    Delete = 46,
    F10 = 121
};
enum class Held { Nothing, Shift, Control, Alt };
enum class Mouse { Left, LeftWithControl, Right };

/// Acts as the user of one backend: clicks and types on what is shown. The same tests use it to run on every
/// backend. After each event it compares what the screen shows with what the controls hold, so tests need
/// only ask the controls. Message boxes and file dialogs get the answers that were queued for them. One
/// without an answer fails the test, and so does an answer that is left over.
class BackendDriver {
 public:
    virtual ~BackendDriver() = default;
    virtual Backend& Target() = 0;

    // Events. Each function returns when the program has handled the event.
    virtual void Click(Control& control) = 0;
    virtual void ClickItem(ListBox& list, int index, Mouse how = Mouse::Left) = 0;
    /// Replaces the text of a single-line box from the keyboard, after a click into it.
    virtual void Type(TextBox& box, const std::string& text) = 0;
    /// Pastes in front of the text of a single-line box, after a click into it.
    virtual void Paste(TextBox& box, const std::string& text) = 0;
    /// Presses keys in the active window, one after the other: the first while `held` is held down.
    virtual void Press(Window& window, Held held, const std::vector<Key>& keys) = 0;
    void Press(Window& window, Key key) { Press(window, Held::Nothing, {key}); }
    /// Holds a key until it has repeated itself that often.
    virtual void Hold(Window& window, Key key, int repeats) = 0;
    /// Opens the menu and clicks the item.
    virtual void Choose(MenuItem& item) = 0;
    virtual void ClickCloseBox(Window& window) = 0;
    /// Drops files on the window from another program.
    virtual void Drop(Window& window, const std::vector<std::string>& paths) = 0;
    /// Logs off, with `window` as the only one shown. Returns whether the program let the session end.
    virtual bool EndSession(Window& window) = 0;
    /// Activates another window.
    virtual void Deactivate(Window& window) = 0;
    /// Lets time pass until `condition` holds. Fails the test when that takes unreasonably long.
    virtual void WaitUntil(const std::function<bool()>& condition) = 0;

    // What happens later. Several answers are used in the order in which they were queued.

    /// Yes and No also answer the question whether an existing file may be replaced.
    virtual void AnswerMessage(MessageResult result) = 0;
    /// An empty path cancels the dialog.
    virtual void AnswerFileDialog(const std::string& path) = 0;
    /// Calls `act` while the next modal window is open. It has to close the window.
    virtual void WhenModalOpens(std::function<void(Window&)> act) = 0;
    /// Calls `act` once, from the next Yield.
    virtual void WhenYielding(std::function<void()> act) = 0;

    // What the user sees.
    /// Compares what the screen shows with what the windows and their controls hold. Called after each event;
    /// tests call it after a change that the program makes.
    virtual void Look() = 0;
    /// Which pixel of the pointer's picture is the place pointed to, while it is over the link.
    virtual std::pair<int, int> HotSpot(const LinkLabel& link) = 0;
    virtual double ShownOpacity(const Window& window) = 0;  ///< 0 to 1

    std::vector<Message> messages;    ///< boxes shown so far
    std::vector<FileDialog> dialogs;  ///< file dialogs asked for so far
    std::vector<std::string> opened;  ///< web and mail addresses opened so far
};

/// The driver of the backend that the test program is built for.
std::unique_ptr<BackendDriver> MakeBackendDriver();

}  // namespace quillmere::test
