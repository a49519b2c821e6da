#pragma once

#include "base/failure_report.h"
#include "engine/decisions.h"
#include "engine/filter_settings.h"
#include "engine/item_reader.h"
#include "engine/mod_global.h"
#include "engine/world_item.h"

#include <cstdint>
#include <string_view>

namespace quillmere {

/// The last entry of the report of a failed pass.
inline constexpr std::string_view passFailure = "Error in filter engine.  Pffft....";

/// Why a pass from a file to itself is refused.
inline constexpr std::string_view sameFileRefusal = "You picked the same file to load and save.";

/// What a filter pass needs of the window that it runs in.
class PassWindow {
 public:
    virtual ~PassWindow() = default;
    /// Lets pending events run; called once per line scanned between blocks, so it has to be cheap.
    virtual void Yield() = 0;
    /// Time of day in seconds since midnight, with a fraction.
    virtual double TimeOfDay() = 0;
    /// Shows why Run does nothing: an information box with a single OK button.
    virtual void Refuse(std::string_view title, std::string_view text) = 0;
    /// Moves the keyboard focus to the text that a filter of that kind compares with, if it has one.
    virtual void FocusFilter(FilterKind kind) = 0;
    /// While a pass is active, the list editor is disabled and Halt is enabled; otherwise the reverse.
    virtual void ShowPassActive(bool active) = 0;
};

/// What a caller may add to a pass. A failure thrown by any of these ends the pass as a failed one.
class PassObserver {
 public:
    virtual ~PassObserver() = default;
    /// Both files are open.
    virtual void PassBegins() {}
    /// A record was read and judged. At the end of the file `item` may be the empty record.
    virtual void RecordJudged(const WorldItem& /*item*/, const Verdict& /*verdict*/) {}
    /// As for a ScanObserver.
    virtual void LineSkipped(std::string_view /*line*/, std::uint64_t /*number*/) {}
    virtual void SentinelCopied() {}
    /// The output holds every kept block and is closed; the report comes next. Returns whether it may: if
    /// not, the pass has failed, and the observer has said why.
    virtual bool OutputComplete() { return true; }
};

enum class PassOutcome {
    Busy,      ///< another pass runs: nothing was done
    Refused,   ///< the settings cannot be run: the user was told, no file was opened
    Complete,  ///< the input was read to its end, the output is whole, the report is in the log
    Halted,    ///< stopped between two blocks on request, no report
    Failed,    ///< the failure is in the log; the output may hold what was written before it
    Rejected   ///< the observer did not accept the output, no report
};

/// The program's main work: copies a world script block by block and leaves out what the filters select. Made
/// once and run any number of times; everything runs on the caller's thread.
class FilterPass : private ScanObserver {
 public:
    /// All of them must outlive the object; `observer` may be null.
    FilterPass(modGlobal& shared, Log& log, PassWindow& window, PassObserver* observer = nullptr);

    PassOutcome Run(const FilterSettings& settings);
    /// Asks the running pass, or the next one, to stop before its next block.
    void Halt();
    /// Records read by the running pass; 0 between passes.
    std::int64_t Processed() const { return lngProcessed_; }
    /// What the blocks read so far, or by the last pass, had to do with the item list, if that was in use.
    const CodeUse& UseOfCodes() const { return codeUse_; }

 private:
    bool CheckFiles(const FilterSettings& settings);
    bool PrepareFilters(const FilterSettings& settings);
    void Announce(const FilterSettings& settings);
    PassOutcome RunChecked(const FilterSettings& settings);
    void OpenFiles(const FilterSettings& settings);
    struct Preamble {
        std::int64_t linesRead = 0;  ///< the header line that follows included
        bool headerFollows = false;
    };
    Preamble CopyPreamble();
    void RewindInput(const FilterSettings& settings, const Preamble& preamble);
    bool CopyBlocks(const FilterSettings& settings);
    void Report(double startTime);
    void BecomeIdle();

    // ScanObserver
    void Yield() override { window_.Yield(); }
    void LineSkipped(std::string_view line, std::uint64_t number) override {
        observer_->LineSkipped(line, number);
    }
    void SentinelCopied() override { observer_->SentinelCopied(); }

    modGlobal& shared_;
    Log& log_;
    PassWindow& window_;
    PassObserver silentObserver_;
    PassObserver* observer_;  ///< never null
    ItemReader reader_;
    CodeUse codeUse_;
    Decisions decisions_;

    std::int32_t inputNumber_ = 0;
    FileState inputState_;  ///< when it was opened first
    std::int32_t outputNumber_ = 0;
    std::int64_t removed_ = 0;
    std::int64_t lngProcessed_ = 0;
    bool blnHalt_ = false;
};

}  // namespace quillmere
