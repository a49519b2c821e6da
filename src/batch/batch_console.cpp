#include "batch/batch_console.h"

#include "batch/error_lines.h"

namespace quillmere {

namespace {

constexpr std::string_view programName = "quillmere-batch: ";

}  // namespace

void BatchConsole::LogInfo(std::string_view text) {
    if (style_.quiet) return;
    ShowProgress("");
    output_ << text << std::endl;
}

void BatchConsole::FailureReported(const Failure& failure) {
    if (!failed_) Error(ErrorLine(failure));
    failed_ = true;
}

void BatchConsole::Error(std::string_view text) {
    ShowProgress("");
    error_ << programName << text << std::endl;
}

void BatchConsole::Note(std::string_view text) {
    if (!style_.quiet) Error(text);
}

void BatchConsole::ShowProgress(std::string_view text) {
    if (!ShowsProgress() || (text.empty() && progressLength_ == 0)) return;
    error_ << '\r' << std::string(progressLength_, ' ') << '\r' << text << std::flush;
    progressLength_ = text.size();
}

}  // namespace quillmere
