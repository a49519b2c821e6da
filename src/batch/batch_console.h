#pragma once

#include "base/failure_report.h"

#include <ostream>
#include <string>
#include <string_view>

namespace quillmere {

/// What the batch program prints: log entries on standard output as they come, one a line; errors and, on a
/// terminal, a progress line on standard error.
class BatchConsole : public Log {
 public:
    struct Style {
        bool quiet = false;     ///< errors only
        bool progress = false;  ///< standard error is a terminal
    };
    /// The streams must outlive the object.
    BatchConsole(std::ostream& output, std::ostream& error, Style style)
        : output_(output), error_(error), style_(style) {}

    void LogInfo(std::string_view text) override;
    void EmptyLog() override {}  ///< what is printed stays printed
    /// Prints an error line with the description and what the failure is about.
    void FailureReported(const Failure& failure) override;

    void Error(std::string_view text);
    /// A remark that is no error: on standard error, so that it stays out of the report.
    void Note(std::string_view text);
    /// Shows `text` in place of the progress line shown before; an empty text removes the line.
    void ShowProgress(std::string_view text);
    bool ShowsProgress() const { return style_.progress && !style_.quiet; }

 private:
    std::ostream& output_;
    std::ostream& error_;
    Style style_;
    std::size_t progressLength_ = 0;
};

}  // namespace quillmere
