#include "toolkit/headless/headless_backend.h"

#include <stdexcept>
#include <utility>

namespace quillmere {

namespace {

/// Takes what was queued first. If nothing was, the error message says that `what` has no answer.
template <class Answer>
Answer Take(std::deque<Answer>& queue, const std::string& what) {
    if (queue.empty()) throw std::logic_error("nobody queued an answer to " + what);
    Answer first = std::move(queue.front());
    queue.pop_front();
    return first;
}

}  // namespace

void HeadlessBackend::Realize(Window& window) {
    window.SetView(nullptr, calls_.AddWindow());
}

void HeadlessBackend::RunModal(Window& window) {
    Take(modalActs_, "the modal window " + window.Name())(window);
    if (window.IsShown()) throw std::logic_error("nobody closed the modal window " + window.Name());
}

void HeadlessBackend::Discard(Window& window) {
    calls_.RemoveWindow(window.Handle());
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

}  // namespace quillmere
