#include "report/json_report.h"

#include "base/version.h"
#include "system/code_page.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <array>
#include <ctime>
#include <iterator>
#include <string_view>
#include <utility>

namespace quillmere {

namespace {

using Json = nlohmann::ordered_json;

constexpr std::array<const char*, 3> taskNames = {"cleaning", "dry run", "survey"};
constexpr std::array<const char*, 4> outcomeNames = {"complete", "failed", "refused", "halted"};

/// Null for an empty text.
Json TextOrNull(const std::string& text) {
    return text.empty() ? Json() : Json(text);
}

/// As 2026-11-23T04:15:00Z.
std::string UtcTime(std::chrono::system_clock::time_point time) {
    const std::time_t seconds = std::chrono::system_clock::to_time_t(time);
    const std::tm* const utc = std::gmtime(&seconds);
    std::array<char, 32> text{};
    const std::size_t size =
        utc == nullptr ? 0 : std::strftime(text.data(), text.size(), "%Y-%m-%dT%H:%M:%SZ", utc);
    return {text.data(), size};
}

void AddTally(Json& json, const Tally& tally) {
    json["blocks"] = tally.blocks;
    json["removed"] = tally.removed;
    json["kept"] = tally.Kept();
}

Json TallyJson(const Tally& tally) {
    Json json = Json::object();
    AddTally(json, tally);
    return json;
}

/// The rows of a table, the most frequent first.
Json TableJson(const TallyTable& table, const char* keyName) {
    Json rows = Json::array();
    for (const auto& [key, tally] : SortedTallies(table, &Tally::blocks)) {
        Json row = {{keyName, Utf8FromCodePage(key)}};
        AddTally(row, tally);
        rows.push_back(std::move(row));
    }
    return rows;
}

Json FacetsJson(const std::map<std::int32_t, FacetFacts>& facets) {
    Json rows = Json::array();
    for (const auto& [number, facet] : facets) {
        Json row = {{"facet", number}};
        AddTally(row, facet.tally);
        const Bounds& bounds = facet.bounds;
        row["bounds"] = {{"x1", bounds.x1}, {"y1", bounds.y1}, {"x2", bounds.x2}, {"y2", bounds.y2}};
        rows.push_back(std::move(row));
    }
    return rows;
}

Json RectanglesJson(const std::vector<RectangleFilter>& rectangles) {
    Json rows = Json::array();
    for (const RectangleFilter& area : rectangles) {
        rows.push_back({{"name", Utf8FromCodePage(area.name)},
                        {"x1", area.X1},
                        {"y1", area.Y1},
                        {"x2", area.X2},
                        {"y2", area.Y2}});
    }
    return rows;
}

Json FiltersJson(const Report& report) {
    constexpr std::array<const char*, filterTypeCount> names = {"items", "rectangles", "facet"};
    Json rows = Json::array();
    for (const auto& [kind, setting] : report.settings.filters) {
        const auto index = static_cast<std::size_t>(kind);
        Json row = {{"filter", names[index]},
                    {"selects", setting.direction == Direction::In ? "in" : "not in"}};
        if (!setting.text.empty()) row["value"] = setting.text;
        row["selected"] = report.facts.selected[index];
        rows.push_back(std::move(row));
    }
    return rows;
}

Json TextsJson(const std::vector<std::string>& texts) {
    Json array = Json::array();
    for (const std::string& text : texts)
        array.push_back(Utf8FromCodePage(text));
    return array;
}

}  // namespace

nlohmann::ordered_json JsonReport(const Report& report) {
    const Facts& facts = report.facts;
    Json json;
    json["program"] = {{"name", "quillmere-batch"}, {"version", programVersion}};
    json["task"] = taskNames[static_cast<std::size_t>(report.task)];
    json["outcome"] = outcomeNames[static_cast<std::size_t>(report.outcome)];
    json["exitCode"] = report.exitCode;
    json["error"] = TextOrNull(report.error);
    json["warnings"] = report.warnings;
    json["notes"] = report.notes;
    json["started"] = UtcTime(report.started);
    json["seconds"] = report.seconds;
    json["arguments"] = report.arguments;
    json["input"] = TextOrNull(report.settings.strInputFile);
    json["output"] =
        report.task == Report::Task::Cleaning ? TextOrNull(report.settings.strOutputFile) : Json();
    json["removedFile"] = TextOrNull(report.removedFile);
    json["list"] = TextOrNull(report.listFile);
    json["filters"] = FiltersJson(report);
    json["lineEnds"] = report.settings.lineEnd == LineEnd::Lf ? "LF" : "CR LF";
    json["endsWithEof"] = facts.endsWithSentinel;
    json["linesOutside"] = {{"lines", facts.linesOutside},
                            {"first", facts.linesOutside == 0 ? Json() : Json(facts.firstOutside)}};
    json["all"] = TallyJson(facts.all);
    json["unplaced"] = TallyJson(facts.unplaced);
    json["otherFacets"] = TallyJson(facts.otherFacets);
    json["facets"] = FacetsJson(facts.facets);
    json["headers"] = TableJson(facts.byHeader, "word");
    json["codes"] = TableJson(facts.byCode, "code");
    json["codesNotFound"] = TextsJson(report.codesNotFound);
    json["rectangles"] = RectanglesJson(report.rectangles);
    return json;
}

std::string JsonText(const nlohmann::ordered_json& json, JsonLayout layout) {
    const std::string dumped =
        json.dump(layout == JsonLayout::Lines ? 2 : -1, ' ', false, Json::error_handler_t::replace);
    std::string text;
    for (const char byte : dumped) {
        // Outside of strings JSON has no "<".
        if (byte == '<') {
            text += "\\u003c";
        } else {
            text += byte;
        }
    }
    return text + '\n';
}

}  // namespace quillmere
