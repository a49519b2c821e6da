#include "engine/filter_pass.h"

#include "engine/block_filter.h"
#include "engine/block_parser.h"

#include <cmath>
#include <string>
#include <utility>

namespace quillmere {

namespace {

constexpr std::int64_t secondsPerDay = 86'400;

/// Whole seconds from `start` to `now`, both seconds since midnight; a pass may run across midnight.
std::int64_t ElapsedSeconds(double start, double now) {
    const auto elapsed = static_cast<std::int64_t>(now - start);
    return elapsed < 0 ? elapsed + secondsPerDay : elapsed;
}

}  // namespace

FilterPass::FilterPass(modGlobal& shared, Log& log, PassWindow& window, PassObserver* observer)
    : shared_(shared),
      log_(log),
      window_(window),
      observer_(observer != nullptr ? observer : &silentObserver_),
      reader_(shared, log, *this) {}

PassOutcome FilterPass::Run(const FilterSettings& settings) {
    if (!shared_.blnIdle) return PassOutcome::Busy;
    bool filesAreUsable = false;
    const auto checkFailure = TrapFailure([&] { filesAreUsable = CheckFiles(settings); });
    if (!checkFailure && !filesAreUsable) return PassOutcome::Refused;
    log_.EmptyLog();
    log_.LogInfo("Scanning filter options...");
    window_.ShowPassActive(true);

    PassOutcome outcome = PassOutcome::Failed;
    inputNumber_ = outputNumber_ = 0;
    const auto failure = checkFailure ? checkFailure : TrapFailure([&] { outcome = RunChecked(settings); });
    if (!failure) return outcome;
    BecomeIdle();
    for (const std::int32_t number : {inputNumber_, outputNumber_}) {
        if (shared_.openFiles.IsOpen(number)) IgnoreFailure([&] { shared_.openFiles.Close(number); });
    }
    ReportFailure(log_, *failure, passFailure);
    return PassOutcome::Failed;
}

void FilterPass::Halt() {
    log_.LogInfo("Halt command issued.");
    blnHalt_ = true;
}

/// Returns false when the user was told why the pass cannot run.
bool FilterPass::CheckFiles(const FilterSettings& settings) {
    if (settings.strInputFile.empty() || settings.strOutputFile.empty()) {
        window_.Refuse("Not Enuf Info", "You need to pick a file to load and save in order to run a report.");
        return false;
    }
    if (shared_.openFiles.System().SameFile(settings.strInputFile, settings.strOutputFile)) {
        window_.Refuse("nooOOO!!!", sameFileRefusal);
        return false;
    }
    return true;
}

/// Checks each filter and makes it ready before it looks at the next one, the last kind first: the first
/// thing that is wrong decides what the user is told. Returns false when a filter was refused.
bool FilterPass::PrepareFilters(const FilterSettings& settings) {
    decisions_.Clear();
    for (auto type = filterTypes.rbegin(); type != filterTypes.rend(); ++type) {
        const auto on = settings.filters.find(type->kind);
        if (on == settings.filters.end()) continue;
        const FilterSetting& setting = on->second;
        if (type->lacksValue(setting, shared_.filterSet)) {
            window_.Refuse("nooOOO!!!", type->refusal);
            window_.FocusFilter(type->kind);
            return false;
        }
        decisions_.Add(type->kind, setting.direction, type->makeTest(setting, shared_.filterSet, codeUse_),
                       settings.keepUnplaced && type->byPosition);
    }
    if (!settings.filters.empty() || !settings.needsFilter) return true;
    window_.Refuse("Is teh duh....", "You didn't chose any filters.");
    return false;
}

PassOutcome FilterPass::RunChecked(const FilterSettings& settings) {
    if (!PrepareFilters(settings)) {
        window_.ShowPassActive(false);
        return PassOutcome::Refused;
    }
    Announce(settings);

    shared_.blnIdle = false;
    OpenFiles(settings);
    log_.LogInfo("Processing file...");
    const double startTime = std::nearbyint(window_.TimeOfDay());
    RewindInput(settings, CopyPreamble());
    const bool complete = CopyBlocks(settings);

    // A pass reports only what is safe in the output, so the last write and the close come first.
    shared_.objWriter.CloseWriteFile(std::exchange(outputNumber_, 0));
    const bool accepted = complete && observer_->OutputComplete();
    if (accepted) Report(startTime);
    BecomeIdle();
    shared_.objReader.CloseFile(inputNumber_);
    if (!complete) return PassOutcome::Halted;
    return accepted ? PassOutcome::Complete : PassOutcome::Rejected;
}

void FilterPass::Announce(const FilterSettings& settings) {
    for (auto type = filterTypes.rbegin(); type != filterTypes.rend(); ++type)
        log_.LogInfo(Announcement(*type, settings));
    log_.LogInfo("Passed validation.");
}

/// Refuses an input that cannot be read from its beginning twice before the output is touched.
void FilterPass::OpenFiles(const FilterSettings& settings) {
    shared_.objReader.SetFileName(settings.strInputFile);
    shared_.objWriter.SetFileName(settings.strOutputFile);
    inputNumber_ = shared_.objReader.OpenFile(settings.lineEnd);
    const LineReader& input = shared_.openFiles.Reader(inputNumber_);
    if (!input.CanBeReadAgain()) throw CannotBeReadTwice(settings.strInputFile);
    inputState_ = input.State();
    outputNumber_ = shared_.objWriter.OpenFileForWrite(settings.lineEnd);
    observer_->PassBegins();
}

/// Copies the lines that are not empty up to the first one that begins with "[", then writes an empty line.
FilterPass::Preamble FilterPass::CopyPreamble() {
    Preamble preamble;
    bool lineFeeds = false;  // in the first line
    while (!preamble.headerFollows && !shared_.openFiles.AtEnd(inputNumber_)) {
        const std::string_view line = shared_.objReader.GetNextLine(inputNumber_);
        ++preamble.linesRead;
        preamble.headerFollows = IsHeader(line);
        if (preamble.linesRead == 1) lineFeeds = line.find('\n') != std::string_view::npos;
        if (!line.empty() && !preamble.headerFollows) shared_.objWriter.WriteNextLine(line, outputNumber_);
    }
    shared_.objWriter.WriteNextLine("", outputNumber_);
    if (lineFeeds && preamble.linesRead == 1 && shared_.openFiles.AtEnd(inputNumber_))
        log_.LogInfo("The whole file is one line, because its lines end with line feeds alone.");
    return preamble;
}

/// Goes back to the header line after the preamble, or to its last line. Even in a file whose state is the
/// same, the lines that begin with "[" are compared: its blocks or its preamble would be lost if they were
/// others.
void FilterPass::RewindInput(const FilterSettings& settings, const Preamble& preamble) {
    shared_.objReader.CloseFile(inputNumber_);
    shared_.objReader.SetFileName(settings.strInputFile);
    inputNumber_ = shared_.objReader.OpenFile(settings.lineEnd);
    CheckUnchanged(inputState_, shared_.openFiles.Reader(inputNumber_).State(), settings.strInputFile);
    bool same = true;
    const bool lastLineAgain = preamble.headerFollows || settings.lastLineTwice;
    const std::int64_t linesRead = preamble.linesRead - (lastLineAgain ? 1 : 0);
    for (std::int64_t line = 0; same && line < linesRead; ++line)
        same = !IsHeader(shared_.objReader.GetNextLine(inputNumber_));
    if (same && preamble.headerFollows) {
        same = !shared_.openFiles.AtEnd(inputNumber_) &&
               IsHeader(shared_.openFiles.Reader(inputNumber_).Unread());
    }
    if (!same)
        throw Failure(FailureKind::FileChanged, settings.strInputFile + " (changed while it was read)");
}

/// Returns whether the input was read to its end; false when the pass was halted.
bool FilterPass::CopyBlocks(const FilterSettings& settings) {
    removed_ = 0;
    WorldItem current(settings.lineEnd);
    while (!shared_.openFiles.AtEnd(inputNumber_)) {
        if (blnHalt_) return false;
        reader_.GetNextItem(inputNumber_, outputNumber_, current);
        ++lngProcessed_;
        const Verdict verdict = decisions_.Judge(current);
        observer_->RecordJudged(current, verdict);
        if (verdict.remove) {
            ++removed_;
        } else {
            shared_.objWriter.WriteText(current.Lines.Text(), outputNumber_);
        }
    }
    reader_.SkipRest();
    return true;
}

void FilterPass::Report(double startTime) {
    const std::int64_t elapsed = ElapsedSeconds(startTime, window_.TimeOfDay());
    const std::int64_t rate = elapsed == 0 ? lngProcessed_ : lngProcessed_ / elapsed;
    log_.LogInfo("Removed " + std::to_string(removed_) + " items.");
    log_.LogInfo("Averaged " + std::to_string(rate) + " objects a second.");
    log_.LogInfo("Completed in " + std::to_string(elapsed) + " seconds.");
    log_.LogInfo("Processed " + std::to_string(lngProcessed_) + " items.");
}

void FilterPass::BecomeIdle() {
    lngProcessed_ = 0;
    blnHalt_ = false;
    window_.ShowPassActive(false);
    shared_.blnIdle = true;
}

}  // namespace quillmere
