#include "batch/list_run.h"

#include "base/utf8.h"
#include "batch/load_list.h"
#include "batch/reported_run.h"
#include "filters/list_file.h"
#include "filters/list_lines.h"
#include "report/text_report.h"
#include "textfile/line_stream.h"

#include <cstddef>
#include <string>
#include <utility>
#include <variant>

namespace quillmere {

namespace {

constexpr int mostLinesNamed = 10;

}  // namespace

ListRun::ListRun(ListOptions options, FileSystem& system, BatchConsole& console, std::ostream& output,
                 std::function<bool()> interrupted)
    : options_(std::move(options)),
      console_(console),
      failureLog_(console),
      output_(output),
      interrupted_(std::move(interrupted)),
      fileSystem_(system, BatchFileSystem::Writing::Replace, ""),
      shared_(fileSystem_) {}

ExitCode ListRun::Run() {
    return RunAndReport(console_,
                        [this] { return options_.action == ListOptions::Action::Show ? Show() : Make(); });
}

ExitCode ListRun::Show() {
    if (!LoadAnyList(shared_, options_.listFile, failureLog_)) return exitFailed;
    const FilterSet& filters = shared_.filterSet;
    const bool items = ShowTable(filters.arrItems, "item");
    const bool rectangles = ShowTable(filters.arrRectangles, "rectangle");
    output_ << std::flush;
    return items && rectangles ? exitComplete : exitFailed;
}

/// Returns whether each entry could be shown. Those after a gap are shown, too: the editor closes gaps.
template <class Table>
bool ListRun::ShowTable(const Table& table, std::string_view kind) {
    std::size_t count = table.size();
    while (count > 0 && table[count - 1] == typename Table::value_type())
        --count;
    bool complete = true;
    for (std::size_t slot = 0; slot < count; ++slot) {
        const auto line = LineFromEntry(table[slot]);
        if (const auto* const problem = std::get_if<LineProblem>(&line)) {
            console_.ErrorIn(options_.listFile, std::string(kind) + " " + std::to_string(slot + 1) +
                                                    " is not shown: " + std::string(problem->text));
            complete = false;
        } else {
            output_ << std::get<std::string>(line) << '\n';
        }
    }
    return complete;
}

ExitCode ListRun::Make() {
    if (!ReadLines()) return exitFailed;
    if (!SaveFilterList(shared_.objWriter, options_.listFile, shared_.filterSet, failureLog_))
        return exitFailed;
    fileSystem_.CommitAll();
    Report();
    return exitComplete;
}

/// Fills the filter set. Returns false when the user was told of lines that cannot work, or that there are
/// none.
bool ListRun::ReadLines() {
    LineReader lines(fileSystem_.OpenStandardInput(), standardInput, LineEnd::Lf);
    bool empty = true;
    int problems = 0;
    while (problems < mostLinesNamed && !lines.AtEnd()) {
        if (interrupted_()) throw Cancelled();
        std::string_view line = lines.NextLine();
        if (lines.LinesRead() == 1 && line.starts_with(byteOrderMark))
            line.remove_prefix(byteOrderMark.size());
        if (line.ends_with('\r')) line.remove_suffix(1);
        if (line.find_first_not_of('\t') == std::string_view::npos) continue;
        empty = false;
        const std::string_view problem = AddLine(line);
        if (problem.empty()) continue;
        console_.ErrorIn(lines.Position(), problem);
        ++problems;
    }
    if (empty) console_.ErrorIn(standardInput, "there is no line, so there is nothing to make");
    return !empty && problems == 0;
}

/// Returns why the line cannot work; empty when it can.
std::string_view ListRun::AddLine(std::string_view line) {
    const ListLine read = EntryFromLine(line);
    if (const auto* const problem = std::get_if<LineProblem>(&read)) return problem->text;
    const auto* const item = std::get_if<ItemFilter>(&read);
    const bool added = item != nullptr ? AddEntry(shared_.filterSet, *item)
                                       : AddEntry(shared_.filterSet, std::get<RectangleFilter>(read));
    return added ? "" : "a list holds up to 501 items and as many rectangles; divide it";
}

void ListRun::Report() {
    const FilterSet& filters = shared_.filterSet;
    console_.LogInfo("The list holds " + Counted(filters.arrItems.EntryCount(), "item") + " and " +
                     Counted(filters.arrRectangles.EntryCount(), "rectangle") + ".");
}

}  // namespace quillmere
