#pragma once

#include "batch/batch_console.h"
#include "batch/batch_file_system.h"
#include "batch/batch_options.h"
#include "batch/exit_codes.h"
#include "batch/pass_watch.h"
#include "batch/removal_counts.h"
#include "engine/filter_pass.h"
#include "engine/mod_global.h"

#include <chrono>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace quillmere {

/// One run of the batch program, from the options to the exit code: loads the list, runs the same filter pass
/// as the main window, and puts the output in place when the pass is complete.
class BatchRun : private PassWindow, private PassObserver {
 public:
    /// `interrupted` tells whether the user asked to stop; it is called often. `system` and `console` must
    /// outlive the object.
    BatchRun(const BatchOptions& options, FileSystem& system, BatchConsole& console,
             std::function<bool()> interrupted);

    ExitCode Run();

 private:
    ExitCode RunToItsEnd();
    bool RefuseSharedNames();
    bool RefuseBackup();
    bool IsFailure(const std::optional<Failure>& failure);
    bool LoadList();
    bool LookAtInput();
    void Warn(const std::vector<std::string>& warnings);
    void NoteUnusualLineEnds(std::string_view sample);
    bool Objects();
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
    void SentinelCopied() override { watch_.SentinelCopied(); }
    bool OutputComplete() override;

    BatchOptions options_;
    BatchConsole& console_;
    std::function<bool()> interrupted_;
    BatchFileSystem fileSystem_;
    modGlobal shared_;
    FilterPass pass_;
    PassWatch watch_;
    RemovalCounts counts_;
    std::optional<std::int32_t> removedNumber_;  ///< file number of the removed blocks' file
    bool halting_ = false;
    std::uint32_t yields_ = 0;
    std::chrono::steady_clock::time_point nextProgress_{};
};

}  // namespace quillmere
