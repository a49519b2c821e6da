#pragma once

#include "base/log.h"

namespace quillmere {

/// A log for work that is reported elsewhere: it passes on failures only.
class FailureLog : public Log {
 public:
    /// `log` must outlive the object.
    explicit FailureLog(Log& log) : log_(log) {}
    void LogInfo(std::string_view /*text*/) override {}
    void EmptyLog() override {}
    void FailureReported(const Failure& failure) override { log_.FailureReported(failure); }

 private:
    Log& log_;
};

}  // namespace quillmere
