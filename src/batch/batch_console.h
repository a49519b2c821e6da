#pragma once

#include "base/log.h"

#include <ostream>
#include <string>
#include <string_view>

namespace quillmere {

/// Prints the batch program's output. Log entries go to standard output, one per line, as they come. Errors
/// go to standard error, and so does a progress line when that is a terminal.
class BatchConsole : public Log {
 public:
    struct Style {
        bool quiet = false;     ///< errors and warnings only
        bool progress = false;  ///< standard error is a terminal
    };
    /// The streams must outlive the object.
    BatchConsole(std::ostream& output, std::ostream& error, Style style)
        : output_(output), error_(error), style_(style) {}

    void LogInfo(std::string_view text) override;
    void EmptyLog() override {}  ///< what is printed cannot be taken back
    /// Prints an error line for the first failure only: those that follow are of its making.
    void FailureReported(const Failure& failure) override;

    void Error(std::string_view text);
    /// Prints a remark that is not an error. It goes to standard error, to stay out of the report.
    void Note(std::string_view text);
    /// Replaces the progress line with `text`; an empty text removes the line.
    void ShowProgress(std::string_view text);
    bool ShowsProgress() const { return style_.progress && !style_.quiet; }

 private:
    std::ostream& output_;
    std::ostream& error_;
    Style style_;
    std::size_t progressLength_ = 0;
    bool failed_ = false;  ///< a failure was reported
};

}  // namespace quillmere
