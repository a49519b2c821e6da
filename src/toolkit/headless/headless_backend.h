#pragma once

#include "toolkit/backend.h"

#include <chrono>
#include <deque>
#include <functional>
#include <map>
#include <string>
#include <vector>

namespace quillmere {

/// Thrown by a headless backend where another one would end the process.
struct ProgramEnded {};

/// A backend without a screen: prompts are answered by what the caller queued for them, the clock stands
/// still until the caller turns it, and whoever drives it acts through the doors of the controls. A prompt
/// that nobody queued is an error at once (std::logic_error).
class HeadlessBackend : public Backend {
 public:
    // For the caller.

    void QueueMessageResult(MessageResult result) { messageResults_.push_back(result); }
    void QueueFile(std::string path) { files_.push_back(std::move(path)); }
    /// `act` is run while the next modal window is open, and has to close it.
    void QueueModal(std::function<void(Window&)> act) { modalActs_.push_back(std::move(act)); }
    /// `act` is run once, at the next Yield.
    void QueueEvent(std::function<void()> act) { events_.push_back(std::move(act)); }
    /// Turns the clock; the timers of the windows shown tick on the way.
    void Advance(std::chrono::milliseconds time);
    bool NothingQueued() const {
        return messageResults_.empty() && files_.empty() && modalActs_.empty() && events_.empty();
    }

    std::uint32_t majorVersion = 10;  ///< of the system, as GetVersionExA tells it; 0 makes the call fail
    std::string programFolder = "program";  ///< what ProgramFolder returns
    std::vector<Message> messages;          ///< boxes shown so far
    std::vector<FileDialog> dialogs;        ///< file dialogs shown so far
    std::vector<std::string> opened;        ///< what was handed to the shell
    /// The layered style of a window that is shown.
    const LayeredStyle& StyleOf(const Window& window) const { return styles_.at(window.Handle()); }

    // Backend
    void Realize(Window& window) override;
    void MakeVisible(Window& window) override;
    void RunModal(Window& window) override;
    void Discard(Window& window) override;
    MessageResult ShowMessage(const Message& message) override;
    std::string ShowFileDialog(const FileDialog& dialog) override;
    void Yield() override;
    double TimeOfDay() override;
    void EndProgram() override { throw ProgramEnded(); }
    std::string ProgramFolder() override { return programFolder; }

    // SystemCalls
    bool GetVersionExA(VersionRecord& record) override;
    std::int32_t GetWindowLongA(WindowHandle window, int index) override;
    std::int32_t SetWindowLongA(WindowHandle window, int index, std::int32_t value) override;
    bool SetLayeredWindowAttributes(WindowHandle window, std::uint32_t colorKey, std::uint8_t alpha,
                                    std::uint32_t flags) override;
    std::intptr_t ShellExecuteA(WindowHandle owner, const std::string& verb, const std::string& file,
                                const std::string& parameters, const std::string& directory,
                                int showCommand) override;

 private:
    struct RunningTimer {
        Window* window;
        Timer* timer;
        std::chrono::milliseconds due;
    };
    RunningTimer* NextTimer();

    std::deque<MessageResult> messageResults_;
    std::deque<std::string> files_;
    std::deque<std::function<void(Window&)>> modalActs_;
    std::deque<std::function<void()>> events_;
    std::vector<RunningTimer> timers_;
    std::map<WindowHandle, LayeredStyle> styles_;
    WindowHandle lastHandle_ = 0;
    std::chrono::milliseconds now_{0};  ///< since midnight
};

}  // namespace quillmere
