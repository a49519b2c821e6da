#pragma once

#include "system/system_calls.h"
#include "toolkit/prompts.h"
#include "toolkit/window.h"

#include <string>
#include <vector>

namespace quillmere {

/// A window system: shows windows, boxes and dialogs, delivers events, tells the time. Everything runs on one
/// thread.
class Backend {
 public:
    virtual ~Backend() = default;

    // For windows: Window::Show and its kin call these.

    /// Makes the backend's side of `window`, hidden: sets the views of the window, its controls and menu
    /// items, and starts its timers.
    virtual void Realize(Window& window) = 0;
    virtual void MakeVisible(Window& window) = 0;
    /// Delivers events until `window` is no longer shown.
    virtual void RunModal(Window& window) = 0;
    /// Removes the backend's side of `window`: clears the views and stops the timers.
    virtual void Discard(Window& window) = 0;

    // For the program.

    /// Shows the box, shuts the windows out, and returns when it is answered.
    virtual MessageResult ShowMessage(const Message& message) = 0;
    /// Returns the full path that was chosen, or an empty text when the user cancelled.
    virtual std::string ShowFileDialog(const FileDialog& dialog) = 0;
    /// Lets whatever the user did be served within 10 ms, however often it is called; costs next to nothing.
    virtual void Yield() = 0;
    /// Seconds since midnight, with a fraction.
    virtual double TimeOfDay() = 0;
    /// Ends the process at once. Does not return, but for a backend that serves tests, which throws.
    virtual void EndProgram() = 0;
    /// The system calls that the windows make by name, on windows of this backend.
    virtual SystemCalls& Calls() = 0;

    // The modal windows that are open, the innermost last; kept by Window.

    /// Whether `window` is not shut out by a modal window. Boxes and dialogs shut windows out by the
    /// backend's means.
    bool Admits(const Window& window) const { return modals_.empty() || modals_.back() == &window; }
    /// Whether `window` is the innermost of them.
    bool IsModal(const Window& window) const { return !modals_.empty() && modals_.back() == &window; }
    void PushModal(const Window& window) { modals_.push_back(&window); }
    void PopModal() { modals_.pop_back(); }

 private:
    std::vector<const Window*> modals_;
};

}  // namespace quillmere
