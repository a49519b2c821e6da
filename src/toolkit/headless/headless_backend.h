#pragma once

#include "system/emulated_system_calls.h"
#include "toolkit/backend.h"

#include <deque>
#include <functional>
#include <string>
#include <vector>

namespace quillmere {

/// Thrown by the headless backend where the others end the process.
struct ProgramEnded {};

/// The backend without a screen, for tests only; the programs do not use it. The caller raises events by
/// calling the controls' functions for them, and queues the answers to message boxes and file dialogs. Its
/// clock stands still, and timers do not tick. A box or dialog without a queued answer, or a modal window
/// without a queued act, throws std::logic_error.
class HeadlessBackend : public Backend {
 public:
    // For the caller.

    void QueueMessageResult(MessageResult result) { messageResults_.push_back(result); }
    void QueueFile(std::string path) { files_.push_back(std::move(path)); }
    /// `act` is called while the next modal window is open, and has to close it.
    void QueueModal(std::function<void(Window&)> act) { modalActs_.push_back(std::move(act)); }
    /// `act` is called once, at the next Yield.
    void QueueEvent(std::function<void()> act) { events_.push_back(std::move(act)); }
    bool NothingQueued() const {
        return messageResults_.empty() && files_.empty() && modalActs_.empty() && events_.empty();
    }

    std::vector<Message> messages;    ///< boxes shown so far
    std::vector<FileDialog> dialogs;  ///< file dialogs shown so far
    int alerts = 0;                   ///< how often a window has asked for attention

    // Backend
    void Realize(Window& window) override;
    void MakeVisible(Window& /*window*/) override {}
    void RunModal(Window& window) override;
    void Discard(Window& window) override;
    MessageResult ShowMessage(const Message& message) override;
    std::string ShowFileDialog(const FileDialog& dialog) override;
    void AskForAttention(Window& /*window*/) override { ++alerts; }
    void Yield() override;
    double TimeOfDay() override { return 0; }
    void EndProgram() override { throw ProgramEnded(); }
    EmulatedSystemCalls& Calls() override { return calls_; }

 private:
    EmulatedSystemCalls calls_{EmulatedSystemCalls::Actions{}};
    std::deque<MessageResult> messageResults_;
    std::deque<std::string> files_;
    std::deque<std::function<void(Window&)>> modalActs_;
    std::deque<std::function<void()>> events_;
};

}  // namespace quillmere
