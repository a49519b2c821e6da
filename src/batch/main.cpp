#include "batch/batch_run.h"
#include "batch/command_line.h"
#include "batch/list_run.h"
#include "batch/restore_run.h"
#include "report/json_report.h"
#include "system/console.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <iostream>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

using namespace quillmere;

namespace {

/// What a run reads, writes and prints. By this it is found out whether the standard streams get in its way.
struct UseOfFiles {
    std::vector<std::string> read;
    std::string_view namesOfRead;
    std::vector<std::string> written;
    std::string_view namesOfWritten;
    bool logs = true;
    std::vector<std::string> json;  ///< the command line, if the report is printed as JSON
    bool quiet = false;

    /// Whether standard output gets what is written, so that the log goes to standard error.
    bool WritesToOutput() const { return !written.empty() && written.front() == standardStream; }
};

UseOfFiles UseBy(const BatchOptions& options) {
    UseOfFiles use;
    use.read = {options.settings.strInputFile, options.listFile};
    use.namesOfRead = "INPUT or the list";
    if (options.WritesOutput()) use.written = {options.settings.strOutputFile, options.removedFile};
    use.written.push_back(options.pageFile);
    use.namesOfWritten =
        options.pageFile.empty() ? "OUTPUT or the removed file" : "OUTPUT, the removed file or the page";
    use.logs = !options.quiet && !options.json;
    if (options.json) use.json = options.arguments;
    use.quiet = options.quiet;
    return use;
}

UseOfFiles UseBy(const RestoreOptions& options) {
    UseOfFiles use;
    use.read = {options.inputFile, options.removedFile};
    use.namesOfRead = "INPUT or REMOVED";
    use.written = {options.outputFile};
    use.namesOfWritten = "OUTPUT";
    use.logs = !options.quiet;
    use.quiet = options.quiet;
    return use;
}

UseOfFiles UseBy(const ListOptions& options) {
    UseOfFiles use;
    (options.action == ListOptions::Action::Show ? use.read : use.written) = {options.listFile};
    use.namesOfRead = use.namesOfWritten = "the list";
    use.logs = !options.quiet;
    use.quiet = options.quiet;
    return use;
}

bool IsOneOf(const std::vector<std::string>& files, bool (&isStream)(const std::string&)) {
    return std::ranges::any_of(files, isStream);
}

/// Why what is printed would mix with the blocks that are written; empty when it would not.
std::string ReasonOfMixture(const UseOfFiles& use) {
    if (!use.json.empty() && IsOneOf(use.written, IsStandardOutput))
        return "standard output is where the JSON object goes; write nothing else there";
    if (use.logs && IsOneOf(use.written, IsStandardOutput))
        return "standard output is where the log goes; --quiet keeps blocks and log apart";
    if (IsOneOf(use.written, IsStandardError) || (use.WritesToOutput() && StandardStreamsAreOne()))
        return "errors and warnings would go into " + std::string(use.namesOfWritten) +
               "; send them elsewhere";
    return {};
}

/// Whether the log and the errors are printed to streams that lead to no file that is read, which the run
/// would otherwise change. If one of them does, says so on the other.
bool LeavesReadFilesAlone(const UseOfFiles& use) {
    const bool outputIsRead = IsOneOf(use.read, IsStandardOutput);
    const bool errorIsRead = IsOneOf(use.read, IsStandardError);
    if (!outputIsRead && !errorIsRead) return true;
    std::ostream& sayTo = errorIsRead ? std::cout : std::cerr;
    if (!outputIsRead || !errorIsRead) {
        BatchConsole(sayTo, sayTo, {})
            .Error("the log or the errors would go into " + std::string(use.namesOfRead) +
                   "; send them to another file");
    }
    return false;
}

int End(const EarlyExit& end) {
    std::cout << end.output << std::flush;
    std::cerr << end.error;
    return std::cout ? end.exitCode : exitFailed;
}

ExitCode Execute(const BatchOptions& options, BatchConsole& console) {
    BatchRun run(options, SystemFileSystem(), console, InterruptRequested);
    const ExitCode exitCode = run.Run();
    if (options.json) std::cout << JsonText(JsonReport(run.Result()), JsonLayout::Lines) << std::flush;
    return exitCode;
}

ExitCode Execute(const RestoreOptions& options, BatchConsole& console) {
    return RestoreRun(options, SystemFileSystem(), console, InterruptRequested).Run();
}

ExitCode Execute(const ListOptions& options, BatchConsole& console) {
    return ListRun(options, SystemFileSystem(), console, std::cout, InterruptRequested).Run();
}

template <class Options>
int Perform(const Options& options) {
    const UseOfFiles use = UseBy(options);
    if (!LeavesReadFilesAlone(use)) return exitRefused;
    CatchInterrupts();
    BatchConsole console(use.WritesToOutput() ? std::cerr : std::cout, std::cerr,
                         {use.logs, !use.quiet, StandardErrorIsTerminal()});
    if (const std::string reason = ReasonOfMixture(use); !reason.empty()) {
        console.Error(reason);
        if (!use.WritesToOutput()) std::cout << JsonOfRefusal(use.json, reason);
        return exitRefused;
    }
    const ExitCode exitCode = Execute(options, console);
    if (!std::cout) {
        console.Error("standard output cannot be written");
        return exitCode == exitComplete ? exitFailed : exitCode;
    }
    return exitCode;
}

int Perform(const EarlyExit& end) {
    return End(end);
}

}  // namespace

int main(int argc, char** argv) {
    PrepareTerminal();
    const auto commandLine = ParseCommandLine(ProgramArguments(argc, argv));
    return std::visit([](const auto& options) { return Perform(options); }, commandLine);
}
