#pragma once

#include "batch/argument_parser.h"
#include "engine/filter_settings.h"
#include "report/report.h"

#include <cstdint>
#include <optional>
#include <string>
#include <variant>
#include <vector>

namespace quillmere {

/// What the command line of quillmere-batch asks for: a cleaning, a dry run or a survey.
struct BatchOptions {
    Report::Task task = Report::Task::Cleaning;
    FilterSettings settings;
    std::string listFile;                    ///< empty: none
    std::string removedFile;                 ///< empty: none
    std::string pageFile;                    ///< empty: none
    std::optional<LineEnd> lineEnd;          ///< found out when none is given
    std::optional<std::int64_t> maxRemoved;  ///< percent of the blocks
    bool backup = false;                     ///< keep the old output
    bool force = false;
    bool json = false;
    bool quiet = false;
    std::vector<std::string> arguments;  ///< as they were given

    bool WritesOutput() const { return task == Report::Task::Cleaning; }
};

/// `arguments` are the words after the program's name, without "survey". They ask for a cleaning or a dry
/// run.
std::variant<BatchOptions, EarlyExit> ParseBatchOptions(const std::vector<std::string>& arguments);
/// The same for the words after "survey".
std::variant<BatchOptions, EarlyExit> ParseSurveyOptions(const std::vector<std::string>& arguments);

}  // namespace quillmere
