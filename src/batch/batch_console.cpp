#include "batch/batch_console.h"

#include "batch/error_lines.h"

namespace quillmere {

void BatchConsole::LogInfo(std::string_view text) {
    if (!style_.log) return;
    ShowProgress("");
    output_ << text << std::endl;
}

void BatchConsole::FailureReported(const Failure& failure) {
    if (!failed_) Error(ErrorLine(failure));
    failed_ = true;
}

void BatchConsole::Error(std::string_view text) {
    if (firstError_.empty()) firstError_ = text;
    PrintError("", text);
}

void BatchConsole::ErrorIn(std::string_view place, std::string_view text) {
    Error(ShownPlace(place) + ": " + std::string(text));
}

void BatchConsole::Warning(std::string_view text) {
    warnings_.emplace_back(text);
    PrintError("warning: ", text);
}

void BatchConsole::Note(std::string_view text) {
    notes_.emplace_back(text);
    if (style_.notes) PrintError("note: ", text);
}

void BatchConsole::PrintError(std::string_view label, std::string_view text) {
    ShowProgress("");
    error_ << "quillmere-batch: " << label << text << std::endl;
}

void BatchConsole::ShowProgress(std::string_view text) {
    if (!ShowsProgress() || (text.empty() && progressLength_ == 0)) return;
    error_ << '\r' << std::string(progressLength_, ' ') << '\r' << text << std::flush;
    progressLength_ = text.size();
}

}  // namespace quillmere
