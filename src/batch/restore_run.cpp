#include "batch/restore_run.h"

#include "batch/first_look.h"
#include "batch/reported_run.h"
#include "batch/shared_names.h"
#include "report/text_report.h"

#include <array>
#include <limits>
#include <optional>
#include <utility>

namespace quillmere {

namespace {

constexpr std::uint32_t yieldsPerLook = 16;

}  // namespace

RestoreRun::RestoreRun(RestoreOptions options, FileSystem& system, BatchConsole& console,
                       std::function<bool()> interrupted)
    : options_(std::move(options)),
      console_(console),
      failureLog_(console),
      interrupted_(std::move(interrupted)),
      fileSystem_(system, BatchFileSystem::Writing::Replace, options_.inputFile),
      shared_(fileSystem_),
      reader_(shared_, failureLog_, *this) {
    if (options_.backup) fileSystem_.KeepOldFileAt(options_.outputFile);
}

ExitCode RestoreRun::Run() {
    return RunAndReport(console_, [this] { return RunToItsEnd(); });
}

ExitCode RestoreRun::RunToItsEnd() {
    if (RefuseNames()) return exitRefused;
    if (!LookAtFiles()) return exitFailed;
    WriteOutput();
    if (Objects()) return exitFailed;
    fileSystem_.CommitAll();
    Report();
    return exitComplete;
}

bool RestoreRun::RefuseNames() {
    const auto& [removed, input, output, lineEnd, backup, force, quiet] = options_;
    const std::array<NamePair, 3> pairs = {{
        {input, output, "INPUT and OUTPUT are one file."},
        {removed, output, "OUTPUT and REMOVED are one file."},
        {removed, input, "INPUT and REMOVED are one file."},
    }};
    if (RefuseSharedNames(pairs, fileSystem_, console_)) return true;
    const std::array others = {input, removed};
    return backup && RefuseBackup(output, others, fileSystem_, console_);
}

/// Returns false when the user was told why one of the files is not to be read.
bool RestoreRun::LookAtFiles() {
    const auto look = [this](const std::string& path, std::string_view argument) {
        return LookAtWorldScript({path, argument, options_.lineEnd, options_.force}, fileSystem_, console_);
    };
    const std::optional<LineEnd> removed = look(options_.removedFile, "REMOVED");
    const std::optional<LineEnd> input = removed ? look(options_.inputFile, "INPUT") : std::nullopt;
    if (!input) return false;
    removedLineEnd_ = *removed;
    lineEnd_ = *input;
    return true;
}

void RestoreRun::WriteOutput() {
    const WorldEnd end = OpenInput();
    OpenRemoved();
    shared_.objWriter.SetFileName(options_.outputFile);
    outputNumber_ = shared_.objWriter.OpenFileForWrite(lineEnd_);
    CopyInput(end.offset);
    for (int missing = end.lineEndsMissing; missing > 0; --missing)
        shared_.objWriter.WriteNextLine("", outputNumber_);
    WriteRemoved();
    CopyInput(std::numeric_limits<std::uint64_t>::max());
    if (end.sentinelFollows) facts_.SentinelCopied();
    shared_.objWriter.CloseWriteFile(outputNumber_);
}

/// Reads INPUT once to find where its blocks end, then opens it to be copied.
WorldEnd RestoreRun::OpenInput() {
    shared_.objReader.SetFileName(options_.inputFile);
    inputNumber_ = shared_.objReader.OpenFile(lineEnd_);
    LineReader& input = shared_.openFiles.Reader(inputNumber_);
    if (!input.CanBeReadAgain()) throw CannotBeReadTwice(options_.inputFile);
    const FileState state = input.State();
    const WorldEnd end = FindWorldEnd(input, [this] { Yield(); });
    shared_.objReader.CloseFile(inputNumber_);
    inputNumber_ = shared_.objReader.OpenFile(lineEnd_);
    CheckUnchanged(state, shared_.openFiles.Reader(inputNumber_).State(), options_.inputFile);
    return end;
}

/// Refuses a pipe, whose first bytes cannot be looked at.
void RestoreRun::OpenRemoved() {
    shared_.objReader.SetFileName(options_.removedFile);
    removedNumber_ = shared_.objReader.OpenFile(removedLineEnd_);
    if (!shared_.openFiles.Reader(removedNumber_).CanBeReadAgain())
        throw CannotBeReadTwice(options_.removedFile);
}

/// Copies the next `size` bytes of INPUT, or what is left of it.
void RestoreRun::CopyInput(std::uint64_t size) {
    LineReader& input = shared_.openFiles.Reader(inputNumber_);
    while (size > 0 && !input.AtEnd()) {
        if (interrupted_()) throw Cancelled();
        const std::string_view bytes = input.Unread().substr(0, size);
        shared_.objWriter.WriteText(bytes, outputNumber_);
        size -= bytes.size();
        input.Skip(bytes.size(), 0);
    }
}

/// Writes the blocks of REMOVED, and its lines that are in no block, in their order.
void RestoreRun::WriteRemoved() {
    WorldItem item(removedLineEnd_);
    while (!shared_.openFiles.AtEnd(removedNumber_)) {
        reader_.GetNextItem(removedNumber_, outputNumber_, item);
        // Written with the empty line that ends a block, it would become one.
        if (reader_.SkipAbandoned(item, removedLineEnd_) || item.Lines.Count() == 0) continue;
        facts_.RecordJudged(item, {});
        WriteBlock(item.Lines.Text());
    }
    shared_.objReader.CloseFile(removedNumber_);
}

void RestoreRun::WriteBlock(std::string_view lines) {
    if (removedLineEnd_ == lineEnd_) return shared_.objWriter.WriteText(lines, outputNumber_);
    const std::string_view end = LineEndText(removedLineEnd_);
    while (!lines.empty()) {
        const std::size_t size = lines.find(end);
        WriteLine(lines.substr(0, size));
        lines.remove_prefix(size + end.size());
    }
}

/// In a file with other line ends, a character of the line could end it too early.
void RestoreRun::WriteLine(std::string_view line) {
    if (removedLineEnd_ != lineEnd_ && line.find_first_of("\r\n") != std::string_view::npos) {
        throw Failure(FailureKind::InvalidProcedureCall, shared_.openFiles.Reader(removedNumber_).Position())
            .Advised("A line holds a character that ends lines of INPUT; give --lf or --crlf.");
    }
    shared_.objWriter.WriteNextLine(line, outputNumber_);
}

/// Returns whether something speaks against the output, and says what.
bool RestoreRun::Objects() {
    if (options_.force || facts_.endsWithSentinel) return false;
    console_.ErrorIn(
        options_.inputFile,
        "the last line is not [EOF], nor is it in REMOVED, so one may be cut short; --force goes on");
    return true;
}

void RestoreRun::Report() {
    std::string entry = "Restored " + Counted(static_cast<std::uint64_t>(facts_.all.blocks), "block");
    if (facts_.linesOutside > 0) entry += " and " + Counted(facts_.linesOutside, "line") + " outside blocks";
    console_.LogInfo(entry + ".");
}

/// Called once per line of INPUT, and per line of REMOVED between blocks, so most calls do nothing.
void RestoreRun::Yield() {
    if (yields_++ % yieldsPerLook == 0 && interrupted_()) throw Cancelled();
}

void RestoreRun::LineSkipped(std::string_view line, std::uint64_t number) {
    facts_.LineSkipped(number);
    WriteLine(line);
}

}  // namespace quillmere
