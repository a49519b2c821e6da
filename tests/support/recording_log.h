#pragma once

#include "base/failure_report.h"

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

/// The three log entries that report a failure.
inline std::vector<std::string> Report(FailureKind kind, std::string_view moduleLine) {
    RecordingLog log;
    ReportFailure(log, Failure(kind), moduleLine);
    return log.entries;
}

inline const char* const passModule = "Error in filter engine.  Pffft....";
inline const char* const readerModule = "Error in item loader.  Pffft....";
inline const char* const loadModule = "Error in list loading module.  Pffft....";
inline const char* const saveModule = "Error in list saving module.  Pffft....";

}  // namespace quillmere::test
