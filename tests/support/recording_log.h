#pragma once

#include "base/failure_report.h"

#include <map>
#include <string>
#include <vector>

namespace quillmere::test {

/// Keeps the entries, oldest first, and where the first failure occurred.
class RecordingLog : public Log {
 public:
    std::vector<std::string> entries;
    std::string failedWhere;

    void LogInfo(std::string_view text) override { entries.emplace_back(text); }
    void EmptyLog() override {
        entries.clear();
        failedWhere.clear();
    }
    void FailureReported(const Failure& failure) override {
        if (failedWhere.empty()) failedWhere = failure.Where();
    }
};

/// The description and the number of each kind, as users read and quote them.
inline const std::map<FailureKind, std::pair<std::string, std::string>> shownFailures = {
    {FailureKind::InvalidProcedureCall, {"Invalid procedure call or argument", "5"}},
    {FailureKind::Overflow, {"Overflow", "6"}},
    {FailureKind::OutOfMemory, {"Out of memory", "7"}},
    {FailureKind::SubscriptOutOfRange, {"Subscript out of range", "9"}},
    {FailureKind::TypeMismatch, {"Type mismatch", "13"}},
    {FailureKind::BadFileNameOrNumber, {"Bad file name or number", "52"}},
    {FailureKind::FileNotFound, {"File not found", "53"}},
    {FailureKind::DeviceIoError, {"Device I/O error", "57"}},
    {FailureKind::DiskFull, {"Disk full", "61"}},
    {FailureKind::InputPastEnd, {"Input past end of file", "62"}},
    {FailureKind::TooManyFiles, {"Too many files", "67"}},
    {FailureKind::PermissionDenied, {"Permission denied", "70"}},
    {FailureKind::PathFileAccessError, {"Path/File access error", "75"}},
    {FailureKind::PathNotFound, {"Path not found", "76"}},
    {FailureKind::FileChanged, {"File changed while it was read", "77"}},
};

/// The three log entries that report a failure.
inline std::vector<std::string> Report(FailureKind kind, const std::string& moduleLine) {
    const auto& [description, number] = shownFailures.at(kind);
    return {"Oops description: " + description, "Oops number: " + number, moduleLine};
}

inline const char* const passModule = "Error in filter engine.  Pffft....";
inline const char* const readerModule = "Error in item loader.  Pffft....";
inline const char* const loadModule = "Error in list loading module.  Pffft....";
inline const char* const saveModule = "Error in list saving module.  Pffft....";

}  // namespace quillmere::test
