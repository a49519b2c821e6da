#pragma once

#include "base/log.h"

#include <ostream>
#include <string>
#include <string_view>
#include <vector>

namespace quillmere {

/// Prints the batch program's output, each text on one line. Log entries go to one stream as they come.
/// Errors, warnings and notes go to standard error, and so does a progress line when that is a terminal.
class BatchConsole : public Log {
 public:
    struct Style {
        bool log = true;        ///< print log entries
        bool notes = true;      ///< print notes and the progress line
        bool terminal = false;  ///< standard error is one
    };
    /// The streams must outlive the object.
    BatchConsole(std::ostream& output, std::ostream& error, Style style)
        : output_(output), error_(error), style_(style) {}

    void LogInfo(std::string_view text) override;
    void EmptyLog() override {}  ///< what is printed cannot be taken back
    /// Prints an error line for the first failure only: those that follow are of its making.
    void FailureReported(const Failure& failure) override;

    /// Prints why the run does not complete.
    void Error(std::string_view text);
    /// The same about a place: a path, or what Failure::Where names. "-" is shown as standard input.
    void ErrorIn(std::string_view place, std::string_view text);
    /// Prints what the user should look at although the run goes on.
    void Warning(std::string_view text);
    /// Prints a remark that is neither. It goes to standard error, to stay out of the report.
    void Note(std::string_view text);
    /// Replaces the progress line with `text`; an empty text removes the line.
    void ShowProgress(std::string_view text);
    bool ShowsProgress() const { return style_.terminal && style_.notes; }

    // What was said so far, whether it was printed or not.
    const std::string& FirstError() const { return firstError_; }
    const std::vector<std::string>& Warnings() const { return warnings_; }
    const std::vector<std::string>& Notes() const { return notes_; }

 private:
    void PrintError(std::string_view label, std::string_view text);

    std::ostream& output_;
    std::ostream& error_;
    Style style_;
    std::size_t progressLength_ = 0;
    bool failed_ = false;  ///< a failure was reported
    std::string firstError_;
    std::vector<std::string> warnings_;
    std::vector<std::string> notes_;
};

}  // namespace quillmere
