#include "batch/reported_run.h"

#include "base/failure_report.h"

namespace quillmere {

ExitCode RunAndReport(BatchConsole& console, const std::function<ExitCode()>& run) {
    try {
        ExitCode exitCode = exitFailed;
        const auto failure = TrapFailure([&] { exitCode = run(); });
        if (failure) console.FailureReported(*failure);
        return failure ? exitFailed : exitCode;
    } catch (const Cancelled&) {
        console.LogInfo("Halt command issued.");
        return exitHalted;
    }
}

}  // namespace quillmere
