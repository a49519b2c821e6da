#pragma once

#include "batch/batch_console.h"
#include "batch/batch_file_system.h"
#include "batch/batch_options.h"
#include "batch/exit_codes.h"
#include "batch/failure_log.h"
#include "engine/filter_pass.h"
#include "engine/mod_global.h"
#include "report/report.h"

#include <chrono>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace quillmere {

/// One cleaning, dry run or survey, from the options to the exit code: loads the list, runs the same filter
/// pass as the main window, puts the output in place when the pass is complete, and reports.
class BatchRun : private PassWindow, private PassObserver {
 public:
    /// `interrupted` tells whether the user asked to stop; it is called often. `system` and `console` must
    /// outlive the object.
    BatchRun(const BatchOptions& options, FileSystem& system, BatchConsole& console,
             std::function<bool()> interrupted);

    ExitCode Run();
    /// What there is to report, once Run has returned.
    const Report& Result() const { return report_; }

 private:
    ExitCode RunUnlessCancelled();
    ExitCode RunToItsEnd();
    void FinishReport(ExitCode exitCode);
    ExitCode WritePage();
    bool RefuseNames();
    bool IsFailure(const std::optional<Failure>& failure);
    bool LoadList();
    bool LookAtInput();
    void WarnOfList(const std::vector<std::string>& warnings);
    bool Objects();
    void Halt();
    void ShowProgressNow();
    void WriteRemoved(const WorldItem& item);

    // PassWindow
    void Yield() override;
    double TimeOfDay() override;
    void Refuse(std::string_view title, std::string_view text) override;
    void FocusFilter(FilterKind /*kind*/) override {}
    void ShowPassActive(bool active) override;

    // PassObserver
    void PassBegins() override;
    void RecordJudged(const WorldItem& item, const Verdict& verdict) override;
    void LineSkipped(std::string_view line, std::uint64_t number) override;
    void SentinelCopied() override { report_.facts.SentinelCopied(); }
    bool OutputComplete() override;

    BatchOptions options_;
    BatchConsole& console_;
    FailureLog failureLog_;  ///< of a survey's pass, which reports for itself
    std::function<bool()> interrupted_;
    BatchFileSystem fileSystem_;
    modGlobal shared_;
    FilterPass pass_;
    Report report_;
    bool readToItsEnd_ = false;                  ///< the facts are those of the whole input
    std::optional<std::int32_t> removedNumber_;  ///< file number of the removed blocks' file
    bool halting_ = false;
    std::uint32_t yields_ = 0;
    std::chrono::steady_clock::time_point nextProgress_{};
};

}  // namespace quillmere
