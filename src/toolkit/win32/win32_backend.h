#pragma once

#include "system/time_of_day.h"
#include "system/windows_system_calls.h"
#include "toolkit/backend.h"
#include "toolkit/win32/win32_com.h"
#include "toolkit/win32/win32_handles.h"
#include "toolkit/win32/win32_prompts.h"
#include "toolkit/yield_throttle.h"

#include <cstdlib>
#include <memory>
#include <string>
#include <vector>

namespace quillmere {

class Win32Window;

/// The backend for Windows. The handle of a window is its HWND.
class Win32Backend : public Backend {
 public:
    Win32Backend();
    ~Win32Backend() override;

    /// Delivers messages until the last window is closed; returns the exit code of the program.
    int Run();
    /// Delivers the messages that are waiting, and returns.
    void ServeMessages();

    // Backend
    void Realize(Window& window) override;
    void MakeVisible(Window& window) override;
    void RunModal(Window& window) override;
    void Discard(Window& window) override;
    MessageResult ShowMessage(const Message& message) override {
        return prompts_.ShowMessage(TopWindow(), message);
    }
    std::string ShowFileDialog(const FileDialog& dialog) override {
        return prompts_.ShowFileDialog(TopWindow(), dialog);
    }
    void AskForAttention(Window& window) override;
    void Yield() override;
    double TimeOfDay() override { return SecondsSinceMidnight(); }
    void EndProgram() override { std::_Exit(EXIT_SUCCESS); }
    SystemCalls& Calls() override { return calls_; }

 private:
    struct Shown {
        std::unique_ptr<Win32Window> view;
        std::vector<HWND> blocked;  ///< the windows that it blocks while it is open
    };
    /// Null for a window that is not loaded.
    Shown* Find(WindowHandle handle);
    /// The window that the user works with: the last one shown; null while there is none.
    HWND TopWindow() const;
    void BlockOthers(Shown& shown);
    void UnblockOthers(const Shown& shown);

    static LRESULT CALLBACK SweepProcedure(HWND handle, UINT message, WPARAM wParam, LPARAM lParam);
    static UniqueWindow MakeSweeper();

    ComApartment apartment_;
    WindowsSystemCalls calls_;
    Win32Prompts prompts_;
    YieldThrottle throttle_;
    UniqueWindow sweeper_;        ///< never shown; deletes the closed windows that it gets messages about
    std::vector<Shown> windows_;  ///< in the order in which they were loaded
    std::vector<std::unique_ptr<Win32Window>> gone_;  ///< closed, perhaps still handling a message
};

}  // namespace quillmere
