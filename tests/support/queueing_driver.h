#pragma once

#include "tests/support/backend_driver.h"

#include <gtest/gtest.h>

#include <deque>
#include <functional>
#include <optional>
#include <string>
#include <utility>

namespace quillmere::test {

/// Common to the drivers of backends with a screen: keeps what a test has queued until a box, dialog or
/// window appears on the screen. Fails the test if none appears, or if one appears for which nothing is
/// queued.
class QueueingDriver : public BackendDriver {
 public:
    ~QueueingDriver() override {
        if (!results_.empty() || !files_.empty() || !modalActs_.empty() || !yieldActs_.empty())
            ADD_FAILURE() << "an answer or event was queued that nobody asked for";
    }
    void AnswerMessage(MessageResult result) override { results_.push_back(result); }
    void AnswerFileDialog(const std::string& path) override { files_.push_back(path); }
    void WhenModalOpens(std::function<void(Window&)> act) override { modalActs_.push_back(std::move(act)); }
    void WhenYielding(std::function<void()> act) override { yieldActs_.push_back(std::move(act)); }

 protected:
    /// Records the box that is shown, and returns the answer to it, or nothing if none is queued.
    std::optional<MessageResult> AnswerTo(const SeenMessage& message) {
        messages.push_back(message);
        const std::optional<MessageResult> result = Take(results_);
        if (!result)
            ADD_FAILURE() << "no answer was queued to the box \"" << message.title << ": " << message.text
                          << '"';
        return result;
    }
    /// The answer to the question whether an existing file may be replaced.
    bool MayReplace() {
        const std::optional<MessageResult> result = Take(results_);
        if (!result) ADD_FAILURE() << "nobody said whether a file may be replaced";
        return result == MessageResult::Yes;
    }
    /// The path to enter in the dialog that is shown; empty to cancel it.
    std::string PathFor(const std::string& shownTitle) {
        dialogs.back().title = shownTitle;
        const std::optional<std::string> path = Take(files_);
        if (!path) ADD_FAILURE() << "nobody queued an answer to the file dialog \"" << shownTitle << '"';
        return path.value_or("");
    }
    /// Does what was queued for the modal window that is open, and makes sure that it is closed.
    void ActIn(Window& window) {
        const auto act = Take(modalActs_);
        if (!act) ADD_FAILURE() << "nobody waited for the modal window " << window.Name();
        if (act) (*act)(window);
        if (act && window.IsShown()) ADD_FAILURE() << "nobody closed the modal window " << window.Name();
        window.Close();
    }
    /// What was queued for the next Yield.
    std::optional<std::function<void()>> TakeYieldAct() { return Take(yieldActs_); }

 private:
    /// Takes what was queued first, if there is anything.
    template <class Answer>
    static std::optional<Answer> Take(std::deque<Answer>& queue) {
        if (queue.empty()) return std::nullopt;
        Answer first = std::move(queue.front());
        queue.pop_front();
        return first;
    }

    std::deque<MessageResult> results_;
    std::deque<std::string> files_;
    std::deque<std::function<void(Window&)>> modalActs_;
    std::deque<std::function<void()>> yieldActs_;
};

}  // namespace quillmere::test
