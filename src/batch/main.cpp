#include "batch/batch_run.h"
#include "system/console.h"

#include <iostream>

using namespace quillmere;

namespace {

bool MixesWithTheLog(const BatchOptions& options) {
    return IsStandardOutput(options.settings.strOutputFile) || IsStandardOutput(options.removedFile);
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
