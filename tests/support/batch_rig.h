#pragma once

#include "batch/batch_run.h"
#include "batch/command_line.h"
#include "batch/list_run.h"
#include "batch/restore_run.h"
#include "report/json_report.h"
#include "tests/support/memory_file_system.h"
#include "tests/support/text.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <sstream>
#include <string>
#include <variant>
#include <vector>

namespace quillmere::test {

/// Runs the batch program on files in memory, from its arguments to its exit code.
class Batch : public testing::Test {
 protected:
    Batch() {
        system.files["world"] = Lines({"// comment", "", "[WORLDITEM i_torch]", "P=100,200,0,1", "",
                                       "[WORLDITEM i_chair]", "P=300,400,5", "", "[EOF]"});
        system.files["list"] =
            Lines({"Torches", "i_torch", "</ITEMS>", "Town", "0", "310", "0", "410", "</RECTANGLES>"});
        system.files["out"] = "old";
    }

    /// The words of a command line; '' stands for an empty one.
    static std::vector<std::string> Words(const std::string& line) {
        std::vector<std::string> words;
        std::istringstream stream(line);
        for (std::string word; stream >> word;)
            words.push_back(word == "''" ? "" : word);
        return words;
    }

    /// Runs the program with these words and returns its exit code.
    int Run(const std::string& line, bool terminal = false) {
        out.str("");
        err.str("");
        const auto parsed = ParseCommandLine(Words(line));
        const int code = std::visit([&](const auto& options) { return Run(options, terminal); }, parsed);
        EXPECT_EQ(system.openFiles, 0);
        return code;
    }

    MemoryFileSystem system;
    std::ostringstream out;
    std::ostringstream err;
    bool interrupted = false;

 private:
    int Run(const EarlyExit& end, bool /*terminal*/) {
        out << end.output;
        err << end.error;
        return end.exitCode;
    }
    int Run(const BatchOptions& options, bool terminal) {
        BatchConsole console(out, err, {!options.quiet && !options.json, !options.quiet, terminal});
        BatchRun run(options, system, console, [this] { return interrupted; });
        const int code = run.Run();
        if (options.json) out << JsonText(JsonReport(run.Result()), JsonLayout::Lines);
        return code;
    }
    int Run(const RestoreOptions& options, bool terminal) {
        BatchConsole console(out, err, {!options.quiet, !options.quiet, terminal});
        return RestoreRun(options, system, console, [this] { return interrupted; }).Run();
    }
    int Run(const ListOptions& options, bool terminal) {
        BatchConsole console(out, err, {!options.quiet, !options.quiet, terminal});
        return ListRun(options, system, console, out, [this] { return interrupted; }).Run();
    }
};

}  // namespace quillmere::test
