#include "batch/command_line.h"

#include "report/json_report.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <utility>

namespace quillmere {

namespace {

struct TaskName {
    std::string_view word;
    CommandLine (*parse)(const std::vector<std::string>& arguments);
    bool hasJson;
};

template <auto parse>
CommandLine Parse(const std::vector<std::string>& arguments) {
    return std::visit([](auto&& result) -> CommandLine { return std::forward<decltype(result)>(result); },
                      parse(arguments));
}

constexpr TaskName taskNames[] = {
    {"survey", Parse<ParseSurveyOptions>, true},
    {"restore", Parse<ParseRestoreOptions>, false},
    {"list", Parse<ParseListOptions>, false},
};
constexpr TaskName cleaning = {"", Parse<ParseBatchOptions>, true};

}  // namespace

CommandLine ParseCommandLine(const std::vector<std::string>& arguments) {
    const TaskName* task = &cleaning;
    for (const TaskName& named : taskNames) {
        if (!arguments.empty() && arguments.front() == named.word) task = &named;
    }
    const int words = task == &cleaning ? 0 : 1;
    CommandLine result = task->parse({arguments.begin() + words, arguments.end()});
    auto* const end = std::get_if<EarlyExit>(&result);
    if (task->hasJson && end != nullptr && end->exitCode != exitComplete)
        end->output = JsonWithoutFacts(arguments, exitRefused, end->reason);
    return result;
}

std::string JsonWithoutFacts(const std::vector<std::string>& arguments, ExitCode exitCode,
                             const std::string& reason) {
    const auto isGiven = [&arguments](std::string_view word) {
        return std::ranges::find(arguments, word) != arguments.end();
    };
    if (!isGiven("--json")) return {};
    Report report;
    if (isGiven("-n") || isGiven("--dry-run")) report.task = Report::Task::DryRun;
    if (arguments.front() == "survey") report.task = Report::Task::Survey;
    report.arguments = arguments;
    report.started = std::chrono::system_clock::now();
    report.outcome = exitCode == exitRefused ? RunOutcome::Refused : RunOutcome::Failed;
    report.exitCode = exitCode;
    report.error = reason;
    return JsonText(JsonReport(report), JsonLayout::Lines);
}

}  // namespace quillmere
