#pragma once

#include "base/log.h"

#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace quillmere {

/// The two texts through which the program talks to its user outside message boxes: the Status log, newest
/// entry first, and the one-line info line. Adding an entry costs the same however many there are.
class StatusLog : public Log {
 public:
    /// Called after each change, so that a window can show the text that changed.
    std::function<void()> OnLogChanged = [] {};
    std::function<void()> OnInfoChanged = [] {};

    void LogInfo(std::string_view text) override;
    void EmptyLog() override;
    /// Replaces the info line.
    void ShowInfo(std::string_view text);

    /// The whole Status log: the entries from the newest to the oldest, each followed by CR LF CR LF.
    std::string Text() const;
    const std::string& InfoLine() const { return infoLine_; }

 private:
    std::vector<std::string> entries_;  ///< oldest first
    std::string infoLine_ = "(Pacing like a mindless robot)";
};

}  // namespace quillmere
