#pragma once

#include "system/emulated_system_calls.h"
#include "system/time_of_day.h"
#include "toolkit/backend.h"
#include "toolkit/qt/qt_prompts.h"
#include "toolkit/yield_throttle.h"

#include <cstdlib>
#include <functional>
#include <map>
#include <memory>
#include <string>

namespace quillmere {

class HeldKeyFilter;
class QtWindow;

/// Opens a web or mail address with the user's program for it; returns whether there is one.
bool OpenAddress(const std::string& address);

struct QtBackendOptions {
    bool nativeDialogs = true;
    std::function<void()> endProcess = [] { std::_Exit(EXIT_SUCCESS); };
    std::function<bool(const std::string&)> openAddress = OpenAddress;
};

/// The backend for Qt Widgets. A QApplication has to exist before it and to outlive it.
class QtBackend : public Backend {
 public:
    /// Gives the application the style, colors and font that the windows were laid out for.
    explicit QtBackend(QtBackendOptions options = {});
    ~QtBackend() override;

    /// Delivers events until the last window is closed; returns the exit code of the program.
    int Run();

    /// Whether no window has a reason against it.
    bool SessionMayEnd() const;
    /// Tells each window that the session ends.
    void EndSession();

    // Backend
    void Realize(Window& window) override;
    void MakeVisible(Window& window) override;
    void RunModal(Window& window) override;
    void Discard(Window& window) override;
    MessageResult ShowMessage(const Message& message) override { return prompts_.ShowMessage(message); }
    std::string ShowFileDialog(const FileDialog& dialog) override { return prompts_.ShowFileDialog(dialog); }
    void AskForAttention(Window& window) override;
    void Yield() override;
    double TimeOfDay() override { return SecondsSinceMidnight(); }
    void EndProgram() override { options_.endProcess(); }
    SystemCalls& Calls() override { return calls_; }

 private:
    /// Null for a window that is not realized.
    QtWindow* Find(WindowHandle handle) const;

    class SessionWatch;

    QtBackendOptions options_;
    QtPrompts prompts_;
    YieldThrottle throttle_;
    EmulatedSystemCalls calls_;
    std::map<WindowHandle, std::unique_ptr<QtWindow>> windows_;
    bool running_ = false;
    std::unique_ptr<SessionWatch> sessionWatch_;
    std::unique_ptr<HeldKeyFilter> heldKeyFilter_;
};

}  // namespace quillmere
