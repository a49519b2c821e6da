#include "batch/batch_run.h"
#include "batch/batch_system.h"

#include <iostream>

using namespace quillmere;

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
    const ExitCode exitCode = BatchRun(options, SystemFileSystem(), console, InterruptRequested).Run();
    if (!std::cout) {
        console.Error("standard output cannot be written");
        return exitCode == exitComplete ? exitFailed : exitCode;
    }
    return exitCode;
}
