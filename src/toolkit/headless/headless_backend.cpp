#include "toolkit/headless/headless_backend.h"

#include <algorithm>
#include <stdexcept>
#include <utility>

namespace quillmere {

namespace {

constexpr std::uint32_t versionRecordSize = 148;  // bytes

/// Takes what was queued first; `what` names a prompt that nobody queued an answer for.
template <class Answer>
Answer Take(std::deque<Answer>& queue, const std::string& what) {
    if (queue.empty()) throw std::logic_error("nobody queued an answer to " + what);
    Answer first = std::move(queue.front());
    queue.pop_front();
    return first;
}

}  // namespace

void HeadlessBackend::Advance(std::chrono::milliseconds time) {
    const auto end = now_ + time;
    for (RunningTimer* next = NextTimer(); next != nullptr && next->due <= end; next = NextTimer()) {
        now_ = next->due;
        next->due += next->timer->Interval();
        next->timer->OnTick();
    }
    now_ = end;
}

HeadlessBackend::RunningTimer* HeadlessBackend::NextTimer() {
    const auto next =
        std::min_element(timers_.begin(), timers_.end(),
                         [](const auto& one, const auto& other) { return one.due < other.due; });
    return next == timers_.end() ? nullptr : &*next;
}

void HeadlessBackend::Realize(Window& window) {
    window.SetView(nullptr, ++lastHandle_);
    styles_[window.Handle()] = {};
    for (Timer* const timer : window.Timers())
        timers_.push_back({&window, timer, now_ + timer->Interval()});
}

void HeadlessBackend::MakeVisible(Window& /*window*/) {}

void HeadlessBackend::RunModal(Window& window) {
    Take(modalActs_, "the modal window " + window.Name())(window);
    if (window.IsShown()) throw std::logic_error("nobody closed the modal window " + window.Name());
}

void HeadlessBackend::Discard(Window& window) {
    std::erase_if(timers_, [&window](const RunningTimer& running) { return running.window == &window; });
    styles_.erase(window.Handle());
    window.SetView(nullptr, 0);
}

MessageResult HeadlessBackend::ShowMessage(const Message& message) {
    messages.push_back(message);
    return Take(messageResults_, "the box \"" + message.title + ": " + message.text + "\"");
}

std::string HeadlessBackend::ShowFileDialog(const FileDialog& dialog) {
    dialogs.push_back(dialog);
    return WithDefaultExtension(dialog, Take(files_, "the file dialog \"" + dialog.title + "\""));
}

void HeadlessBackend::Yield() {
    if (!events_.empty()) Take(events_, "nothing")();
}

double HeadlessBackend::TimeOfDay() {
    return std::chrono::duration<double>(now_).count();
}

bool HeadlessBackend::GetVersionExA(VersionRecord& record) {
    if (record.dwOSVersionInfoSize != versionRecordSize || majorVersion == 0) return false;
    record.dwMajorVersion = majorVersion;
    return true;
}

std::int32_t HeadlessBackend::GetWindowLongA(WindowHandle window, int index) {
    return index == GWL_EXSTYLE_INDEX ? styles_.at(window).exStyle : 0;
}

std::int32_t HeadlessBackend::SetWindowLongA(WindowHandle window, int index, std::int32_t value) {
    if (index != GWL_EXSTYLE_INDEX) return 0;
    return std::exchange(styles_.at(window).exStyle, value);
}

bool HeadlessBackend::SetLayeredWindowAttributes(WindowHandle window, std::uint32_t /*colorKey*/,
                                                 std::uint8_t alpha, std::uint32_t flags) {
    if ((flags & LWA_ALPHA_FLAG) != 0) styles_.at(window).alpha = alpha;
    return true;
}

std::intptr_t HeadlessBackend::ShellExecuteA(WindowHandle /*owner*/, const std::string& /*verb*/,
                                             const std::string& file, const std::string& /*parameters*/,
                                             const std::string& /*directory*/, int /*showCommand*/) {
    constexpr std::intptr_t success = 33;
    opened.push_back(file);
    return success;
}

}  // namespace quillmere
