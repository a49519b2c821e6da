#include "report/page.h"

#include "page_html.h"
#include "report/json_report.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <array>
#include <charconv>
#include <initializer_list>
#include <string_view>
#include <utility>
#include <vector>

namespace quillmere {

namespace {

constexpr std::size_t mostMapText = 2'000'000;  ///< in bytes, of all maps together

void AppendNumber(std::string& text, std::int64_t number) {
    std::array<char, 20> digits;
    const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), number).ptr;
    text.append(digits.data(), end);
}

/// Appends the squares of a row to `text` as one run, unless all are empty.
void AppendRun(std::string& text, std::size_t row, const std::vector<std::int64_t>& counts) {
    const auto isTaken = [](std::int64_t count) { return count > 0; };
    const auto first = std::ranges::find_if(counts, isTaken);
    if (first == counts.end()) return;
    if (text.back() != '[') text += ',';
    text += '[' + std::to_string(row) + ',' + std::to_string(first - counts.begin());
    std::int64_t empty = 0;
    for (auto count = first; count != counts.end(); ++count) {
        if (*count == 0) {
            --empty;
            continue;
        }
        if (empty < 0) {
            text += ',';
            AppendNumber(text, std::exchange(empty, 0));
        }
        text += ',';
        AppendNumber(text, *count);
    }
    text += ']';
}

/// A facet's map as an object of the element "maps".
class MapText {
 public:
    MapText(std::int32_t facet, const DensityGrid& grid) : facet_(facet), grid_(grid) { Write(); }

    const std::string& Text() const { return text_; }
    /// Doubles the width and height of the squares. The grid stays as it is.
    void Coarsen() {
        ++coarser_;
        Write();
    }

 private:
    void Write() {
        const DensityGrid::CellRange& cells = grid_.Cells();
        left_ = cells.firstColumn >> coarser_;
        columns_ = static_cast<std::size_t>((cells.lastColumn >> coarser_) - left_ + 1);
        const std::int64_t top = cells.firstRow >> coarser_;
        const std::int64_t bottom = cells.lastRow >> coarser_;
        std::string kept = "[";
        std::string removed = "[";
        for (std::int64_t row = top; row <= bottom; ++row)
            AppendRow(row, static_cast<std::size_t>(row - top), kept, removed);
        const std::int64_t cell = std::int64_t{1} << (grid_.Shift() + coarser_);
        text_ = "{\"facet\":" + std::to_string(facet_) + ",\"cell\":" + std::to_string(cell) +
                ",\"left\":" + std::to_string(left_ * cell) + ",\"top\":" + std::to_string(top * cell) +
                ",\"columns\":" + std::to_string(columns_) + ",\"rows\":" + std::to_string(bottom - top + 1) +
                ",\"kept\":" + kept + "],\"removed\":" + removed + "]}";
    }

    /// Sums up the rows of the grid that lie in one row of the map, the row `number`.
    void AppendRow(std::int64_t row, std::size_t number, std::string& kept, std::string& removed) {
        const DensityGrid::CellRange& cells = grid_.Cells();
        kept_.assign(columns_, 0);
        removed_.assign(columns_, 0);
        const std::int64_t first = std::max(row << coarser_, cells.firstRow);
        const std::int64_t last = std::min(((row + 1) << coarser_) - 1, cells.lastRow);
        for (std::int64_t from = first; from <= last; ++from) {
            for (std::int64_t column = cells.firstColumn; column <= cells.lastColumn; ++column) {
                const DensityGrid::Cell cell = grid_.At(column, from);
                const auto to = static_cast<std::size_t>((column >> coarser_) - left_);
                kept_[to] += cell.kept;
                removed_[to] += cell.removed;
            }
        }
        AppendRun(kept, number, kept_);
        AppendRun(removed, number, removed_);
    }

    std::int32_t facet_;
    const DensityGrid& grid_;
    unsigned coarser_ = 0;  ///< a square of the map is 2 to this power cells wide and high
    std::int64_t left_ = 0;
    std::size_t columns_ = 0;
    std::vector<std::int64_t> kept_;  ///< of one row of the map
    std::vector<std::int64_t> removed_;
    std::string text_;
};

std::string MapsText(const std::map<std::int32_t, FacetFacts>& facets) {
    std::vector<MapText> maps;
    std::size_t size = 0;
    for (const auto& [number, facet] : facets) {
        if (facet.density.TileCount() == 0) continue;
        size += maps.emplace_back(number, facet.density).Text().size();
        // After each map, since the texts of all would take far more memory at first.
        while (size > mostMapText) {
            const auto largest =
                std::ranges::max_element(maps, {}, [](const MapText& map) { return map.Text().size(); });
            size -= largest->Text().size();
            largest->Coarsen();
            size += largest->Text().size();
        }
    }
    std::string text = "[";
    for (const MapText& map : maps) {
        if (text.size() > 1) text += ",\n";
        text += map.Text();
    }
    return text + "]\n";
}

std::string Escaped(std::string_view text) {
    std::string escaped;
    for (const char byte : text) {
        if (byte == '<') {
            escaped += "&lt;";
        } else if (byte == '&') {
            escaped += "&amp;";
        } else {
            escaped += byte;
        }
    }
    return escaped;
}

/// What a browser without script shows.
std::string SumsHtml(const Report& report) {
    const Tally& all = report.facts.all;
    std::string html = "<p>Blocks: " + std::to_string(all.blocks);
    if (report.task != Report::Task::Survey)
        html += ", go: " + std::to_string(all.removed) + ", stay: " + std::to_string(all.Kept());
    html += "</p>";
    if (!report.error.empty()) html += "<p>The run did not complete: " + Escaped(report.error) + "</p>";
    return html;
}

/// `page` with texts put in place of its markers, which come in this order.
std::string Filled(std::string_view page,
                   std::initializer_list<std::pair<std::string_view, std::string>> texts) {
    std::string filled;
    for (const auto& [marker, text] : texts) {
        const std::size_t place = page.find(marker);
        filled.append(page.substr(0, place)).append(text);
        page.remove_prefix(place + marker.size());
    }
    return filled.append(page);
}

}  // namespace

std::string PageText(const Report& report) {
    const std::string page(std::begin(pageHtml), std::end(pageHtml));
    return Filled(page, {{"{{sums}}", SumsHtml(report)},
                         {"{{report}}", JsonText(JsonReport(report), JsonLayout::Compact)},
                         {"{{maps}}", MapsText(report.facts.facets)}});
}

}  // namespace quillmere
