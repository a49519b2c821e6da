#include "batch/batch_run.h"
#include "batch/command_line.h"
#include "report/json_report.h"
#include "system/console.h"

#include <nlohmann/json.hpp>

#include <iostream>
#include <string_view>

using namespace quillmere;

namespace {

/// Why what is printed would mix with the blocks that are written; empty when it would not.
std::string_view ReasonOfMixture(const BatchOptions& options) {
    if (!options.WritesOutput()) return {};
    const auto isWritten = [&options](bool (&isStream)(const std::string&)) {
        return isStream(options.settings.strOutputFile) || isStream(options.removedFile);
    };
    const bool prints = options.json || !options.quiet;
    if (prints && isWritten(IsStandardOutput))
        return "standard output is where the log goes; --quiet keeps blocks and log apart";
    const bool outputIsStream = options.settings.strOutputFile == standardStream;
    if (isWritten(IsStandardError) || (outputIsStream && StandardStreamsAreOne()))
        return "errors and warnings would go into OUTPUT or the removed file; send them elsewhere";
    return {};
}

/// Whether the log and the errors are printed to streams that lead to neither INPUT nor the list, which the
/// run would otherwise change. If one of them does, says so on the other.
bool LeavesReadFilesAlone(const BatchOptions& options) {
    const auto isRead = [&options](bool (&isStream)(const std::string&)) {
        return isStream(options.settings.strInputFile) || isStream(options.listFile);
    };
    const bool outputIsRead = isRead(IsStandardOutput);
    const bool errorIsRead = isRead(IsStandardError);
    if (!outputIsRead && !errorIsRead) return true;
    std::ostream& sayTo = errorIsRead ? std::cout : std::cerr;
    if (!outputIsRead || !errorIsRead) {
        BatchConsole(sayTo, sayTo, {})
            .Error("the log or the errors would go into INPUT or the list; send them to another file");
    }
    return false;
}

int End(const EarlyExit& end) {
    std::cout << end.output << std::flush;
    std::cerr << end.error;
    return std::cout ? end.exitCode : exitFailed;
}

/// A cleaning, a dry run or a survey.
int Perform(const BatchOptions& options) {
    if (!LeavesReadFilesAlone(options)) return exitRefused;
    CatchInterrupts();
    const bool blocksGoToOutput = options.WritesOutput() && options.settings.strOutputFile == standardStream;
    BatchConsole console(blocksGoToOutput ? std::cerr : std::cout, std::cerr,
                         {!options.quiet && !options.json, !options.quiet, StandardErrorIsTerminal()});
    if (const std::string reason(ReasonOfMixture(options)); !reason.empty()) {
        console.Error(reason);
        if (!blocksGoToOutput) std::cout << JsonOfRefusal(options.arguments, reason);
        return exitRefused;
    }
    BatchRun run(options, SystemFileSystem(), console, InterruptRequested);
    const ExitCode exitCode = run.Run();
    if (options.json) std::cout << JsonText(JsonReport(run.Result()), JsonLayout::Lines) << std::flush;
    if (!std::cout) {
        console.Error("standard output cannot be written");
        return exitCode == exitComplete ? exitFailed : exitCode;
    }
    return exitCode;
}

}  // namespace

int main(int argc, char** argv) {
    PrepareTerminal();
    const auto commandLine = ParseCommandLine(ProgramArguments(argc, argv));
    if (const auto* const end = std::get_if<EarlyExit>(&commandLine)) return End(*end);
    return Perform(std::get<BatchOptions>(commandLine));
}
