#pragma once

#include "engine/filter_settings.h"
#include "filters/filter_set.h"
#include "report/facts.h"

#include <chrono>
#include <string>
#include <vector>

namespace quillmere {

/// How a run ended.
enum class RunOutcome {
    Complete,
    Failed,
    Refused,  ///< the settings, or the command line
    Halted
};

/// Everything that one run of the batch program has to tell. The log entries, the JSON object and the page
/// are three ways to show it.
struct Report {
    enum class Task { Cleaning, DryRun, Survey };

    Task task = Task::Cleaning;
    std::vector<std::string> arguments;  ///< as they were given; in the encoding of paths
    FilterSettings settings;
    std::string listFile;     ///< empty: none
    std::string removedFile;  ///< empty: none
    std::chrono::system_clock::time_point started;
    double seconds = 0;

    RunOutcome outcome = RunOutcome::Complete;
    int exitCode = 0;
    std::string error;  ///< why the run did not complete, in UTF-8; empty when it did
    std::vector<std::string> warnings;
    std::vector<std::string> notes;

    Facts facts;                              ///< of all blocks that were read
    std::vector<RectangleFilter> rectangles;  ///< of the list
    std::vector<std::string> codesNotFound;   ///< codes of the list that no block has, in the code page
};

}  // namespace quillmere
