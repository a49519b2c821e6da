#include "base/failure_report.h"
#include "batch/batch_run.h"
#include "batch/command_line.h"
#include "batch/list_run.h"
#include "batch/restore_run.h"
#include "batch/stream_use.h"
#include "report/json_report.h"
#include "system/console.h"

#include <nlohmann/json.hpp>

#include <iostream>
#include <string>
#include <variant>
#include <vector>

using namespace quillmere;

namespace {

using Words = std::vector<std::string>;

/// The report may take more memory than the run.
ExitCode Execute(const BatchOptions& options, BatchConsole& console) {
    ExitCode exitCode = exitFailed;
    std::string json;
    const auto failure = TrapFailure([&] {
        BatchRun run(options, SystemFileSystem(), console, InterruptRequested);
        exitCode = run.Run();
        if (options.json) json = JsonText(JsonReport(run.Result()), JsonLayout::Lines);
    });
    if (failure) {
        exitCode = exitFailed;
        console.FailureReported(*failure);
        json = JsonWithoutFacts(options.arguments, exitCode, console.FirstError());
    }
    std::cout << json << std::flush;
    return exitCode;
}

ExitCode Execute(const RestoreOptions& options, BatchConsole& console) {
    return RestoreRun(options, SystemFileSystem(), console, InterruptRequested).Run();
}

ExitCode Execute(const ListOptions& options, BatchConsole& console) {
    return ListRun(options, SystemFileSystem(), console, std::cout, InterruptRequested).Run();
}

/// On a stream that is free the reason is printed, and on standard output the JSON object, if one is asked
/// for.
ExitCode Refuse(const StreamRefusal& refusal, const Words& arguments) {
    const std::string json = JsonWithoutFacts(arguments, exitRefused, refusal.reason);
    if (refusal.outputIsFree) std::cout << json;
    const bool saysOnOutput = refusal.outputIsFree && json.empty();
    if (refusal.errorIsFree || saysOnOutput) {
        std::ostream& stream = refusal.errorIsFree ? std::cerr : std::cout;
        BatchConsole(stream, stream, {}).Error(refusal.reason);
    }
    return exitRefused;
}

template <class Options>
int Perform(const Options& options, const Words& arguments) {
    const StreamUse use = UseBy(options);
    if (const auto refusal = RefusalOf(use)) return Refuse(*refusal, arguments);
    CatchInterrupts();
    BatchConsole console(use.WritesToOutput() ? std::cerr : std::cout, std::cerr,
                         {use.logs, !use.quiet, StandardErrorIsTerminal()});
    const ExitCode exitCode = Execute(options, console);
    if (!std::cout) {
        console.Error("standard output cannot be written");
        return exitCode == exitComplete ? exitFailed : exitCode;
    }
    return exitCode;
}

int Perform(const EarlyExit& end, const Words& /*arguments*/) {
    std::cout << end.output << std::flush;
    std::cerr << end.error;
    return std::cout ? end.exitCode : exitFailed;
}

}  // namespace

int main(int argc, char** argv) {
    PrepareTerminal();
    const Words arguments = ProgramArguments(argc, argv);
    const auto commandLine = ParseCommandLine(arguments);
    return std::visit([&](const auto& options) { return Perform(options, arguments); }, commandLine);
}
