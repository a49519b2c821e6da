#include "report/text_report.h"

#include "base/utf8.h"
#include "engine/block_filter.h"
#include "system/code_page.h"

namespace quillmere {

namespace {

std::string CountedBlocks(const Tally& tally) {
    return Counted(static_cast<std::uint64_t>(tally.blocks), "block");
}

std::string Point(std::int32_t x, std::int32_t y) {
    return std::to_string(x) + "," + std::to_string(y);
}

void LogTable(std::string_view kind, const TallyTable& table, Log& log) {
    for (const auto& [key, tally] : SortedTallies(table, &Tally::blocks))
        log.LogInfo(std::string(kind) + "\t" + CountedBlocks(tally) + "\t" + Printable(key));
}

void LogFacets(const Facts& facts, Log& log) {
    for (const auto& [number, facet] : facts.facets) {
        const Bounds& bounds = facet.bounds;
        log.LogInfo("facet\t" + CountedBlocks(facet.tally) + "\t" + std::to_string(number) + ", from " +
                    Point(bounds.x1, bounds.y1) + " to " + Point(bounds.x2, bounds.y2));
    }
    if (facts.otherFacets.blocks > 0)
        log.LogInfo("facet\t" + CountedBlocks(facts.otherFacets) + "\tall others");
    if (facts.unplaced.blocks > 0)
        log.LogInfo("facet\t" + CountedBlocks(facts.unplaced) + "\tnone, without a position");
}

}  // namespace

void LogDryRun(const Report& report, Log& log) {
    for (const FilterType& type : filterTypes) {
        if (!report.settings.filters.contains(type.kind)) continue;
        const std::int64_t count = report.facts.selected[static_cast<std::size_t>(type.kind)];
        log.LogInfo(std::string(type.reportName) + " filter selects " + std::to_string(count) + " items.");
    }
    for (const auto& [code, tally] : SortedTallies(report.facts.byCode, &Tally::removed)) {
        log.LogInfo("Would remove " + std::to_string(tally.removed) + " of " +
                    (code.empty() ? "(no code)" : Printable(code)));
    }
}

void LogSurvey(const Report& report, Log& log) {
    const Facts& facts = report.facts;
    log.LogInfo("The world script holds " + CountedBlocks(facts.all) + ".");
    log.LogInfo(std::string("Its lines end with ") +
                (report.settings.lineEnd == LineEnd::Lf ? "line feeds" : "CR LF") + "; its last line is " +
                (facts.endsWithSentinel ? "[EOF]." : "not [EOF]."));
    log.LogInfo(facts.linesOutside == 0
                    ? "No line is outside blocks."
                    : Counted(facts.linesOutside, "line") + " outside blocks, the first is line " +
                          std::to_string(facts.firstOutside) + ".");
    LogTable("header", facts.byHeader, log);
    LogFacets(facts, log);
    LogTable("item", facts.byCode, log);
}

std::string Counted(std::uint64_t count, std::string_view noun) {
    return std::to_string(count) + " " + std::string(noun) + (count == 1 ? "" : "s");
}

std::string Printable(std::string_view text) {
    const std::string characters = Utf8FromCodePage(std::string(text));
    std::string printable;
    for (std::string_view rest = characters; !rest.empty();) {
        const std::string_view before = rest;
        const auto character = TakeCharacter(rest);
        printable += character && IsControl(*character) ? "?" : before.substr(0, before.size() - rest.size());
    }
    return printable;
}

}  // namespace quillmere
