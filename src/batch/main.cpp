#include "batch/batch_run.h"
#include "system/console.h"

#include <iostream>
#include <string_view>

using namespace quillmere;

namespace {

/// Why what is printed would mix with the blocks that are written; empty when it would not.
std::string_view ReasonOfMixture(const BatchOptions& options) {
    const auto isWritten = [&options](bool (&isStream)(const std::string&)) {
        return isStream(options.settings.strOutputFile) || isStream(options.removedFile);
    };
    if (options.dryRun) return {};
    if (!options.quiet && isWritten(IsStandardOutput))
        return "standard output is where the log goes; --quiet keeps blocks and log apart";
    if (isWritten(IsStandardError))
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
    if (const std::string_view reason = ReasonOfMixture(options); !reason.empty()) {
        console.Error(reason);
        return exitRefused;
    }
    const ExitCode exitCode = BatchRun(options, SystemFileSystem(), console, InterruptRequested).Run();
    if (!std::cout) {
        console.Error("standard output cannot be written");
        return exitCode == exitComplete ? exitFailed : exitCode;
    }
    return exitCode;
}
