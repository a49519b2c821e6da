#include "batch/batch_run.h"

#include "batch/first_look.h"
#include "batch/list_check.h"
#include "batch/load_list.h"
#include "batch/objections.h"
#include "batch/shared_names.h"
#include "engine/progress_display.h"
#include "report/page.h"
#include "report/text_report.h"
#include "system/time_of_day.h"

#include <array>
#include <string_view>
#include <utility>

namespace quillmere {

namespace {

constexpr auto progressInterval = std::chrono::milliseconds(100);
constexpr std::uint32_t yieldsPerLook = 16;
constexpr std::uint32_t yieldsPerClockCheck = 256;

ExitCode ExitCodeOf(PassOutcome outcome) {
    switch (outcome) {
        case PassOutcome::Busy:
        case PassOutcome::Refused:
            return exitRefused;
        case PassOutcome::Complete:
            return exitComplete;
        case PassOutcome::Halted:
            return exitHalted;
        case PassOutcome::Failed:
        case PassOutcome::Rejected:
            break;
    }
    return exitFailed;
}

RunOutcome OutcomeOf(ExitCode exitCode) {
    switch (exitCode) {
        case exitComplete:
            return RunOutcome::Complete;
        case exitRefused:
            return RunOutcome::Refused;
        case exitHalted:
            return RunOutcome::Halted;
        case exitFailed:
            break;
    }
    return RunOutcome::Failed;
}

Detail DetailFor(const BatchOptions& options) {
    if (!options.pageFile.empty()) return Detail::Maps;
    return options.json || !options.WritesOutput() ? Detail::Tables : Detail::Sums;
}

}  // namespace

BatchRun::BatchRun(const BatchOptions& options, FileSystem& system, BatchConsole& console,
                   std::function<bool()> interrupted)
    : options_(options),
      console_(console),
      failureLog_(console),
      interrupted_(std::move(interrupted)),
      fileSystem_(
          system,
          options.WritesOutput() ? BatchFileSystem::Writing::Replace : BatchFileSystem::Writing::Discard,
          options.settings.strInputFile),
      shared_(fileSystem_),
      pass_(shared_, options.task == Report::Task::Survey ? static_cast<Log&>(failureLog_) : console, *this,
            this) {
    // Without an output the pass would refuse its empty name. No file of this name is opened.
    if (!options_.WritesOutput()) options_.settings.strOutputFile = "(dry run)";
    options_.settings.lastLineTwice = false;
    if (options_.backup) fileSystem_.KeepOldFileAt(options_.settings.strOutputFile);
    report_.task = options_.task;
    report_.arguments = options_.arguments;
    report_.listFile = options_.listFile;
    report_.removedFile = options_.removedFile;
    report_.facts = Facts(DetailFor(options_));
}

ExitCode BatchRun::Run() {
    report_.started = std::chrono::system_clock::now();
    const auto start = std::chrono::steady_clock::now();
    const ExitCode exitCode = RunUnlessCancelled();
    report_.seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    FinishReport(exitCode);
    const ExitCode pageCode = !options_.pageFile.empty() && readToItsEnd_ ? WritePage() : exitComplete;
    if (pageCode == exitComplete) return exitCode;
    FinishReport(pageCode);
    return pageCode;
}

ExitCode BatchRun::RunUnlessCancelled() {
    try {
        return RunToItsEnd();
    } catch (const Cancelled&) {
        if (!halting_) Halt();
        console_.ShowProgress("");
        return exitHalted;
    }
}

ExitCode BatchRun::RunToItsEnd() {
    bool refused = false;
    if (IsFailure(TrapFailure([&] { refused = RefuseNames(); }))) return exitFailed;
    if (refused) return exitRefused;
    if (!options_.listFile.empty() && !LoadList()) return exitFailed;
    if (!LookAtInput()) return exitFailed;
    const PassOutcome outcome = pass_.Run(options_.settings);
    if (outcome != PassOutcome::Complete) return ExitCodeOf(outcome);
    report_.settings = options_.settings;
    switch (options_.task) {
        case Report::Task::Survey:
            LogSurvey(report_, console_);
            break;
        case Report::Task::DryRun:
            LogDryRun(report_, console_);
            console_.LogInfo(options_.pageFile.empty() ? "Dry run: nothing was written."
                                                       : "Dry run: nothing is written but the page.");
            if (Objects()) return exitFailed;
            break;
        case Report::Task::Cleaning:
            break;
    }
    return exitComplete;
}

/// Fills in what is known only at the end.
void BatchRun::FinishReport(ExitCode exitCode) {
    report_.facts.Finish();
    report_.settings = options_.settings;
    report_.outcome = OutcomeOf(exitCode);
    report_.exitCode = exitCode;
    report_.error = console_.FirstError();
    report_.warnings = console_.Warnings();
    report_.notes = console_.Notes();
}

/// The output is in place before the page, if there is one. A pipe is waited for until it has a reader.
ExitCode BatchRun::WritePage() {
    try {
        const auto failure =
            TrapFailure([&] { fileSystem_.WriteAtOnce(options_.pageFile, PageText(report_)); });
        if (failure) console_.FailureReported(*failure);
        return failure ? exitFailed : exitComplete;
    } catch (const Cancelled&) {
        console_.LogInfo("Halt command issued.");
        return exitHalted;
    }
}

/// Checks the names that only the batch program knows. The pass itself refuses an output that is the input.
bool BatchRun::RefuseNames() {
    const std::string& input = options_.settings.strInputFile;
    const std::string& output = options_.settings.strOutputFile;
    const std::string& list = options_.listFile;
    const std::string& removed = options_.removedFile;
    const std::string& page = options_.pageFile;
    const std::array<NamePair, 8> pairs = {{
        {removed, input, "INPUT and the removed file are one file."},
        {removed, output, "OUTPUT and the removed file are one file."},
        {list, output, "OUTPUT and the list are one file."},
        {list, removed, "The list and the removed file are one file."},
        {page, input, "INPUT and the page are one file."},
        {page, output, "OUTPUT and the page are one file."},
        {page, list, "The list and the page are one file."},
        {page, removed, "The removed file and the page are one file."},
    }};
    if (RefuseSharedNames(pairs, fileSystem_, console_)) return true;
    const std::array others = {input, list, removed, page};
    return options_.backup && RefuseBackup(output, others, fileSystem_, console_);
}

/// Reports the failure, if there is one, just as the pass reports its own.
bool BatchRun::IsFailure(const std::optional<Failure>& failure) {
    if (failure) ReportFailure(console_, *failure, passFailure);
    return failure.has_value();
}

bool BatchRun::LoadList() {
    if (!LoadAnyList(shared_, options_.listFile, console_)) return false;
    WarnOfList(WarningsOfList(options_.settings, shared_.filterSet));
    const RectangleTable& rectangles = std::as_const(shared_.filterSet).arrRectangles;
    report_.rectangles.assign(rectangles.begin(),
                              rectangles.begin() + static_cast<std::ptrdiff_t>(rectangles.EntryCount()));
    return true;
}

void BatchRun::WarnOfList(const std::vector<std::string>& warnings) {
    for (const std::string& warning : warnings)
        console_.Warning(options_.listFile + ": " + warning);
}

/// Finds out how the lines of INPUT end. Returns false when the user was told why INPUT is not to be read.
bool BatchRun::LookAtInput() {
    std::optional<LineEnd> lineEnd;
    const auto look = [&] {
        lineEnd =
            LookAtWorldScript({options_.settings.strInputFile, "INPUT", options_.lineEnd, options_.force},
                              fileSystem_, console_);
    };
    if (IsFailure(TrapFailure(look)) || !lineEnd) return false;
    options_.settings.lineEnd = *lineEnd;
    return true;
}

/// Returns whether something speaks against the output, and says what.
bool BatchRun::Objects() {
    const std::string objection = Objection(report_.facts, options_);
    if (objection.empty()) return false;
    console_.ErrorIn(options_.settings.strInputFile, objection);
    return true;
}

/// Called once per line scanned between blocks, so most calls do nothing.
void BatchRun::Yield() {
    if (yields_++ % yieldsPerLook == 0 && !halting_ && interrupted_()) {
        Halt();
    }
    if (yields_ % yieldsPerClockCheck == 0 && console_.ShowsProgress()) ShowProgressNow();
}

/// The log of a survey's pass does not say so.
void BatchRun::Halt() {
    halting_ = true;
    pass_.Halt();
    if (options_.task == Report::Task::Survey) console_.LogInfo("Halt command issued.");
}

void BatchRun::ShowProgressNow() {
    const auto now = std::chrono::steady_clock::now();
    if (now < nextProgress_) return;
    nextProgress_ = now + progressInterval;
    console_.ShowProgress(ProgressText(pass_.Processed()));
}

double BatchRun::TimeOfDay() {
    return SecondsSinceMidnight();
}

/// The pass refuses one file under two names, and lists without entries.
void BatchRun::Refuse(std::string_view /*title*/, std::string_view text) {
    const std::string advice =
        text == sameFileRefusal ? "INPUT and OUTPUT are one file."
                                : "The list " + options_.listFile + " has none before its first free entry.";
    console_.Error(std::string(text) + " " + advice);
}

void BatchRun::ShowPassActive(bool active) {
    if (!active) console_.ShowProgress("");
}

void BatchRun::PassBegins() {
    if (options_.removedFile.empty()) return;
    shared_.objWriter.SetFileName(options_.removedFile);
    removedNumber_ = shared_.objWriter.OpenFileForWrite(options_.settings.lineEnd);
}

void BatchRun::RecordJudged(const WorldItem& item, const Verdict& verdict) {
    report_.facts.RecordJudged(item, verdict);
    if (removedNumber_ && verdict.remove) WriteRemoved(item);
}

/// An empty record is no block, so nothing is written for it.
void BatchRun::WriteRemoved(const WorldItem& item) {
    if (item.Lines.Count() == 0) return;
    shared_.objWriter.WriteText(item.Lines.Text(), *removedNumber_);
}

/// Lines that get into no block go to the removed file just as they are, so that the input can be put
/// together again from the two files.
void BatchRun::LineSkipped(std::string_view line, std::uint64_t number) {
    report_.facts.LineSkipped(number);
    if (removedNumber_) shared_.objWriter.WriteNextLine(line, *removedNumber_);
}

/// Puts the removed blocks in place before the output, so that at any time each is in one of the two files.
/// A dry run objects only after its report.
bool BatchRun::OutputComplete() {
    readToItsEnd_ = true;
    if (options_.task == Report::Task::Survey) return true;
    for (const std::string& warning : WarningsOfPass(report_.facts, options_))
        console_.Warning(warning);
    ListUse use = UseOfList(options_.settings, shared_.filterSet, pass_.UseOfCodes());
    WarnOfList(use.warnings);
    if (!use.entry.empty()) console_.LogInfo(use.entry);
    report_.codesNotFound = std::move(use.notFound);
    if (options_.WritesOutput() && Objects()) return false;
    if (removedNumber_) shared_.objWriter.CloseWriteFile(*removedNumber_);
    fileSystem_.CommitAll();
    return true;
}

}  // namespace quillmere
