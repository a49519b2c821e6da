#include "batch/batch_run.h"
#include "system/console.h"

#include <iostream>

using namespace quillmere;

namespace {

bool MixesWithTheLog(const BatchOptions& options) {
    return IsStandardOutput(options.settings.strOutputFile) || IsStandardOutput(options.removedFile);
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

}  // namespace

int main(int argc, char** argv) {
    PrepareTerminal();
    const auto parsed = ParseBatchOptions(ProgramArguments(argc, argv));
    if (const auto* const end = std::get_if<EarlyExit>(&parsed)) {
        std::cout << end->output << std::flush;
        std::cerr << end->error;
        return std::cout ? end->exitCode : exitFailed;
    }
    const auto& options = std::get<BatchOptions>(parsed);
    if (!LeavesReadFilesAlone(options)) return exitRefused;
    CatchInterrupts();
    BatchConsole console(std::cout, std::cerr, {options.quiet, StandardErrorIsTerminal()});
    if (!options.quiet && !options.dryRun && MixesWithTheLog(options)) {
        console.Error("standard output is where the log goes; --quiet keeps blocks and log apart");
        return exitRefused;
    }
    const ExitCode exitCode = BatchRun(options, SystemFileSystem(), console, InterruptRequested).Run();
    if (!std::cout) {
        console.Error("standard output cannot be written");
        return exitCode == exitComplete ? exitFailed : exitCode;
    }
    return exitCode;
}
