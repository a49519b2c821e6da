#pragma once

#include "system/system_calls.h"
#include "toolkit/prompts.h"
#include "toolkit/window.h"

#include <string>
#include <vector>

namespace quillmere {

/// Shows the toolkit's windows, message boxes and file dialogs on one system, tells the time, and delivers
/// events, which are what the user does. Everything runs on one thread.
class Backend {
 public:
    virtual ~Backend() = default;

    // Called by Window alone.

    /// Makes what shows `window` on this backend, hidden: sets the views of the window and its controls, and
    /// starts its timers.
    virtual void Realize(Window& window) = 0;
    virtual void MakeVisible(Window& window) = 0;
    /// Delivers events until `window` is no longer shown.
    virtual void RunModal(Window& window) = 0;
    /// Undoes Realize: clears the views and stops the timers.
    virtual void Discard(Window& window) = 0;

    // Called by the program.

    /// Shows the box, blocks the windows meanwhile, and returns when the user has answered.
    virtual MessageResult ShowMessage(const Message& message) = 0;
    /// Blocks the windows, too. Returns the full path that was chosen; empty when the user cancelled.
    virtual std::string ShowFileDialog(const FileDialog& dialog) = 0;
    /// Draws the user's attention to `window`, which is shown: with the system's warning sound, and by
    /// marking the window as urgent where the system can. Returns at once.
    virtual void AskForAttention(Window& window) = 0;
    /// Delivers the events that are waiting, and returns when no menu, box or dialog is open. Long work may
    /// call it at every step: it looks for events only every 10 ms, and costs next to nothing otherwise.
    virtual void Yield() = 0;
    /// Seconds since midnight, with a fraction.
    virtual double TimeOfDay() = 0;
    /// Ends the process at once and does not return. The headless backend throws instead.
    virtual void EndProgram() = 0;
    /// The system calls that the program makes by name, for the windows of this backend.
    virtual SystemCalls& Calls() = 0;

    // The modal windows that are open, the last one opened at the end; kept up to date by Window.

    /// Whether no modal window blocks `window`. Blocking by boxes and dialogs is left to each backend.
    bool Admits(const Window& window) const { return modals_.empty() || IsModal(window); }
    /// Whether `window` is the last one opened of them.
    bool IsModal(const Window& window) const { return !modals_.empty() && modals_.back() == &window; }
    void PushModal(const Window& window) { modals_.push_back(&window); }
    void PopModal() { modals_.pop_back(); }

 private:
    std::vector<const Window*> modals_;
};

}  // namespace quillmere
